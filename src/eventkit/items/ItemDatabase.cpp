#include "eventkit/items/EventFetch.h"
#include "eventkit/items/OpenFile.h"
#include "eventkit/model/EKErrors.h"
#include "eventkit/model/ReminderChanges.h"

#include <QFile>

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace kestrant::items {

std::optional<EKError> ItemDatabase::open(const TimeZone& local) {
    if (auto error = storage_.open())
        return error;
    refresh({.everything = true}, local);
    if (contents_.problem)
        return EKError{EKError::Code::storage, *contents_.problem};
    isOpen_ = true;
    return std::nullopt;
}

bool ItemDatabase::refresh(const Changes& changes, const TimeZone& local) {
    const bool isTargeted = noteFiles(changes);
    const auto notice = contents_.notice;
    const bool changed = storage_.update(contents_, changes, local);
    const bool isElsewhere = placeEvents(local);
    if (changed && !(isTargeted && canBeReadStill(changes) && contents_.notice == notice))
        changedFiles_.reset();
    if (changed || isElsewhere)
        rebuildSnapshot();
    return changed || isElsewhere;
}

bool ItemDatabase::noteFiles(const Changes& changes) {
    if (!storage_.readsOnlyFilesNamed(changes) || !canBeReadStill(changes))
        return false;
    for (const auto& [collection, files] : changes.files) {
        for (const QByteArray& file : files)
            noteBefore({collection, file});
    }
    return true;
}

bool ItemDatabase::canBeReadStill(const Changes& changes) const {
    return !contents_.problem &&
           std::all_of(changes.files.begin(), changes.files.end(), [&](const auto& named) {
               const auto found = contents_.collections.find(named.first);
               return found != contents_.collections.end() && !found->second.problem;
           });
}

void ItemDatabase::noteBefore(const FileLocation& location) {
    const auto collection = contents_.collections.find(location.collection);
    if (!changedFiles_ || collection == contents_.collections.end())
        return;
    const auto file = collection->second.files.find(location.file);
    changedFiles_->try_emplace(location, file == collection->second.files.end() ? ItemFile() : file->second);
}

bool ItemDatabase::adopt(const TimeZone& local) {
    const bool isElsewhere = placeEvents(local);
    if (isElsewhere)
        rebuildSnapshot();
    return isElsewhere;
}

bool ItemDatabase::placeEvents(const TimeZone& local) {
    const auto before = std::exchange(local_, local);
    if (!before || *before == local)
        return false;
    changedFiles_.reset();
    for (auto& [name, collection] : contents_.collections) {
        for (auto& [file, items] : collection.files) {
            for (CompactEvent& event : items.events)
                event = event.placedIn(local, *before);
        }
    }
    return true;
}

EKReminders ItemDatabase::reminders(const EKPredicate& predicate, const TimeZone& local) {
    if (!parted_.of.isSharedWith(snapshot_->reminders)) {
        parted_ = {.of = snapshot_->reminders, .open = {}, .completed = {}};
        for (const Entry& entry : parted_.of)
            (entry.data->isCompleted ? parted_.completed : parted_.open).push_back(entry.data);
    }
    const bool wantsCompleted = predicate.kind == EKPredicate::Kind::completedReminders;
    const EKReminders& candidates = wantsCompleted ? parted_.completed : parted_.open;
    if (!predicate.start && !predicate.end && !predicate.calendars)
        return candidates;
    EKReminders result;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(result),
                 [&](const auto& reminder) { return matches(predicate, *reminder, local); });
    return result;
}

EKEvents ItemDatabase::events(const EKEventPredicate& predicate, Instant now) {
    EventsFound result = fetchEvents(*snapshot_, predicate, now);
    bool isNews = false;
    for (const auto& series : result.costly) {
        const EventEntry* const entry = snapshot_->events.find(series->identifier());
        if (!entry)
            continue;
        const auto [collection, file] = locationOf(*entry);
        ItemFile& items = contents_.collections[collection].files[file];
        if (items.warning)
            continue;
        items.warning = std::make_shared<const TextPair>(
            tooCostly(QFile::decodeName(collection) + QLatin1Char('/') + QFile::decodeName(file)));
        isNews = true;
    }
    if (!isNews)
        return std::move(result.found);
    changedFiles_.reset();
    rebuildSnapshot();
    return std::move(result.found);
}

tl::expected<EKCalendar, EKError> ItemDatabase::saveCalendar(const EKCalendar& calendar,
                                                             const TimeZone& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    EKCalendar wanted = calendar;
    wanted.title = calendar.title.simplified();
    if (wanted.title.isEmpty())
        return tl::unexpected(invalidItemError(text("A list needs a name.", "Une liste doit avoir un nom.")));
    if (!calendar.calendarIdentifier.isEmpty()) {
        if (const auto found = writableCollection(calendar.calendarIdentifier); !found)
            return tl::unexpected(found.error());
    }
    const auto name = storage_.saveCollection(contents_, wanted);
    if (!name)
        return tl::unexpected(name.error());
    refresh({.files = {{*name, {}}}}, local);
    auto saved = snapshot_->calendar(QFile::decodeName(*name));
    if (!saved)
        return tl::unexpected(calendarNotFoundError());
    return std::move(*saved);
}

}  // namespace kestrant::items
