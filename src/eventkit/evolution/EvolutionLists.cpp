#include "eventkit/evolution/EvolutionLists.h"

#include "eventkit/evolution/ServiceBus.h"
#include "eventkit/evolution/ServiceErrors.h"
#include "eventkit/model/EKErrors.h"

#include <chrono>
#include <tuple>
#include <utility>

namespace kestrant::evolution {

namespace {

using namespace std::chrono_literals;

EKError noService(const TextPair& reason) {
    const TextPair pair = text("The desktop’s calendar service cannot be used: %1.",
                               "Le service d’agenda du bureau est inutilisable : %1.");
    return {EKError::Code::storage, {pair.english.arg(reason.english), pair.french.arg(reason.french)}};
}

const char* extensionFor(EKEntityType type) {
    return type == EKEntityType::reminder ? E_SOURCE_EXTENSION_TASK_LIST : E_SOURCE_EXTENSION_CALENDAR;
}

ESourceSelectable* selectableOf(ESource* source, EKEntityType type) {
    return E_SOURCE_SELECTABLE(e_source_get_extension(source, extensionFor(type)));
}

QByteArray kindOf(const ServiceList& list) {
    const Text kind(
        e_source_backend_dup_backend_name(E_SOURCE_BACKEND(selectableOf(list.source.get(), list.type))));
    return kind.get();
}

void listsChanged(ESourceRegistry*, gpointer, gpointer changed) {
    (*static_cast<std::function<void()>*>(changed))();
}

}  // namespace

QString ServiceList::title() const {
    const Text name(e_source_dup_display_name(source.get()));
    return QString::fromUtf8(name.get());
}

bool ServiceList::isLocal() const {
    return kindOf(*this) == "local";
}

bool ServiceList::holdsBirthdays() const {
    return kindOf(*this) == "contacts";
}

bool ServiceList::isOnServer() const {
    return kindOf(*this) == "caldav";
}

bool ServiceList::isConnected() const {
    return e_source_get_connection_status(source.get()) == E_SOURCE_CONNECTION_STATUS_CONNECTED;
}

bool ServiceList::isWrittenMostly() const {
    const QByteArray kind = kindOf(*this);
    return kind != "webcal" && kind != "contacts" && kind != "weather";
}

bool ServiceList::describe(items::Collection& collection) const {
    ESourceSelectable* const selectable = selectableOf(source.get(), type);
    const Text color(e_source_selectable_dup_color(selectable));
    const guint order = e_source_selectable_get_order(selectable);
    const std::tuple now(title(), color ? Color::parse(QString::fromUtf8(color.get())) : std::nullopt,
                         order > 0 ? std::optional(static_cast<int>(order)) : std::nullopt,
                         std::optional(type));
    auto present = std::tie(collection.title, collection.color, collection.order, collection.holdsOnly);
    if (present == now)
        return false;
    present = now;
    return true;
}

EvolutionLists::EvolutionLists(CallTimeout& limit, std::function<void()> changed)
    : limit_(limit)
    , changed_(std::move(changed)) {}

EvolutionLists::~EvolutionLists() {
    close();
}

std::optional<EKError> EvolutionLists::open() {
    if (registry_)
        return std::nullopt;
    Error error;
    {
        const auto call = limit_.call({});
        // The library waits for a process that hangs longer than the limit.
        if (!isResponding(registryProcess, call.cancellable()))
            return noService(noAnswerInTime());
        registry_.reset(e_source_registry_new_sync(call.cancellable(), error.out()));
    }
    if (!registry_)
        return noService(reasonIn(error));
    const auto forget =
        +[](gpointer changed, GClosure*) { delete static_cast<std::function<void()>*>(changed); };
    for (const char* signal : {"source-added", "source-removed", "source-changed", "source-enabled",
                               "source-disabled", "notify::default-task-list", "notify::default-calendar"})
        handlers_.push_back(g_signal_connect_data(registry_.get(), signal, G_CALLBACK(listsChanged),
                                                  new std::function<void()>(changed_), forget, {}));
    return std::nullopt;
}

void EvolutionLists::close() {
    for (const gulong handler : std::exchange(handlers_, {}))
        g_signal_handler_disconnect(registry_.get(), handler);
    registry_.reset();
}

std::map<QByteArray, ServiceList> EvolutionLists::enabled() const {
    std::map<QByteArray, ServiceList> result;
    if (!registry_)
        return result;
    for (const EKEntityType type : {EKEntityType::reminder, EKEntityType::event}) {
        const ObjectList<GList> sources(e_source_registry_list_enabled(registry_.get(), extensionFor(type)));
        for (const GList* link = sources.first(); link; link = link->next) {
            auto* const source = E_SOURCE(link->data);
            // Calendars hidden in the desktop's own program are hidden here too.
            if (e_source_selectable_get_selected(selectableOf(source, type)))
                result.try_emplace(e_source_get_uid(source),
                                   ServiceList{Ref<ESource>(E_SOURCE(g_object_ref(source))), type});
        }
    }
    return result;
}

bool EvolutionLists::updateDefaults(items::StorageContents& contents) const {
    const auto uidOf = [](ESource* source) {
        const Ref<ESource> owned(source);
        return source ? QByteArray(e_source_get_uid(source)) : QByteArray();
    };
    auto present = std::tie(contents.defaultForReminders, contents.defaultForEvents);
    const std::tuple now(uidOf(e_source_registry_ref_default_task_list(registry_.get())),
                         uidOf(e_source_registry_ref_default_calendar(registry_.get())));
    if (present == now)
        return false;
    present = now;
    return true;
}

tl::expected<QByteArray, EKError> EvolutionLists::make(const EKCalendar& wanted, const Color& color) {
    const EKEntityType type = wanted.allowsReminders ? EKEntityType::reminder : EKEntityType::event;
    Error error;
    const Ref<ESource> source(e_source_new(nullptr, nullptr, error.out()));
    if (!source)
        return tl::unexpected(noService(reasonIn(error)));
    e_source_set_parent(source.get(), "local-stub");
    e_source_set_display_name(source.get(), wanted.title.toUtf8().constData());
    ESourceSelectable* const selectable = selectableOf(source.get(), type);
    e_source_backend_set_backend_name(E_SOURCE_BACKEND(selectable), "local");
    e_source_selectable_set_color(selectable, color.toString().toUtf8().constData());
    const auto call = limit_.call({});
    if (!e_source_registry_commit_source_sync(registry_.get(), source.get(), call.cancellable(), error.out()))
        return tl::unexpected(noService(reasonIn(error)));
    return QByteArray(e_source_get_uid(source.get()));
}

std::optional<EKError> EvolutionLists::change(const ServiceList& list, const EKCalendar& wanted) {
    ESource* const source = list.source.get();
    if (!e_source_get_writable(source))
        return readOnlyError(list.title());
    ESourceSelectable* const selectable = selectableOf(source, list.type);
    const QByteArray title = wanted.title.toUtf8();
    const QByteArray color = wanted.color ? wanted.color->toString().toUtf8() : QByteArray();
    Error error;
    const auto isWritten = [&] {
        const auto call = limit_.call({});
        return e_source_write_sync(source, call.cancellable(), error.out());
    };
    const auto isAsWanted = [&] {
        return title == e_source_get_display_name(source) &&
               (color.isEmpty() || color == e_source_selectable_get_color(selectable));
    };
    // What the service tells of the list meanwhile takes the place of what was set here, so that is looked at
    // again.
    for (auto pause = 5ms; pause < 1s; pause *= 2) {
        e_source_set_display_name(source, title.constData());
        if (!color.isEmpty())
            e_source_selectable_set_color(selectable, color.constData());
        if (!isWritten())
            return noService(reasonIn(error));
        (void)limit_.pause(pause);
        if (isAsWanted())
            break;
    }
    return std::nullopt;
}

}  // namespace kestrant::evolution
