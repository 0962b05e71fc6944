#include "eventkit/evolution/EvolutionStorage.h"

#include "eventkit/evolution/ServiceErrors.h"
#include "eventkit/model/EKErrors.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
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
/// What calls that were cancelled need to end.
constexpr auto grace = 1s;
/// A list is late after this part of the limit, where others have answered.
constexpr int latePart = 5;

EKError noService(const TextPair& reason) {
    const TextPair pair = text("The desktop’s calendar service cannot be used: %1.",
                               "Le service d’agenda du bureau est inutilisable : %1.");
    return {EKError::Code::storage, {pair.english.arg(reason.english), pair.french.arg(reason.french)}};
}

TextPair slowAnswer(const std::set<QString>& lists) {
    if (lists.size() != 1 || lists.begin()->isEmpty())
        return text("The desktop’s calendar service takes long to answer. Changes wait until it does.",
                    "Le service d’agenda du bureau tarde à répondre. Les changements attendent sa réponse.");
    const TextPair pair = text("“%1” takes long to answer. Changes to it wait until it does.",
                               "« %1 » tarde à répondre. Ses changements attendent sa réponse.");
    return {pair.english.arg(*lists.begin()), pair.french.arg(*lists.begin())};
}

TextPair silentList(const QString& title, bool isShown, const TextPair& reason) {
    const TextPair pair =
        isShown ? text("“%1” does not answer; it is shown as it was last seen (%2).",
                       "« %1 » ne répond pas ; la liste est affichée telle qu’elle était (%2).")
                : text("“%1” does not answer; what is in it cannot be shown yet (%2).",
                       "« %1 » ne répond pas ; son contenu ne peut pas encore être affiché (%2).");
    return {pair.english.arg(title, reason.english), pair.french.arg(title, reason.french)};
}

TextPair noAnswerInTime() {
    return text("there was no answer in time", "pas de réponse à temps");
}

TextPair keptForLater(const QStringList& lists) {
    const TextPair pair = text(
        "The server of %1 cannot be reached. The desktop’s calendar service keeps changes and sends them "
        "later.",
        "Le serveur de %1 est injoignable. Le service d’agenda du bureau garde les changements et les "
        "enverra plus tard.");
    const auto quoted = [&](const char* quotes) {
        QStringList result;
        for (const QString& list : lists)
            result.append(QString::fromUtf8(quotes).arg(list));
        return result.join(QStringLiteral(", "));
    };
    return {pair.english.arg(quoted("“%1”")), pair.french.arg(quoted("« %1 »"))};
}

ESourceSelectable* selectableOf(ESource* source, EKEntityType type) {
    const char* const extension =
        type == EKEntityType::reminder ? E_SOURCE_EXTENSION_TASK_LIST : E_SOURCE_EXTENSION_CALENDAR;
    return E_SOURCE_SELECTABLE(e_source_get_extension(source, extension));
}

/// Whether lists of this kind can be changed as a rule, for one that has not been opened.
bool isWrittenMostly(ESourceSelectable* list) {
    const Text kind(e_source_backend_dup_backend_name(E_SOURCE_BACKEND(list)));
    const QByteArray name(kind.get());
    return name != "webcal" && name != "contacts" && name != "weather";
}

}  // namespace

QString EvolutionStorage::titleOf(ESource* source) {
    const Text name(e_source_dup_display_name(source));
    return QString::fromUtf8(name.get());
}

class EvolutionStorage::Listener {
  public:
    explicit Listener(items::StorageObserver observer) : observer_(std::move(observer)) {}

    void tell(const Changes& changes) {
        const std::lock_guard lock(mutex_);
        if (observer_.changed)
            observer_.changed(changes);
    }
    void tellOfWaiting(const std::set<QString>& lists) {
        const std::lock_guard lock(mutex_);
        if (observer_.waits)
            observer_.waits(lists.empty() ? std::nullopt : std::optional(slowAnswer(lists)));
    }
    void tellOfUnsent(std::optional<TextPair> reason) {
        const std::lock_guard lock(mutex_);
        if (observer_.unsent)
            observer_.unsent(std::move(reason));
    }
    void tellOfOverdue(const QByteArray& queue, const QString& list) {
        const std::lock_guard lock(mutex_);
        if (observer_.overdue)
            observer_.overdue(queue, list);
    }
    void end() {
        const std::lock_guard lock(mutex_);
        observer_ = {};
    }

  private:
    std::mutex mutex_;
    items::StorageObserver observer_;
};

