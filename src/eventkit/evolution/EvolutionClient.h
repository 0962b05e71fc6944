#pragma once

#include "eventkit/evolution/CallTimeout.h"
#include "eventkit/evolution/EvolutionLists.h"
#include "eventkit/evolution/Glib.h"
#include "eventkit/evolution/ServiceReader.h"
#include "eventkit/evolution/ServiceText.h"
#include "eventkit/items/ItemStorage.h"
#include "eventkit/model/EKTypes.h"

#include <libecal/libecal.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace kestrant::evolution {

/// One task list or calendar of the service, as it is stored there. Thread: made on that of a GlibWorker, on
/// which the observer is called, then any whose turn it is; blocks for the service as long as the limit
/// allows.
class EvolutionClient {
  public:
    /// Told about items (by UID) that others, or this program, changed; about the list, when it can be
    /// written from now on or no longer; about the connection, when it is lost.
    struct Observer {
        /// May be empty; then the service is spared the work.
        std::function<void(std::set<QByteArray> uids)> itemsChanged;
        std::function<void()> writabilityChanged;
        std::function<void()> lost;
    };

    /// Null with `reason`.
    [[nodiscard]] static std::shared_ptr<EvolutionClient>
    connect(ESource* source, EKEntityType type, CallTimeout& limit, Observer observer, TextPair& reason);
    EvolutionClient(const EvolutionClient&) = delete;
    EvolutionClient& operator=(const EvolutionClient&) = delete;
    ~EvolutionClient();

    [[nodiscard]] bool isLost() const { return state_->isLost; }
    /// The list's.
    [[nodiscard]] const QString& title() const { return title_; }
    /// Whether its items may be written now. Absent when the service did not answer.
    [[nodiscard]] std::optional<bool> readWritability();
    [[nodiscard]] QByteArrayView componentName() const { return componentName_; }
    /// As hasUnsentChanges() of its cache.
    [[nodiscard]] std::optional<bool> hasUnsent();

    /// Every item as a file, by UID. Absent when the service did not answer.
    [[nodiscard]] std::optional<std::map<QByteArray, QByteArray>> readAll();

    template <typename Value>
    using Answer = tl::expected<Value, items::WriteError>;
    /// An item as a file; absent when there is none.
    [[nodiscard]] Answer<std::optional<QByteArray>> read(const QByteArray& uid);
    /// Has the service look at what is on the server; returns before it has done so.
    void refresh();
    /// Writes what differs. `title` is what a conflict is called by. Like every function that writes it fails
    /// with outcomeUnknown where the connection was lost meanwhile, to the service (see isLost) or by the
    /// service to its server.
    [[nodiscard]] std::optional<items::WriteError> write(const QByteArray& uid, const ServiceChange& change,
                                                         const QString& title);
    /// Writes many items in one call. False where they have to be written one by one; some of them may be
    /// written then.
    [[nodiscard]] bool writeAll(const std::vector<ServiceChange>& changes);
    [[nodiscard]] std::optional<items::WriteError> remove(const QByteArray& uid, const QString& title);
    /// The result is the UID it has now.
    [[nodiscard]] Answer<QByteArray> create(const QByteArray& uid, const ServiceChange& content,
                                            const QString& title);

  private:
    /// Changes announced by signals of the service, on another thread.
    struct State {
        Observer observer;
        std::atomic<bool> isLost = false;
        /// As it was read last. What the client library says of it comes late.
        std::atomic<bool> isWritable = false;
    };
    using StateRef = std::shared_ptr<State>;

    EvolutionClient(Ref<EClient> client, EKEntityType type, CallTimeout& limit, Observer observer);

    [[nodiscard]] ECalClient* calendar() const { return E_CAL_CLIENT(client_.get()); }
    [[nodiscard]] std::optional<std::vector<QByteArray>> allComponents(Error& error);
    [[nodiscard]] std::optional<std::vector<QByteArray>> componentsOf(const QByteArray& uid, Error& error);
    void observe(GCancellable* cancellable);
    void listen(gpointer object, const char* signal, GCallback handler);
    [[nodiscard]] CallTimeout::Call call() { return limit_.call(title_); }
    [[nodiscard]] QByteArray fileFrom(std::vector<QByteArray> components);
    [[nodiscard]] QByteArray zoneDefinition(const QByteArray& name);
    /// Fails where the list does not answer.
    [[nodiscard]] std::optional<items::WriteError> addZones(const ServiceChange& change);
    /// The error for a failed call.
    [[nodiscard]] items::WriteError failure(const Error& error, const QString& title);
    [[nodiscard]] items::WriteError writeFailure(const Error& error, const QString& title);
    static void objectsTold(ECalClientView* view, const GSList* components, gpointer state);
    static void objectsRemoved(ECalClientView* view, const GSList* identifiers, gpointer state);

    CallTimeout& limit_;
    StateRef state_;
    QString title_;
    Ref<EClient> client_;
    ServiceList list_;
    /// Null where the client library has to read.
    std::unique_ptr<ServiceReader> reader_;
    QByteArray componentName_;
    Ref<ECalClientView> view_;
    std::vector<std::pair<GObject*, gulong>> handlers_;
    std::map<QByteArray, QByteArray> zones_;
    QByteArray cacheFolder_;
};

}  // namespace kestrant::evolution
