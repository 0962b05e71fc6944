#include "eventkit/evolution/EvolutionStorage.h"

#include "eventkit/EKErrors.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <tuple>
#include <utility>

namespace kestrant::evolution {

using items::Changes;
using items::Collection;
using items::ItemFile;
using items::Library;

namespace {

using namespace std::chrono_literals;

/// How long each call may take when the program ends.
constexpr auto longestAtTheEnd = 1s;

EKError noService(const QString& detail) {
    const TextPair pair = text("The desktop’s calendar service cannot be reached: %1",
                               "Le service d’agenda du bureau est injoignable : %1");
    return {EKError::Code::storage, {pair.english.arg(detail), pair.french.arg(detail)}};
}

TextPair slowService() {
    return text("The desktop’s calendar service takes long to answer. Changes wait until it does.",
                "Le service d’agenda du bureau tarde à répondre. Les changements attendent sa réponse.");
}

TextPair silentList(const QString& title, const QString& detail) {
    const TextPair pair = text("“%1” does not answer; it is shown as it was last seen.",
                               "« %1 » ne répond pas ; la liste est affichée telle qu’elle était.");
    const QString reason = detail.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(detail);
    return {pair.english.arg(title) + reason, pair.french.arg(title) + reason};
}

EKError listDoesNotAnswer(const QString& title) {
    const TextPair pair =
        text("“%1” does not answer. Nothing was written.", "« %1 » ne répond pas. Rien n’a été enregistré.");
    return {EKError::Code::storage, {pair.english.arg(title), pair.french.arg(title)}};
}

QString titleOf(ESource* source) {
    const Text name(e_source_dup_display_name(source));
    return QString::fromUtf8(name.get());
}

ESourceSelectable* selectableOf(ESource* source, EKEntityType type) {
    const char* const extension =
        type == EKEntityType::reminder ? E_SOURCE_EXTENSION_TASK_LIST : E_SOURCE_EXTENSION_CALENDAR;
    return E_SOURCE_SELECTABLE(e_source_get_extension(source, extension));
}

}  // namespace

class EvolutionStorage::Listener {
  public:
    explicit Listener(items::StorageObserver observer) : observer_(std::move(observer)) {}

    void tell(const Changes& changes) {
        const std::lock_guard lock(mutex_);
        if (observer_.changed)
            observer_.changed(changes);
    }
    void tellOfWaiting(bool waits) {
        const std::lock_guard lock(mutex_);
        if (observer_.waits)
            observer_.waits(waits ? std::optional(slowService()) : std::nullopt);
    }
    void end() {
        const std::lock_guard lock(mutex_);
        observer_ = {};
    }

