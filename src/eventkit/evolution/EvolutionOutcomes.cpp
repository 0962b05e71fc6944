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

void EvolutionStorage::noteSending(const QByteArray& list, EvolutionClient& client) {
    const auto hasUnsent = client.hasUnsent();
    if (!hasUnsent)
        return;
    const bool isNews =
        *hasUnsent ? unsent_.insert_or_assign(list, client.title()).second : unsent_.erase(list) > 0;
    if (isNews)
        tellOfUnsent();
}

}  // namespace kestrant::evolution