EvolutionStorage::EvolutionStorage(items::StorageObserver observer, std::chrono::milliseconds longest,
                                   SourceQueues* queues, const EventStoreUse& use)
    : listener_(std::make_shared<Listener>(std::move(observer)))
    , limit_(
          longest,
          {.slow = [listener = listener_](const std::set<QString>& lists) { listener->tellOfWaiting(lists); },
           .overdue = [listener = listener_](const QByteArray& queue,
                                             const QString& list) { listener->tellOfOverdue(queue, list); }})
    , queues_(queues)
    , waitsForAll_(use.waitsForAll) {
    if (!use.items)
        return;
    wanted_.emplace();
    for (const QString& identifier : *use.items)
        wanted_->insert(identifier.toUtf8());
}

EvolutionStorage::~EvolutionStorage() {
    close();
}

std::optional<EKError> EvolutionStorage::open() {
    if (registry_)
        return std::nullopt;
    Error error;
    Ref<ESourceRegistry> registry;
    {
        const auto call = limit_.call({});
        registry.reset(e_source_registry_new_sync(call.cancellable(), error.out()));
    }
    if (!registry)
        return noService(reasonIn(error));
    registry_ = std::move(registry);
    observeRegistry();
    return std::nullopt;
}

void EvolutionStorage::hurry() {
    limit_.hurry(longestAtTheEnd);
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
    if (!registry_)
        return result;
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

std::shared_ptr<EvolutionClient> EvolutionStorage::clientFor(const QByteArray& uid, const List& list,
                                                             TextPair& reason) {
    const auto known = [&] {
        const auto found = clients_.find(uid);
        return found != clients_.end() && !found->second->isLost() ? found->second : nullptr;
    };
    if (auto client = known())
        return client;
    clients_.erase(uid);
    EvolutionClient::Observer observer{.itemsChanged = {},
                                       .writabilityChanged =
                                           [listener = listener_, uid] {
                                               listener->tell({.files = {{uid, {}}}});
                                           },
                                       .lost =
                                           [listener = listener_, uid] {
                                               listener->tell({.files = {{uid, {}}}});
                                           }};
    // Whoever wants single items is not there for long.
    if (!wanted_)
        observer.itemsChanged = [listener = listener_, uid](std::set<QByteArray> items) {
            listener->tell({.files = {{uid, std::move(items)}}});
        };
    auto client = EvolutionClient::connect(list.source.get(), list.type, limit_, std::move(observer), reason);
    // Somebody else may have connected meanwhile.
    if (auto other = known())
        return other;
    if (client)
        clients_[uid] = client;
    return client;
}

bool EvolutionStorage::update(Library& library, const Changes& changes, const ZoneCalendar& local) {
    if (!registry_)
        return false;
    const auto lists = enabledLists();
    bool changed = updateLists(library, lists);
    const bool readsAll = changes.everything && (!queues_ || !hasRead_ || wanted_);
    if (readsAll) {
        if (hasRead_)
            wanted_.reset();
        readAllLists(library, lists, local);
        const auto isFound = [&](const QByteArray& item) {
            return std::any_of(library.collections.begin(), library.collections.end(),
                               [&](const auto& list) { return list.second.files.contains(item); });
        };
        if (wanted_ && !std::all_of(wanted_->begin(), wanted_->end(), isFound)) {
            wanted_.reset();
            // Whoever has waited for a list does not do so again.
            auto answering = enabledLists();
            std::erase_if(answering, [&](const auto& list) { return silent_.contains(list.first); });
            readAllLists(library, answering, local);
        }
        hasRead_ = true;
        changed = true;
    }
    for (const auto& [uid, list] : lists) {
        const auto named = changes.files.find(uid);
        if (named != changes.files.end() && !readsAll)
            changed = readList(library, uid, list, needsAll(uid, named->second) ? nullptr : &named->second,
                               local) ||
                      changed;
        else if (!readsAll && (changes.everything || (!clients_.contains(uid) && !silent_.contains(uid))))
            // Not now: it would hold up the queue that this is done in.
            listener_->tell({.files = {{uid, {}}}});
    }
    return updateDefaults(library) || changed;
}

bool EvolutionStorage::isOnServer(const List& list) {
    const Text kind(
        e_source_backend_dup_backend_name(E_SOURCE_BACKEND(selectableOf(list.source.get(), list.type))));
    return QByteArrayView(kind.get()) == "caldav";
}

bool EvolutionStorage::isConnected(const List& list) {
    return e_source_get_connection_status(list.source.get()) == E_SOURCE_CONNECTION_STATUS_CONNECTED;
}

void EvolutionStorage::tellOfUnsent() {
    QStringList titles;
    for (const auto& [uid, title] : unsent_)
        titles.append(title);
    listener_->tellOfUnsent(titles.isEmpty() ? std::nullopt : std::optional(keptForLater(titles)));
}

void EvolutionStorage::tellChanged(const Changes& changes) {
    listener_->tell(changes);
}

bool EvolutionStorage::updateLists(Library& library, const std::map<QByteArray, List>& lists) {
    const auto isGone = [&](const auto& entry) { return !lists.contains(entry.first); };
    bool changed = std::erase_if(library.collections, isGone) > 0;
    std::erase_if(clients_, isGone);
    std::erase_if(silent_, isGone);
    if (std::erase_if(
            unsent_, [&](const auto& list) { return isGone(list) || isConnected(lists.at(list.first)); }) > 0)
        tellOfUnsent();
    for (auto& [uid, collection] : library.collections)
        changed = describe(collection, lists.at(uid)) || changed;
    return changed;
}

bool EvolutionStorage::describe(Collection& collection, const List& list) {
    ESourceSelectable* const selectable = selectableOf(list.source.get(), list.type);
    const Text color(e_source_selectable_dup_color(selectable));
    const guint order = e_source_selectable_get_order(selectable);
    const std::tuple now(
        titleOf(list.source.get()), color ? Color::parse(QString::fromUtf8(color.get())) : std::nullopt,
        order > 0 ? std::optional(static_cast<int>(order)) : std::nullopt, std::optional(list.type));
    auto present = std::tie(collection.title, collection.color, collection.order, collection.holdsOnly);
    if (present == now)
        return false;
    present = now;
    return true;
}

void EvolutionStorage::readAllLists(Library& library, const std::map<QByteArray, List>& lists,
                                    const ZoneCalendar& local) {
    if (wanted_) {
        // Nobody waits for those in which nothing is wanted.
        for (const auto& [uid, list] : lists) {
            const auto [place, isNew] = library.collections.try_emplace(uid);
            (void)describe(place->second, list);
            if (isNew)
                place->second.isWritable = isWrittenMostly(selectableOf(list.source.get(), list.type));
        }
        if (wanted_->empty())
            return;
    }
    if (!queues_) {
        for (const auto& [uid, list] : lists)
            readList(library, uid, list, wanted_ ? &*wanted_ : nullptr, local);
        return;
    }
    const auto reading = std::make_shared<Reading>();
    for (const auto& [uid, list] : lists)
        reading->awaited.insert(uid);
    if (wanted_)
        reading->missing = *wanted_;
    for (const auto& [uid, list] : lists) {
        queues_->run(uid, [this, &library, uid = uid, local, reading, wanted = wanted_] {
            const auto present = enabledLists();
            if (const auto found = present.find(uid); found != present.end())
                readList(library, uid, found->second, wanted ? &*wanted : nullptr, local);
            const auto read = library.collections.find(uid);
            const std::lock_guard lock(reading->mutex);
            if (read != library.collections.end()) {
                reading->hasAnswer = reading->hasAnswer || read->second.isAnswering;
                std::erase_if(reading->missing,
                              [&](const QByteArray& item) { return read->second.files.contains(item); });
            }
            reading->awaited.erase(uid);
            reading->changed.notify_one();
            // Nobody has looked since at what it found.
            if (reading->isOver) {
                late_.insert(uid);
                listener_->tell({.files = {{uid, {}}}});
            }
        });
    }
    for (const QByteArray& uid : awaitReading(*reading)) {
        Collection& collection = library.collections[uid];
        (void)describe(collection, lists.at(uid));
        noteSilence(collection, uid, noAnswerInTime());
    }
}

std::set<QByteArray> EvolutionStorage::awaitReading(Reading& reading) const {
    const SourceQueues::Away away;
    std::unique_lock lock(reading.mutex);
    const auto isFound = [&] { return wanted_ && reading.missing.empty(); };
    const auto isEnough = [&] { return reading.awaited.empty() || isFound(); };
    // Each ends with the limit by itself, but for what cannot be cancelled.
    const auto longest = limit_.longest() + grace;
    const auto patience = waitsForAll_ || wanted_ ? longest : limit_.longest() / latePart;
    reading.changed.wait_for(lock, patience, isEnough);
    reading.changed.wait_for(lock, longest - patience, [&] { return isEnough() || reading.hasAnswer; });
    reading.isOver = true;
    return isFound() ? std::set<QByteArray>() : reading.awaited;
}

void EvolutionStorage::noteSilence(Collection& collection, const QByteArray& uid, const TextPair& reason) {
    ++silent_[uid];
    collection.isAnswering = false;
    collection.isWritable = false;
    collection.problem = silentList(collection.title, !collection.files.empty(), reason);
}

bool EvolutionStorage::needsAll(const QByteArray& uid, const std::set<QByteArray>& named) const {
    const auto client = clients_.find(uid);
    return named.empty() || named.size() > mostReadAlone || client == clients_.end() ||
           client->second->isLost() || silent_.contains(uid);
}

bool EvolutionStorage::readList(Library& library, const QByteArray& uid, const List& list,
                                const std::set<QByteArray>* named, const ZoneCalendar& local) {
    TextPair reason = noAnswerInTime();
    const auto client = clientFor(uid, list, reason);
    std::optional<std::map<QByteArray, QByteArray>> all;
    std::map<QByteArray, std::optional<QByteArray>> some;
    bool isSilent = !client;
    if (client && !named) {
        settleUnfinished(uid);
        // The service connects again, and sends what it has kept.
        if (unsent_.contains(uid))
            client->refresh();
        all = client->readAll();
        isSilent = !all;
    } else if (client) {
        for (const QByteArray& item : *named) {
            if (auto text = client->read(item))
                some[item] = std::move(*text);
            else
                isSilent = true;
        }
    }
    const auto isWritable = isSilent ? std::nullopt : client->readWritability();
    isSilent = !isWritable;
    // It may have been taken away meanwhile.
    if (!enabledLists().contains(uid))
        return library.collections.erase(uid) > 0;
    // A list is there once what is in it is known.
    const auto [place, isNew] = library.collections.try_emplace(uid);
    Collection& collection = place->second;
    const bool isUntold = late_.erase(uid) > 0;
    bool changed = describe(collection, list) || isNew || isUntold;
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
    if (all) {
        changed = std::erase_if(collection.files,
                                [&](const auto& file) { return !all->contains(file.first); }) > 0 ||
                  changed;
        for (const auto& [item, text] : *all)
            keep(item, text);
    }
    for (const auto& [item, text] : some) {
        if (text)
            keep(item, *text);
        else
            changed = collection.files.erase(item) > 0 || changed;
    }
    const auto state = [&] {
        return std::tuple(collection.isWritable, collection.isAnswering, collection.problem);
    };
    const auto before = state();
    if (isSilent) {
        noteSilence(collection, uid, reason);
    } else {
        silent_.erase(uid);
        collection.isAnswering = true;
        collection.isWritable = *isWritable;
        collection.problem.reset();
    }
    return changed || before != state();
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

std::optional<EvolutionStorage::Recheck> EvolutionStorage::recheck() const {
    if (silent_.empty() && unsent_.empty())
        return std::nullopt;
    Recheck result{.after = unsent_.empty() ? 60s : 15s, .what = {}};
    for (const auto& [uid, title] : unsent_)
        result.what.files[uid];
    for (const auto& [uid, times] : silent_) {
        result.after = std::min<Duration>(result.after, 1s * (1 << std::min(times - 1, 6)));
        result.what.files[uid];
    }
    return result;
}

tl::expected<std::shared_ptr<EvolutionClient>, EKError>
EvolutionStorage::openClient(const QByteArray& collection) {
    const auto lists = enabledLists();
    const auto list = lists.find(collection);
    if (list == lists.end())
        return tl::unexpected(calendarNotFoundError());
    TextPair reason;
    auto client = clientFor(collection, list->second, reason);
    if (!client)
        return tl::unexpected(noAnswerError(titleOf(list->second.source.get())));
    return client;
}

tl::expected<QByteArray, EKError> EvolutionStorage::saveCollection(const Library& library,
                                                                   const EKCalendar& calendar) {
    const auto refuse = [](const Error& error) { return tl::unexpected(noService(reasonIn(error))); };
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
        const auto isCommitted = [&] {
            const auto call = limit_.call({});
            return e_source_registry_commit_source_sync(registry_.get(), source.get(), call.cancellable(),
                                                        error.out());
        };
        if (!isCommitted())
            return refuse(error);
        const QByteArray uid = e_source_get_uid(source.get());
        // The process that keeps the items hears of the new list a moment later, and nothing tells when.
        for (auto pause = 5ms; !openClient(uid) && pause < 1s; pause *= 2)
            (void)limit_.pause(pause);
        return uid;
    }
    const auto lists = enabledLists();
    const auto list = lists.find(calendar.calendarIdentifier.toUtf8());
    if (list == lists.end())
        return tl::unexpected(calendarNotFoundError());
    ESource* const source = list->second.source.get();
    if (!e_source_get_writable(source))
        return tl::unexpected(readOnlyError(titleOf(source)));
    ESourceSelectable* const selectable = selectableOf(source, list->second.type);
    const QByteArray title = calendar.title.toUtf8();
    const QByteArray color = calendar.color ? calendar.color->toString().toUtf8() : QByteArray();
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
            return refuse(error);
        (void)limit_.pause(pause);
        if (isAsWanted())
            break;
    }
    return list->first;
}

}  // namespace kestrant::evolution
