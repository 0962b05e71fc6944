#include "eventkit/EKErrors.h"
#include "eventkit/items/OpenItem.h"

#include <QFile>

#include <algorithm>
#include <tuple>
#include <utility>

namespace kestrant::items {
namespace {

EKCalendar calendarFrom(const QByteArray& name, const Collection& collection) {
    bool holdsReminders = false;
    bool holdsEvents = false;
    for (const auto& [file, items] : collection.files) {
        holdsReminders = holdsReminders || !items.reminders.empty();
        holdsEvents = holdsEvents || items.holdsEvents;
    }
    return {.calendarIdentifier = QFile::decodeName(name),
            .title = collection.title,
            .color = collection.color,
            .allowsContentModifications = collection.isWritable,
            .allowsReminders = collection.holdsOnly ? collection.holdsOnly == EKEntityType::reminder
                                                    : holdsReminders || !holdsEvents,
            .allowsEvents = collection.holdsOnly ? collection.holdsOnly == EKEntityType::event
                                                 : holdsEvents || !holdsReminders};
}

std::vector<EKCalendar> orderedCalendars(const Library& library) {
    using Named = std::pair<QByteArray, const Collection*>;
    std::vector<Named> named;
    for (const auto& [name, collection] : library.collections)
        named.emplace_back(name, &collection);
    std::stable_sort(named.begin(), named.end(), [](const Named& a, const Named& b) {
        const auto rank = [](const Collection& c) { return std::pair(!c.order, c.order.value_or(0)); };
        if (rank(*a.second) != rank(*b.second))
            return rank(*a.second) < rank(*b.second);
        return a.second->title.compare(b.second->title, Qt::CaseInsensitive) < 0;
    });
    std::vector<EKCalendar> result;
    for (const auto& [name, collection] : named)
        result.push_back(calendarFrom(name, *collection));
    return result;
}

/// The calendar for what is new: the one that the storage has chosen, else the
/// first that can be changed.
QString standardOf(const std::vector<EKCalendar>& calendars, const QByteArray& chosen,
                   bool EKCalendar::*allows) {
    QString result;
    for (const EKCalendar& calendar : calendars) {
        if (!(calendar.*allows) || !calendar.allowsContentModifications)
            continue;
        if (calendar.calendarIdentifier == QFile::decodeName(chosen))
            return calendar.calendarIdentifier;
        if (result.isEmpty())
            result = calendar.calendarIdentifier;
    }
    return result;
}

/// What an item is called: as it would be alone, where none of `entries` is,
/// else by its place.
template <typename Entries>
QString identifierFor(const ItemEntry& item, const QString& alone, const Entries& entries) {
    if (!alone.isEmpty() && !entries.contains(alone))
        return alone;
    QString result = alone + QLatin1Char('#') + QFile::decodeName(item.collection) + QLatin1Char('/') +
                     QFile::decodeName(item.file);
    if (item.ordinal > 0)
        result += QStringLiteral("#%1").arg(item.ordinal + 1);
    return result;
}

}  // namespace

std::optional<EKError> ItemDatabase::open(const ZoneCalendar& local) {
    if (auto error = storage_.open())
        return error;
    refresh({.everything = true}, local);
    if (library_.problem)
        return EKError{EKError::Code::storage, *library_.problem};
    isOpen_ = true;
    return std::nullopt;
}

bool ItemDatabase::refresh(const Changes& changes, const ZoneCalendar& local) {
    const bool changed = storage_.update(library_, changes, local);
    const bool isElsewhere = placeEvents(local);
    if (changed || isElsewhere)
        rebuildSnapshot();
    return changed || isElsewhere;
}

bool ItemDatabase::adopt(const ZoneCalendar& local) {
    const bool isElsewhere = placeEvents(local);
    if (isElsewhere)
        rebuildSnapshot();
    return isElsewhere;
}

bool ItemDatabase::placeEvents(const ZoneCalendar& local) {
    const bool isElsewhere = local_ && !(*local_ == local);
    local_ = local;
    if (!isElsewhere)
        return false;
    for (auto& [name, collection] : library_.collections) {
        for (auto& [file, items] : collection.files) {
            for (FileEvent& event : items.events)
                event.series =
                    std::make_shared<const EventSeries>(event.series->item(), event.series->identifier(),
                                                        event.series->calendarIdentifier(), local);
        }
    }
    return true;
}

void ItemDatabase::rebuildSnapshot() {
    auto snapshot = std::make_shared<Snapshot>();
    snapshot->calendars = orderedCalendars(library_);
    snapshot->defaultForReminders =
        standardOf(snapshot->calendars, library_.defaultForReminders, &EKCalendar::allowsReminders);
    snapshot->defaultForEvents =
        standardOf(snapshot->calendars, library_.defaultForEvents, &EKCalendar::allowsEvents);
    if (library_.problem)
        snapshot->problems.push_back(*library_.problem);
    qsizetype reminders = 0;
    qsizetype events = 0;
    for (const auto& [name, collection] : library_.collections) {
        for (const auto& [file, items] : collection.files) {
            reminders += std::ssize(items.reminders);
            events += std::ssize(items.events);
        }
    }
    snapshot->reminders.reserve(reminders);
    snapshot->events.reserve(events);
    for (const auto& [name, collection] : library_.collections) {
        if (collection.problem)
            snapshot->problems.push_back(*collection.problem);
        for (const auto& [file, items] : collection.files) {
            if (items.problem)
                snapshot->problems.push_back(*items.problem);
            addReminders(*snapshot, {name, file}, items);
            addEvents(*snapshot, {name, file}, items);
        }
    }
    snapshot->singleEvents.prepare();
    snapshot->ruledEvents.prepare();
    snapshot_ = std::move(snapshot);
}

void ItemDatabase::addReminders(Snapshot& snapshot, const Place& place, const ItemFile& items) {
    for (const FileReminder& reminder : items.reminders) {
        Entry entry{{items.version, place.collection, place.file, reminder.key, reminder.ordinal},
                    reminder.data};
        const QString identifier =
            identifierFor(entry, reminder.data->calendarItemIdentifier, snapshot.reminders);
        if (identifier != reminder.data->calendarItemIdentifier) {
            EKReminderData renamed = *reminder.data;
            renamed.calendarItemIdentifier = identifier;
            entry.data = std::make_shared<const EKReminderData>(std::move(renamed));
        }
        snapshot.reminders.insert(identifier, std::move(entry));
    }
}

void ItemDatabase::addEvents(Snapshot& snapshot, const Place& place, const ItemFile& items) const {
    for (const FileEvent& event : items.events) {
        EventEntry entry{{items.version, place.collection, place.file, event.key, event.ordinal},
                         event.series};
        const QString identifier = identifierFor(entry, event.series->identifier(), snapshot.events);
        if (identifier != event.series->identifier())
            entry.series = std::make_shared<const EventSeries>(event.series->item(), identifier,
                                                               event.series->calendarIdentifier(), *local_);
        for (const EventSeries::Occurrence& single : entry.series->singles())
            snapshot.singleEvents.add(single.data->startDate, single.data->endDate,
                                      {single.data, entry.version});
        if (const auto& bounds = entry.series->ruled())
            snapshot.ruledEvents.add(bounds->start, bounds->end.value_or(Instant::max()),
                                     {entry.series, entry.version});
        snapshot.events.insert(identifier, std::move(entry));
    }
}

tl::expected<EKCalendar, EKError> ItemDatabase::saveCalendar(const EKCalendar& calendar,
                                                             const ZoneCalendar& local) {
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
    const auto name = storage_.saveCollection(library_, wanted);
    if (!name)
        return tl::unexpected(name.error());
    refresh({.files = {{*name, {}}}}, local);
    auto saved = snapshot_->calendar(QFile::decodeName(*name));
    if (!saved)
        return tl::unexpected(calendarNotFoundError());
    return std::move(*saved);
}

}  // namespace kestrant::items
