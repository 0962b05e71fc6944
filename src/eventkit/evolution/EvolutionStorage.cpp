#include "eventkit/evolution/EvolutionStorage.h"

#include "eventkit/evolution/ServiceBus.h"
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
/// Time for cancelled calls to end.
constexpr auto grace = 1s;
/// A list of a server is late after this part of the limit, where others have answered.
constexpr int latePart = 10;

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

}  // namespace

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
    , lists_(limit_, [listener = listener_] { listener->tell({.collections = true}); })
    , observesChanges_(use.observesChanges) {
    if (!use.reminders)
        return;
    wanted_.emplace();
    for (const QString& identifier : *use.reminders)
        wanted_->insert(identifier.toUtf8());
}

EvolutionStorage::~EvolutionStorage() {
    close();
}

std::optional<EKError> EvolutionStorage::open() {
    return lists_.open();
}

void EvolutionStorage::prepareToClose() {
    limit_.prepareToClose(longestAtTheEnd);
}

void EvolutionStorage::close() {
    listener_->end();
    clients_.clear();
    lists_.close();
}

std::shared_ptr<EvolutionClient> EvolutionStorage::clientFor(const QByteArray& uid, const ServiceList& list,
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
    if (observesChanges_)
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

bool EvolutionStorage::update(Library& library, const Changes& changes, const TimeZone& local) {
    if (!lists_.isOpen())
        return false;
    const auto lists = lists_.enabled();
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
            // Each caller waits for a list once.
            auto answering = lists_.enabled();
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
            // Deferred, since it would block the queue that this runs in.
            listener_->tell({.files = {{uid, {}}}});
    }
    return lists_.updateDefaults(library) || changed;
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

bool EvolutionStorage::updateLists(Library& library, const Lists& lists) {
    const auto isGone = [&](const auto& entry) { return !lists.contains(entry.first); };
    bool changed = std::erase_if(library.collections, isGone) > 0;
    std::erase_if(clients_, isGone);
    std::erase_if(silent_, isGone);
    if (std::erase_if(unsent_, [&](const auto& list) {
            return isGone(list) || lists.at(list.first).isConnected();
        }) > 0)
        tellOfUnsent();
    for (auto& [uid, collection] : library.collections)
        changed = lists.at(uid).describe(collection) || changed;
    return changed;
}

void EvolutionStorage::readAllLists(Library& library, const Lists& lists, const TimeZone& local) {
    if (wanted_) {
        // Lists without wanted items are not waited for.
        for (const auto& [uid, list] : lists) {
            const auto [location, isNew] = library.collections.try_emplace(uid);
            (void)list.describe(location->second);
            if (isNew)
                location->second.isWritable = list.isWrittenMostly();
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
    for (const auto& [uid, list] : lists) {
        if (wanted_ && list.type != EKEntityType::reminder)
            continue;
        reading->awaited.insert(uid);
        if (list.isLocal())
            reading->local.insert(uid);
    }
    if (wanted_)
        reading->missing = *wanted_;
    const auto queued = reading->awaited;
    for (const QByteArray& uid : queued) {
        queues_->run(uid, [this, &library, uid, local, reading, wanted = wanted_] {
            const auto present = lists_.enabled();
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
            // Its result has not been read since.
            if (reading->isOver) {
                late_.insert(uid);
                listener_->tell({.files = {{uid, {}}}});
            }
        });
    }
    for (const QByteArray& uid : awaitReading(*reading)) {
        Collection& collection = library.collections[uid];
        (void)lists.at(uid).describe(collection);
        noteSilence(collection, uid, noAnswerInTime());
    }
}

std::set<QByteArray> EvolutionStorage::awaitReading(Reading& reading) {
    const SourceQueues::Away away;
    std::unique_lock lock(reading.mutex);
    // Another list may have an item of the same name, so the others have the time to say so.
    const auto isFound = [&] { return wanted_ && reading.missing.empty(); };
    const auto isEnough = [&] { return reading.awaited.empty(); };
    const auto isWorthWaiting = [&] {
        return !isFound() &&
               (!reading.hasAnswer ||
                std::any_of(reading.awaited.begin(), reading.awaited.end(),
                            [&](const QByteArray& list) { return reading.local.contains(list); }));
    };
    // Each ends with the limit by itself, but for what cannot be cancelled.
    const auto end = std::chrono::steady_clock::now() + limit_.longest() + grace;
    const auto patience = limit_.longest() / latePart;
    reading.changed.wait_for(lock, patience, isEnough);
    while (!isEnough() && isWorthWaiting() && std::chrono::steady_clock::now() < end) {
        lock.unlock();
        const auto call = limit_.call({});
        const bool hangs = !isResponding(calendarProcess, call.cancellable());
        lock.lock();
        if (hangs)
            break;
        reading.changed.wait_for(lock, patience, [&] { return isEnough() || !isWorthWaiting(); });
    }
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

bool EvolutionStorage::readList(Library& library, const QByteArray& uid, const ServiceList& list,
                                const std::set<QByteArray>* named, const TimeZone& local) {
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
    // The item may have been removed meanwhile.
    if (!lists_.enabled().contains(uid))
        return library.collections.erase(uid) > 0;
    // A list is there once what is in it is known.
    const auto [location, isNew] = library.collections.try_emplace(uid);
    Collection& collection = location->second;
    const bool isUntold = late_.erase(uid) > 0;
    bool changed = list.describe(collection) || isNew || isUntold;
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
    // The service takes no changes of a list that it has never seen on its server.
    if (!isWritable.value_or(true) && collection.files.empty() && list.isOnServer() && !list.isConnected()) {
        isSilent = true;
        reason = text("its server has not been reached yet", "son serveur n’a pas encore été joint");
    }
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

std::optional<EvolutionStorage::ScheduledCheck> EvolutionStorage::recheck() const {
    if (silent_.empty() && unsent_.empty())
        return std::nullopt;
    ScheduledCheck result{.after = unsent_.empty() ? 60s : 15s, .what = {}};
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
    const auto lists = lists_.enabled();
    const auto list = lists.find(collection);
    if (list == lists.end())
        return tl::unexpected(calendarNotFoundError());
    TextPair reason;
    auto client = clientFor(collection, list->second, reason);
    if (!client)
        return tl::unexpected(noAnswerError(list->second.title()));
    return client;
}

tl::expected<QByteArray, EKError> EvolutionStorage::saveCollection(const Library& library,
                                                                   const EKCalendar& calendar) {
    if (calendar.calendarIdentifier.isEmpty()) {
        auto uid = lists_.make(calendar, calendar.color.value_or(items::unusedColor(library)));
        // The service does not announce when the list can be opened.
        for (auto pause = 5ms; uid && !openClient(*uid) && pause < 1s; pause *= 2)
            (void)limit_.pause(pause);
        return uid;
    }
    const auto lists = lists_.enabled();
    const auto list = lists.find(calendar.calendarIdentifier.toUtf8());
    if (list == lists.end())
        return tl::unexpected(calendarNotFoundError());
    if (auto error = lists_.change(list->second, calendar))
        return tl::unexpected(std::move(*error));
    return list->first;
}

}  // namespace kestrant::evolution
