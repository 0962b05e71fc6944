#include "eventkit/evolution/EvolutionClient.h"

#include "eventkit/evolution/ServiceBus.h"
#include "eventkit/evolution/ServiceErrors.h"
#include "eventkit/evolution/UnsentChanges.h"

#include <algorithm>
#include <utility>

namespace kestrant::evolution {

namespace {

/// Everything that is in a list.
constexpr const char* everything = "#t";

QByteArray textOf(ICalComponent* component) {
    const Text text(i_cal_component_as_ical_string(component));
    return text.get();
}

template <typename Work>
void forgetShared(gpointer shared, GClosure*) {
    delete static_cast<std::shared_ptr<Work>*>(shared);
}

}  // namespace

std::shared_ptr<EvolutionClient> EvolutionClient::connect(ESource* source, EKEntityType type,
                                                          CallTimeout& limit, Observer observer,
                                                          TextPair& reason) {
    constexpr guint32 withoutWaiting = static_cast<guint32>(-1);
    Error failed;
    const Text title(e_source_dup_display_name(source));
    const CallTimeout::Call call(limit, QString::fromUtf8(title.get()));
    if (!isResponding(calendarProcess, call.cancellable())) {
        reason = noAnswerInTime();
        return nullptr;
    }
    Ref<EClient> client(e_cal_client_connect_sync(
        source,
        type == EKEntityType::reminder ? E_CAL_CLIENT_SOURCE_TYPE_TASKS : E_CAL_CLIENT_SOURCE_TYPE_EVENTS,
        withoutWaiting, call.cancellable(), failed.out()));
    if (!client) {
        reason = reasonIn(failed);
        return nullptr;
    }
    auto result = std::shared_ptr<EvolutionClient>(
        new EvolutionClient(std::move(client), type, limit, std::move(observer)));
    // The client library has it by now.
    char* folder = nullptr;
    if (e_client_get_backend_property_sync(result->client_.get(), CLIENT_BACKEND_PROPERTY_CACHE_DIR, &folder,
                                           call.cancellable(), nullptr))
        result->cacheFolder_ = Text(folder).get();
    result->reader_ = ServiceReader::open(type, e_source_get_uid(source), call.cancellable());
    result->observe(call.cancellable());
    if (result->isLost()) {
        reason = noAnswerInTime();
        return nullptr;
    }
    return result;
}

EvolutionClient::EvolutionClient(Ref<EClient> client, EKEntityType type, CallTimeout& limit,
                                 Observer observer)
    : limit_(limit)
    , state_(std::make_shared<State>())
    , client_(std::move(client))
    , list_{Ref<ESource>(E_SOURCE(g_object_ref(e_client_get_source(client_.get())))), type}
    , componentName_(type == EKEntityType::reminder ? "VTODO" : "VEVENT") {
    state_->observer = std::move(observer);
    title_ = list_.title();
}

EvolutionClient::~EvolutionClient() {
    for (const auto& [object, handler] : handlers_)
        g_signal_handler_disconnect(object, handler);
}

std::optional<bool> EvolutionClient::readWritability() {
    const auto waiting = call();
    const auto answer = reader_ ? reader_->isWritable(waiting.cancellable())
                                : std::optional(!e_client_is_readonly(client_.get()));
    if (answer)
        state_->isWritable = *answer;
    else
        state_->isLost = true;
    return answer;
}

std::optional<bool> EvolutionClient::hasUnsent() {
    const auto waiting = call();
    return hasUnsentChanges(cacheFolder_);
}

void EvolutionClient::listen(gpointer object, const char* signal, GCallback handler) {
    handlers_.emplace_back(G_OBJECT(object),
                           g_signal_connect_data(object, signal, handler, new StateRef(state_),
                                                 forgetShared<State>, GConnectFlags(0)));
}

void EvolutionClient::observe(GCancellable* cancellable) {
    listen(client_.get(), "backend-died", G_CALLBACK(+[](EClient*, gpointer state) {
               State& told = **static_cast<StateRef*>(state);
               told.isLost = true;
               told.observer.lost();
           }));
    listen(client_.get(), "notify::readonly", G_CALLBACK(+[](GObject* client, GParamSpec*, gpointer state) {
               const State& told = **static_cast<StateRef*>(state);
               if (told.isWritable == static_cast<bool>(e_client_is_readonly(E_CLIENT(client))))
                   told.observer.writabilityChanged();
           }));
    if (!state_->observer.itemsChanged)
        return;
    Error error;
    ECalClientView* view = nullptr;
    if (!e_cal_client_get_view_sync(calendar(), everything, &view, cancellable, error.out())) {
        state_->isLost = true;
        return;
    }
    view_.reset(view);
    listen(view, "objects-added", G_CALLBACK(objectsTold));
    listen(view, "objects-modified", G_CALLBACK(objectsTold));
    listen(view, "objects-removed", G_CALLBACK(objectsRemoved));
    GSList* fields = nullptr;
    for (const char* field : {"RECURRENCE-ID", "UID"})
        fields = g_slist_prepend(fields, const_cast<char*>(field));
    // None of these calls can be cancelled, and each lasts as long as the bus waits: one that fails is the
    // last.
    Error failed;
    GError** const failure = failed.out();
    e_cal_client_view_set_fields_of_interest(view, fields, failure);
    g_slist_free(fields);
    // Existing items are fetched, not announced.
    if (!*failure)
        e_cal_client_view_set_flags(view, E_CAL_CLIENT_VIEW_FLAGS_NONE, failure);
    if (!*failure)
        e_cal_client_view_start(view, failure);
    state_->isLost = *failure != nullptr;
}

void EvolutionClient::objectsTold(ECalClientView*, const GSList* components, gpointer state) {
    std::set<QByteArray> uids;
    for (const GSList* link = components; link; link = link->next) {
        if (const char* const uid = i_cal_component_get_uid(I_CAL_COMPONENT(link->data)))
            uids.insert(uid);
    }
    (*static_cast<StateRef*>(state))->observer.itemsChanged(std::move(uids));
}

void EvolutionClient::objectsRemoved(ECalClientView*, const GSList* identifiers, gpointer state) {
    std::set<QByteArray> uids;
    for (const GSList* link = identifiers; link; link = link->next)
        uids.insert(e_cal_component_id_get_uid(static_cast<ECalComponentId*>(link->data)));
    (*static_cast<StateRef*>(state))->observer.itemsChanged(std::move(uids));
}

QByteArray EvolutionClient::zoneDefinition(const QByteArray& name) {
    if (const auto known = zones_.find(name); known != zones_.end())
        return known->second;
    Error error;
    ICalTimezone* zone = nullptr;
    QByteArray definition;
    {
        const auto waiting = call();
        // The zone remains the client's.
        if (e_cal_client_get_timezone_sync(calendar(), name.constData(), &zone, waiting.cancellable(),
                                           error.out()) &&
            zone) {
            if (const Ref<ICalComponent> component{i_cal_timezone_get_component(zone)})
                definition = textOf(component.get());
        }
    }
    zones_.emplace(name, definition);
    return definition;
}

QByteArray EvolutionClient::fileFrom(std::vector<QByteArray> components) {
    std::vector<QByteArray> zones;
    const bool areBirthdays = list_.holdsBirthdays();
    for (QByteArray& component : components) {
        if (areBirthdays)
            component = yearlyBirthday(std::move(component));
        for (const QByteArray& name : obscureZones(component)) {
            QByteArray definition = zoneDefinition(name);
            if (!definition.isEmpty() && std::find(zones.begin(), zones.end(), definition) == zones.end())
                zones.push_back(std::move(definition));
        }
    }
    return fileOf(std::move(components), zones);
}

std::optional<std::vector<QByteArray>> EvolutionClient::allComponents(Error& error) {
    const auto waiting = call();
    if (reader_)
        return reader_->readAll(waiting.cancellable(), error);
    ObjectList<GSList> found;
    if (!e_cal_client_get_object_list_sync(calendar(), everything, found.out(), waiting.cancellable(),
                                           error.out()))
        return std::nullopt;
    std::vector<QByteArray> result;
    for (const GSList* link = found.first(); link; link = link->next)
        result.push_back(textOf(I_CAL_COMPONENT(link->data)));
    return result;
}

std::optional<std::vector<QByteArray>> EvolutionClient::componentsOf(const QByteArray& uid, Error& error) {
    const auto waiting = call();
    if (reader_)
        return reader_->read(uid, waiting.cancellable(), error);
    ObjectList<GSList> found;
    if (!e_cal_client_get_objects_for_uid_sync(calendar(), uid.constData(), found.out(),
                                               waiting.cancellable(), error.out()))
        return std::nullopt;
    std::vector<QByteArray> result;
    for (const GSList* link = found.first(); link; link = link->next)
        result.push_back(textOf(e_cal_component_get_icalcomponent(E_CAL_COMPONENT(link->data))));
    return result;
}

std::optional<std::map<QByteArray, QByteArray>> EvolutionClient::readAll() {
    Error error;
    auto all = allComponents(error);
    if (!all) {
        state_->isLost = true;
        return std::nullopt;
    }
    std::map<QByteArray, std::vector<QByteArray>> components;
    for (QByteArray& component : *all) {
        QByteArray uid = uidOf(component);
        components[std::move(uid)].push_back(std::move(component));
    }
    std::map<QByteArray, QByteArray> result;
    for (auto& [uid, texts] : components)
        result.emplace_hint(result.end(), uid, fileFrom(std::move(texts)));
    return result;
}

EvolutionClient::Answer<std::optional<QByteArray>> EvolutionClient::read(const QByteArray& uid) {
    Error error;
    auto components = componentsOf(uid, error);
    if (!components && error.is(E_CAL_CLIENT_ERROR, E_CAL_CLIENT_ERROR_OBJECT_NOT_FOUND))
        return std::nullopt;
    if (!components)
        return tl::unexpected(failure(error, {}));
    if (components->empty())
        return std::nullopt;
    return fileFrom(std::move(*components));
}

void EvolutionClient::refresh() {
    Error ignored;
    const auto waiting = call();
    (void)e_client_refresh_sync(client_.get(), waiting.cancellable(), ignored.out());
}

}  // namespace kestrant::evolution
