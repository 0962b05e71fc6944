#include "eventkit/EKErrors.h"
#include "eventkit/items/EventFetch.h"
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
                                                 : holdsEvents || !holdsReminders,
            .isAnswering = collection.isAnswering};
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

/// How many of the file's items before each of them have the same identifier.
template <typename Items, typename Identifier>
std::vector<int> ordinalsOf(const Items& items, Identifier identifier) {
    std::vector<int> result;
    result.reserve(items.size());
    QHash<QString, int> seen;
    for (const auto& item : items)
        result.push_back(seen[identifier(item)]++);
    return result;
}

/// What an item is called: as it would be alone, where none of `entries` is, else by its place.
template <typename Entries>
QString identifierFor(const QString& alone, const Place& place, int ordinal, const Entries& entries) {
    return !alone.isEmpty() && !entries.contains(alone) ? alone : identifierByPlace(alone, place, ordinal);
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
    const auto before = std::exchange(local_, local);
    if (!before || *before == local)
        return false;
    for (auto& [name, collection] : library_.collections) {
        for (auto& [file, items] : collection.files) {
            for (KeptEvent& event : items.events)
                event = event.placedIn(local, *before);
        }
    }
    return true;
}

EKEvents ItemDatabase::events(const EKEventPredicate& predicate, Instant now) {
    EventsFound result = fetchEvents(*snapshot_, predicate, now);
    bool isNews = false;
    for (const auto& series : result.costly) {
        const auto entry = snapshot_->events.constFind(series->identifier());
        if (entry == snapshot_->events.cend())
            continue;
        const auto [collection, file] = placeOf(*entry);
        ItemFile& items = library_.collections[collection].files[file];
        if (items.warning)
            continue;
        items.warning = std::make_shared<const TextPair>(
            tooCostly(QFile::decodeName(collection) + QLatin1Char('/') + QFile::decodeName(file)));
        isNews = true;
    }
    if (isNews)
        rebuildSnapshot();
    return std::move(result.found);
}

void ItemDatabase::rebuildSnapshot() {
    auto snapshot = std::make_shared<Snapshot>();
    snapshot->calendars = orderedCalendars(library_);
    snapshot->defaultForReminders =
        standardOf(snapshot->calendars, library_.defaultForReminders, &EKCalendar::allowsReminders);
    snapshot->defaultForEvents =
        standardOf(snapshot->calendars, library_.defaultForEvents, &EKCalendar::allowsEvents);
    for (const auto& problem : {library_.problem, library_.notice}) {
        if (problem)
            snapshot->problems.push_back(*problem);
    }
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
            if (items.warning)
                snapshot->problems.push_back(*items.warning);
            addReminders(*snapshot, {name, file}, items);
            addEvents(*snapshot, {name, file}, items);
        }
    }
    snapshot->singleEvents.prepare();
    snapshot->ruledEvents.prepare();
    snapshot_ = std::move(snapshot);
}

void ItemDatabase::addReminders(Snapshot& snapshot, const Place& place, const ItemFile& items) {
    const auto identifierOf = [](const auto& reminder) -> const QString& {
        return reminder->calendarItemIdentifier;
    };
    const std::vector<int> ordinals = ordinalsOf(items.reminders, identifierOf);
    for (std::size_t i = 0; i < items.reminders.size(); ++i) {
        Entry entry{place.file, items.reminders[i]};
        const QString& alone = identifierOf(entry.data);
        const QString identifier = identifierFor(alone, place, ordinals[i], snapshot.reminders);
        if (identifier != alone) {
            EKReminderData renamed = *entry.data;
            renamed.calendarItemIdentifier = identifier;
            entry.data = std::make_shared<const EKReminderData>(std::move(renamed));
        }
        snapshot.reminders.insert(entry.data->calendarItemIdentifier, entry);
    }
}

void ItemDatabase::addEvents(Snapshot& snapshot, const Place& place, const ItemFile& items) const {
    const auto identifierOf = [](const KeptEvent& event) -> const QString& { return event.identifier(); };
    const std::vector<int> ordinals = ordinalsOf(items.events, identifierOf);
    for (std::size_t i = 0; i < items.events.size(); ++i) {
        EventEntry entry{place.file, items.events[i]};
        const QString& alone = identifierOf(entry.event);
        const QString identifier = identifierFor(alone, place, ordinals[i], snapshot.events);
        if (identifier != alone)
            entry.event = entry.event.called(identifier, *local_);
        entry.event.forEachSingle([&](const std::shared_ptr<const EKEventData>& single) {
            snapshot.singleEvents.add(single->startDate, single->endDate, single);
        });
        const auto& series = entry.event.series();
        if (const auto bounds = series ? series->recurring() : std::nullopt)
            snapshot.ruledEvents.add(bounds->start, bounds->end.value_or(Instant::max()), series);
        snapshot.events.insert(identifier, entry);
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