  private:
    std::mutex mutex_;
    items::StorageObserver observer_;
};

EvolutionStorage::EvolutionStorage(items::StorageObserver observer, std::chrono::milliseconds longestCall)
    : listener_(std::make_shared<Listener>(std::move(observer)))
    , limit_(longestCall, [listener = listener_](bool isSlow) { listener->tellOfWaiting(isSlow); }) {}

EvolutionStorage::~EvolutionStorage() {
    close();
}

std::optional<EKError> EvolutionStorage::open() {
    if (registry_)
        return std::nullopt;
    Error error;
    const auto call = limit_.call();
    registry_.reset(e_source_registry_new_sync(call.cancellable(), error.out()));
    if (!registry_)
        return noService(error.message());
    observeRegistry();
    return std::nullopt;
}

void EvolutionStorage::hurry() {
    limit_.setLongest(longestAtTheEnd);
}

void EvolutionStorage::close() {
    listener_->end();
    clients_.clear();
    for (const gulong handler : handlers_)
        g_signal_handler_disconnect(registry_.get(), handler);
    handlers_.clear();
    registry_.reset();
}

void EvolutionStorage::registryChanged(ESourceRegistry*, gpointer, gpointer listener) {
    (*static_cast<std::shared_ptr<Listener>*>(listener))->tell({.collections = true});
}

void EvolutionStorage::observeRegistry() {
    const auto forget =
        +[](gpointer listener, GClosure*) { delete static_cast<std::shared_ptr<Listener>*>(listener); };
    for (const char* signal : {"source-added", "source-removed", "source-changed", "source-enabled",
                               "source-disabled", "notify::default-task-list", "notify::default-calendar"})
        handlers_.push_back(g_signal_connect_data(registry_.get(), signal, G_CALLBACK(registryChanged),
                                                  new std::shared_ptr<Listener>(listener_), forget, {}));
}

std::map<QByteArray, EvolutionStorage::List> EvolutionStorage::enabledLists() {
    std::map<QByteArray, List> result;
    for (const EKEntityType type : {EKEntityType::reminder, EKEntityType::event}) {
        const ObjectList<GList> sources(e_source_registry_list_enabled(
            registry_.get(),
            type == EKEntityType::reminder ? E_SOURCE_EXTENSION_TASK_LIST : E_SOURCE_EXTENSION_CALENDAR));
        for (const GList* link = sources.first(); link; link = link->next) {
            auto* const source = E_SOURCE(link->data);
            // What the desktop's own calendar does not show is not wanted here either.
            if (e_source_selectable_get_selected(selectableOf(source, type)))
                result.try_emplace(e_source_get_uid(source),
                                   List{Ref<ESource>(E_SOURCE(g_object_ref(source))), type});
        }
    }
    return result;
}

EvolutionClient* EvolutionStorage::clientFor(const QByteArray& uid, const List& list, QString& error) {
    auto& client = clients_[uid];
    if (client && client->isLost())
        client.reset();
    if (!client) {
        client =
            EvolutionClient::connect(list.source.get(), list.type, limit_,
                                     {.itemsChanged =
                                          [this, uid](std::set<QByteArray> items) {
                                              listener_->tell({.files = {{uid, std::move(items)}}});
                                          },
                                      .propertiesChanged = [this] { listener_->tell({.collections = true}); },
                                      .lost =
                                          [this, uid] {
                                              listener_->tell({.files = {{uid, {}}}});
                                          }},
                                     error);
    }
    return client.get();
}

bool EvolutionStorage::update(Library& library, const Changes& changes, const ZoneCalendar& local) {
    if (!registry_)
        return false;
    const auto lists = enabledLists();
    bool changed = std::erase_if(library.collections, [&](const auto& collection) {
                       return !lists.contains(collection.first);
                   }) > 0;
    std::erase_if(clients_, [&](const auto& client) { return !lists.contains(client.first); });
    std::erase_if(silent_, [&](const auto& list) { return !lists.contains(list.first); });
    for (const auto& [uid, list] : lists) {
        const bool isNew = !library.collections.contains(uid);
        const auto named = changes.files.find(uid);
        const std::set<QByteArray> none;
        // Without names, everything in the list is compared.
        const bool isAll =
            isNew || changes.everything || !clients_.contains(uid) || silent_.contains(uid) ||
            (named != changes.files.end() && (named->second.empty() || named->second.size() > mostReadAlone));
        const std::set<QByteArray>* items = named == changes.files.end() ? &none : &named->second;
        changed = updateList(library.collections[uid], uid, list, isAll ? nullptr : items, local) || isNew ||
                  changed;
    }
    return updateDefaults(library) || changed;
}

bool EvolutionStorage::updateDefaults(Library& library) const {
    const auto uidOf = [](ESource* source) {
        const Ref<ESource> owned(source);
        return source ? QByteArray(e_source_get_uid(source)) : QByteArray();
    };
    const auto before = std::tie(library.defaultForReminders, library.defaultForEvents);
    const auto now = std::tuple(uidOf(e_source_registry_ref_default_task_list(registry_.get())),
                                uidOf(e_source_registry_ref_default_calendar(registry_.get())));
    if (before == now)
        return false;
    std::tie(library.defaultForReminders, library.defaultForEvents) = now;
    return true;
}

bool EvolutionStorage::updateList(Collection& collection, const QByteArray& uid, const List& list,
                                  const std::set<QByteArray>* named, const ZoneCalendar& local) {
    ESourceSelectable* const selectable = selectableOf(list.source.get(), list.type);
    const Text color(e_source_selectable_dup_color(selectable));
    const guint order = e_source_selectable_get_order(selectable);
    Collection read{.title = titleOf(list.source.get()),
                    .color = color ? Color::parse(QString::fromUtf8(color.get())) : std::nullopt,
                    .order = order > 0 ? std::optional(static_cast<int>(order)) : std::nullopt,
                    .holdsOnly = list.type};

    QString error;
    EvolutionClient* const client = clientFor(uid, list, error);
    bool changed = false;
    bool isSilent = !client;
    const items::ItemReader reader(uid, local);
    const auto keep = [&](const QByteArray& item, const QByteArray& text) {
        const items::Version version = versionOf(text);
        const auto known = collection.files.try_emplace(item).first;
        ItemFile& file = known->second;
        if (file.version == version)
            return;
        file = reader.read(text, known->first);
        file.version = version;
        changed = true;
    };
    if (client && !named) {
        if (const auto all = client->readAll()) {
            changed = std::erase_if(collection.files,
                                    [&](const auto& file) { return !all->contains(file.first); }) > 0;
            for (const auto& [item, text] : *all)
                keep(item, text);
        } else {
            isSilent = true;
        }
    } else if (client) {
        for (const QByteArray& item : *named) {
            const auto text = client->read(item);
            if (text && *text)
                keep(item, **text);
            else if (text)
                changed = collection.files.erase(item) > 0 || changed;
            isSilent = isSilent || !text;
        }
    }
    if (isSilent) {
        ++silent_[uid];
        read.problem = silentList(read.title, error);
    } else {
        silent_.erase(uid);
        read.isWritable = client->isWritable();
    }
    const auto key = [](const Collection& c) {
        return std::tie(c.title, c.color, c.order, c.isWritable, c.holdsOnly, c.problem);
    };
    if (key(collection) != key(read)) {
        read.files = std::move(collection.files);
        collection = std::move(read);
        changed = true;
    }
    return changed;
}

std::optional<EvolutionStorage::Recheck> EvolutionStorage::recheck() const {
    if (silent_.empty())
        return std::nullopt;
    Recheck result{.after = 60s, .what = {}};
    for (const auto& [uid, times] : silent_) {
        result.after = std::min<Duration>(result.after, 1s * (1 << std::min(times - 1, 6)));
        result.what.files[uid];
    }
    return result;
}

tl::expected<EvolutionClient*, EKError> EvolutionStorage::openClient(const QByteArray& collection) {
    const auto lists = enabledLists();
    const auto list = lists.find(collection);
    if (list == lists.end())
        return tl::unexpected(calendarNotFoundError());
    QString error;
    EvolutionClient* const client = clientFor(collection, list->second, error);
    if (!client)
        return tl::unexpected(listDoesNotAnswer(titleOf(list->second.source.get())));
    return client;
}

tl::expected<QByteArray, EKError> EvolutionStorage::saveCollection(const Library& library,
                                                                   const EKCalendar& calendar) {
    const auto refuse = [](const Error& error) { return tl::unexpected(noService(error.message())); };
    const EKEntityType type = calendar.allowsReminders ? EKEntityType::reminder : EKEntityType::event;
    Error error;
    if (calendar.calendarIdentifier.isEmpty()) {
        const Ref<ESource> source(e_source_new(nullptr, nullptr, error.out()));
        if (!source)
            return refuse(error);
        e_source_set_parent(source.get(), "local-stub");
        e_source_set_display_name(source.get(), calendar.title.toUtf8().constData());
        ESourceSelectable* const selectable = selectableOf(source.get(), type);
        e_source_backend_set_backend_name(E_SOURCE_BACKEND(selectable), "local");
        const Color color = calendar.color.value_or(items::unusedColor(library));
        e_source_selectable_set_color(selectable, color.toString().toUtf8().constData());
        const auto call = limit_.call();
        if (!e_source_registry_commit_source_sync(registry_.get(), source.get(), call.cancellable(),
                                                  error.out()))
            return refuse(error);
        const QByteArray uid = e_source_get_uid(source.get());
        // The process that keeps the items hears of the new list a moment later, and nothing tells when.
        for (auto pause = 5ms; !openClient(uid) && pause < 1s; pause *= 2)
            std::this_thread::sleep_for(pause);
        return uid;
    }
    const auto lists = enabledLists();
    const auto list = lists.find(calendar.calendarIdentifier.toUtf8());
    if (list == lists.end())
        return tl::unexpected(calendarNotFoundError());
    ESource* const source = list->second.source.get();
    if (!e_source_get_writable(source))
        return tl::unexpected(readOnlyError(titleOf(source)));
    e_source_set_display_name(source, calendar.title.toUtf8().constData());
    if (calendar.color)
        e_source_selectable_set_color(selectableOf(source, list->second.type),
                                      calendar.color->toString().toUtf8().constData());
    const auto call = limit_.call();
    if (!e_source_write_sync(source, call.cancellable(), error.out()))
        return refuse(error);
    return list->first;
}

}  // namespace kestrant::evolution
