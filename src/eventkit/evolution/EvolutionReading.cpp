#include "eventkit/evolution/EvolutionStorage.h"
#include "eventkit/evolution/ServiceBus.h"
#include "eventkit/evolution/ServiceErrors.h"
#include "eventkit/evolution/ServiceText.h"

#include <algorithm>
#include <chrono>
#include <tuple>
#include <utility>

// Reading lists: all of them at the same time, one of them, or items of it.

namespace kestrant::evolution {

using items::Collection;
using items::ItemFile;
using items::StorageContents;

namespace {

using namespace std::chrono_literals;

/// Time for cancelled calls to end.
constexpr auto grace = 1s;
/// A list of a server is late after this part of the limit, where others have answered.
constexpr int latePart = 10;

TextPair silentList(const QString& title, bool isShown, const TextPair& reason) {
    const TextPair pair =
        isShown ? text("“%1” does not answer; it is shown as it was last seen (%2).",
                       "« %1 » ne répond pas ; la liste est affichée telle qu’elle était (%2).")
                : text("“%1” does not answer; what is in it cannot be shown yet (%2).",
                       "« %1 » ne répond pas ; son contenu ne peut pas encore être affiché (%2).");
    return {pair.english.arg(title, reason.english), pair.french.arg(title, reason.french)};
}

}  // namespace

void EvolutionStorage::readAllLists(StorageContents& contents, const Lists& lists, const TimeZone& local) {
    if (wanted_) {
        // Lists without wanted items are not waited for.
        for (const auto& [uid, list] : lists) {
            const auto [location, isNew] = contents.collections.try_emplace(uid);
            (void)list.describe(location->second);
            if (isNew)
                location->second.isWritable = list.isWrittenMostly();
        }
        if (wanted_->empty())
            return;
    }
    if (!queues_) {
        for (const auto& [uid, list] : lists)
            readList(contents, uid, list, wanted_ ? &*wanted_ : nullptr, local);
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
        queues_->run(uid, [this, &contents, uid, local, reading, wanted = wanted_] {
            const auto present = lists_.enabled();
            if (const auto found = present.find(uid); found != present.end())
                readList(contents, uid, found->second, wanted ? &*wanted : nullptr, local);
            const auto read = contents.collections.find(uid);
            const std::lock_guard lock(reading->mutex);
            if (read != contents.collections.end()) {
                reading->hasAnswer = reading->hasAnswer || read->second.isAnswering;
                std::erase_if(reading->missing,
                              [&](const QByteArray& item) { return read->second.files.contains(item); });
            }
            reading->awaited.erase(uid);
            reading->changed.notify_one();
            // Its result has not been read since.
            if (reading->isOver) {
                late_.insert(uid);
                tellChanged({.files = {{uid, {}}}});
            }
        });
    }
    for (const QByteArray& uid : awaitReading(*reading)) {
        Collection& collection = contents.collections[uid];
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

bool EvolutionStorage::readList(StorageContents& contents, const QByteArray& uid, const ServiceList& list,
                                const std::set<QByteArray>* named, const TimeZone& local) {
    TextPair reason = noAnswerInTime();
    const auto client = clientFor(uid, list, reason);
    std::optional<std::map<QByteArray, QByteArray>> all;
    std::map<QByteArray, std::optional<QByteArray>> some;
    bool isSilent = !client;
    if (client && !named) {
        settleUnfinished(uid);
        // The service connects to the server again, and sends what it has kept.
        if (unsent_.contains(uid) || silent_.contains(uid))
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
    bool isWritable = false;
    if (!isSilent) {
        const auto answer = client->readWritability();
        isSilent = !answer;
        isWritable = answer && *answer;
    }
    if (!isSilent && (all || unsent_.contains(uid)))
        noteSending(uid, *client);
    // The item may have been removed meanwhile.
    if (!lists_.enabled().contains(uid))
        return contents.collections.erase(uid) > 0;
    // A list is there once what is in it is known.
    const auto [location, isNew] = contents.collections.try_emplace(uid);
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
    if (!isSilent && !isWritable && collection.files.empty() && list.isOnServer() && !list.isConnected()) {
        isSilent = true;
        reason = text("its server has not been reached yet", "son serveur n’a pas encore été joint");
    }
    if (isSilent) {
        noteSilence(collection, uid, reason);
    } else {
        silent_.erase(uid);
        collection.isAnswering = true;
        collection.isWritable = isWritable;
        collection.problem.reset();
    }
    return changed || before != state();
}

}  // namespace kestrant::evolution
