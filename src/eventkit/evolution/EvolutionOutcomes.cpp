#include "eventkit/evolution/EvolutionStorage.h"
#include "eventkit/evolution/ServiceText.h"
#include "eventkit/evolution/TwoSteps.h"

#include <QFile>

#include <algorithm>
#include <chrono>
#include <utility>

// The outcomes of changes: of interrupted two-step changes, and of changes kept to be sent later.

namespace kestrant::evolution {

using items::FileLocation;
using items::Journal;
using namespace std::chrono_literals;

items::StorageHold EvolutionStorage::beginTwoSteps(const FileLocation& changed, const QByteArray& text,
                                                   items::SecondStep step) {
    return TwoSteps::begin(Journal{.made = {},
                                   .changed = changed,
                                   .before = contentDigest(text),
                                   .isRemoved = step == items::SecondStep::removes},
                           [this](const QString& path, const QByteArray& list) {
                               unfinished_.insert(path);
                               tellChanged({.files = {{list, {}}}});
                           });
}

void EvolutionStorage::settleUnfinished(const QByteArray& list) {
    for (const auto& [path, journal] : unfinishedChanges(unfinished_)) {
        if (journal.changed.collection != list || !takeBack(journal))
            continue;
        QFile::remove(path);
        unfinished_.erase(path);
    }
}

bool EvolutionStorage::takeBack(const Journal& journal) {
    const auto present = read(journal.changed);
    if (!present)
        return false;
    if (journal.isDone(*present ? std::optional(withoutServerVersion((*present)->text)) : std::nullopt))
        return true;
    return std::all_of(journal.made.begin(), journal.made.end(), [this, &journal](const Journal::Made& made) {
        const auto item = read(made.location);
        // One that somebody has changed meanwhile is theirs.
        if (!item || !*item || (!made.digest.isEmpty() && made.digest != contentDigest((*item)->text)))
            return item.has_value() || item.error().code == EKError::Code::calendarNotFound;
        if (remove(made.location, (*item)->version))
            return false;
        if (made.location.collection != journal.changed.collection)
            tellChanged({.files = {{made.location.collection, {made.location.file}}}});
        return true;
    });
}

void EvolutionStorage::noteSending(const FileLocation& location, const QByteArray& before,
                                   const QByteArray* after) {
    const auto lists = lists_.enabled();
    const auto list = lists.find(location.collection);
    if (list == lists.end() || !list->second.isOnServer() ||
        (after && serverVersionIn(*after) != serverVersionIn(before)))
        return;
    // That there is a connection is told by another process, which may be late.
    for (auto pause = 25ms; pause <= 400ms; pause *= 2) {
        if (list->second.isConnected() || !limit_.pause(pause))
            return;
    }
    if (unsent_.insert_or_assign(location.collection, list->second.title()).second)
        tellOfUnsent();
}

}  // namespace kestrant::evolution
