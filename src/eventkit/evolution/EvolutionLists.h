#pragma once

#include "eventkit/evolution/CallTimeout.h"
#include "eventkit/evolution/Glib.h"
#include "eventkit/items/StorageContents.h"
#include "eventkit/model/EKTypes.h"

#include <libedataserver/libedataserver.h>
#include <tl/expected.hpp>

#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace kestrant::evolution {

/// One task list or calendar of the service, by its settings.
struct ServiceList {
    Ref<ESource> source;
    EKEntityType type = EKEntityType::reminder;

    [[nodiscard]] QString title() const;
    /// Whether its items are kept on this machine alone.
    [[nodiscard]] bool isLocal() const;
    /// Whether its events are the birthdays and anniversaries of the address books.
    [[nodiscard]] bool holdsBirthdays() const;
    /// Whether its items have versions on a server.
    [[nodiscard]] bool isOnServer() const;
    /// Whether the service has a connection to its server, as far as it has told so far.
    [[nodiscard]] bool isConnected() const;
    /// Whether lists of its kind can be changed as a rule, for one that has not been opened.
    [[nodiscard]] bool isWrittenMostly() const;
    /// Lets a collection say what the settings say; whether that is anything else.
    bool describe(items::Collection& collection) const;
};

/// Which lists the service has, and their settings. Thread: any one at a time; blocks for the
/// service as CallTimeout says.
class EvolutionLists {
  public:
    /// `changed` is called when a list comes, goes or is changed, until close(). The service's library tells
    /// on the thread of the process that came first, so that may be any thread. The limit must live as long.
    EvolutionLists(CallTimeout& limit, std::function<void()> changed);
    EvolutionLists(const EvolutionLists&) = delete;
    EvolutionLists& operator=(const EvolutionLists&) = delete;
    ~EvolutionLists();

    [[nodiscard]] std::optional<EKError> open();
    void close();
    [[nodiscard]] bool isOpen() const { return registry_ != nullptr; }

    /// Those that the person sees on the desktop, by UID; none while this is not open.
    [[nodiscard]] std::map<QByteArray, ServiceList> enabled() const;
    /// Which of them are for what is new; whether that is anything else.
    bool updateDefaults(items::StorageContents& contents) const;

    /// Makes a local list; its UID. The process that keeps the items hears of it a moment later.
    [[nodiscard]] tl::expected<QByteArray, EKError> make(const EKCalendar& wanted, const Color& color);
    /// Gives a list another title and, where it is present, colour.
    [[nodiscard]] std::optional<EKError> change(const ServiceList& list, const EKCalendar& wanted);

  private:
    CallTimeout& limit_;
    std::function<void()> changed_;
    Ref<ESourceRegistry> registry_;
    std::vector<gulong> handlers_;
};

}  // namespace kestrant::evolution
