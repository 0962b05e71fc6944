#include "eventkit/evolution/EvolutionStorage.h"

#include "eventkit/model/EKErrors.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace kestrant::evolution {

using items::Changes;
using items::StorageContents;

namespace {

using namespace std::chrono_literals;

/// How long each call may take when the program ends.
constexpr auto longestAtTheEnd = 1s;

TextPair slowAnswer(const std::set<QString>& lists) {
    if (lists.size() != 1 || lists.begin()->isEmpty())
        return text("The desktop’s calendar service takes long to answer. Changes wait until it does.",
                    "Le service d’agenda du bureau tarde à répondre. Les changements attendent sa réponse.");
    const TextPair pair = text("“%1” takes long to answer. Changes to it wait until it does.",
                               "« %1 » tarde à répondre. Ses changements attendent sa réponse.");
    return {pair.english.arg(*lists.begin()), pair.french.arg(*lists.begin())};
}

TextPair keptForLater(const QStringList& lists) {
    const TextPair pair = text(
        "Changes to %1 have not been sent yet. The desktop’s calendar service keeps them and sends them when "
        "the server can be reached.",
        "Des changements de %1 ne sont pas encore envoyés. Le service d’agenda du bureau les garde et les "
        "enverra quand le serveur sera joignable.");
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

bool EvolutionStorage::update(StorageContents& contents, const Changes& changes, const TimeZone& local) {
    if (!lists_.isOpen())
        return false;
    const auto lists = lists_.enabled();
    bool changed = updateLists(contents, lists);
    const bool readsAll = changes.everything && (!queues_ || !hasRead_ || wanted_);
    if (readsAll) {
        if (hasRead_)
            wanted_.reset();
        readAllLists(contents, lists, local);
        const auto isFound = [&](const QByteArray& item) {
            return std::any_of(contents.collections.begin(), contents.collections.end(),
                               [&](const auto& list) { return list.second.files.contains(item); });
        };
        if (wanted_ && !std::all_of(wanted_->begin(), wanted_->end(), isFound)) {
            wanted_.reset();
            // Each caller waits for a list once.
            auto answering = lists_.enabled();
            std::erase_if(answering, [&](const auto& list) { return silent_.contains(list.first); });
            readAllLists(contents, answering, local);
        }
        hasRead_ = true;
        changed = true;
    }
    for (const auto& [uid, list] : lists) {
        const auto named = changes.files.find(uid);
        if (named != changes.files.end() && !readsAll)
            changed = readList(contents, uid, list, needsAll(uid, named->second) ? nullptr : &named->second,
                               local) ||
                      changed;
        else if (!readsAll && (changes.everything || (!clients_.contains(uid) && !silent_.contains(uid))))
            // Deferred, since it would block the queue that this runs in.
            listener_->tell({.files = {{uid, {}}}});
    }
    return lists_.updateDefaults(contents) || changed;
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

bool EvolutionStorage::updateLists(StorageContents& contents, const Lists& lists) {
    const auto isGone = [&](const auto& entry) { return !lists.contains(entry.first); };
    bool changed = std::erase_if(contents.collections, isGone) > 0;
    std::erase_if(clients_, isGone);
    std::erase_if(silent_, isGone);
    if (std::erase_if(unsent_, isGone) > 0)
        tellOfUnsent();
    for (auto& [uid, collection] : contents.collections)
        changed = lists.at(uid).describe(collection) || changed;
    return changed;
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

tl::expected<QByteArray, EKError> EvolutionStorage::saveCollection(const StorageContents& contents,
                                                                   const EKCalendar& calendar) {
    if (calendar.calendarIdentifier.isEmpty()) {
        auto uid = lists_.make(calendar, calendar.color.value_or(items::unusedColor(contents)));
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
