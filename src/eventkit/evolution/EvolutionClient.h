#pragma once

#include "eventkit/EKTypes.h"
#include "eventkit/evolution/CallLimit.h"
#include "eventkit/evolution/Glib.h"
#include "eventkit/evolution/ServiceReader.h"
#include "eventkit/evolution/ServiceText.h"
#include "eventkit/items/ItemStorage.h"

#include <libecal/libecal.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace kestrant::evolution {

/// One task list or calendar of the service, as it is stored there. Thread: that of a GlibWorker; blocks for
/// the service as long as the limit allows.
class EvolutionClient {
  public:
    /// Told about items (by UID) that others, or this program, changed; about the list itself, when there are
    /// none; about the connection, when it is lost. Comes between two calls.
    struct Observer {
        std::function<void(std::set<QByteArray> uids)> itemsChanged;
        std::function<void()> propertiesChanged;
        std::function<void()> lost;
    };

    /// `error` receives the service's own description.
    [[nodiscard]] static std::unique_ptr<EvolutionClient>
    connect(ESource* source, EKEntityType type, CallLimit& limit, Observer observer, QString& error);
    EvolutionClient(const EvolutionClient&) = delete;
    EvolutionClient& operator=(const EvolutionClient&) = delete;
    ~EvolutionClient();

    [[nodiscard]] bool isLost() const { return isLost_; }
    [[nodiscard]] bool isWritable() const;
    [[nodiscard]] QByteArrayView componentName() const { return componentName_; }

    /// Every item as a file, by UID. Absent when the service did not answer.
    [[nodiscard]] std::optional<std::map<QByteArray, QByteArray>> readAll();

    template <typename Value>
    using Answer = tl::expected<Value, items::WriteError>;
    /// An item as a file; absent when there is none.
    [[nodiscard]] Answer<std::optional<QByteArray>> read(const QByteArray& uid);
    /// Writes what differs. `title` is what a conflict is called by.
    [[nodiscard]] std::optional<items::WriteError> write(const QByteArray& uid, const ServiceChange& change,
                                                         const QString& title);
    /// Writes many items in one call. False where they have to be written one by one; some of them may be
    /// written then.
    [[nodiscard]] bool writeAll(const std::vector<ServiceChange>& changes);
    [[nodiscard]] std::optional<items::WriteError> remove(const QByteArray& uid, const QString& title);
    /// The result is the UID it has now.
    [[nodiscard]] Answer<QByteArray> create(const QByteArray& uid, const ServiceChange& content);

  private:
    EvolutionClient(Ref<EClient> client, EKEntityType type, CallLimit& limit, Observer observer);

    [[nodiscard]] ECalClient* calendar() const { return E_CAL_CLIENT(client_.get()); }
    [[nodiscard]] std::optional<std::vector<QByteArray>> allComponents(Error& error);
    [[nodiscard]] std::optional<std::vector<QByteArray>> componentsOf(const QByteArray& uid, Error& error);
    void observe();
    void stopObserving();
    [[nodiscard]] QByteArray fileFrom(std::vector<QByteArray> components);
    [[nodiscard]] QByteArray zoneDefinition(const QByteArray& name);
    void addZone(const QByteArray& definition);
    /// What a failed call means.
    [[nodiscard]] items::WriteError failure(const Error& error, const QString& title);
    static void objectsTold(ECalClientView* view, const GSList* components, gpointer self);
    static void objectsRemoved(ECalClientView* view, const GSList* identifiers, gpointer self);

    CallLimit& limit_;
    Observer observer_;
    Ref<EClient> client_;
    /// Null where the client library has to read.
    std::unique_ptr<ServiceReader> reader_;
    QByteArray componentName_;
    Ref<ECalClientView> view_;
    std::vector<std::pair<GObject*, gulong>> handlers_;
    std::map<QByteArray, QByteArray> zones_;
    bool isLost_ = false;
};

}  // namespace kestrant::evolution
