#include "eventkit/items/ItemDatabase.h"

#include <QFile>
#include <QHash>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

namespace kestrant::items {

namespace {

/// More changed files than this are not exchanged one by one.
constexpr std::size_t mostFilesExchanged = 200;

EKCalendar calendarFrom(const QByteArray& name, const Collection& collection, const Holdings& holdings) {
    const bool holdsReminders = holdings.withReminders > 0;
    const bool holdsEvents = holdings.withEvents > 0;
    // One of which nothing could be read has said nothing.
    const bool isSilent = holdings.withProblems > 0 && !holdsReminders && !holdsEvents;
    return {.calendarIdentifier = QFile::decodeName(name),
            .title = collection.title,
            .color = collection.color,
            .allowsContentModifications = collection.isWritable,
            .allowsReminders = collection.holdsOnly ? collection.holdsOnly == EKEntityType::reminder
                                                    : holdsReminders || !holdsEvents,
            .allowsEvents = collection.holdsOnly ? collection.holdsOnly == EKEntityType::event
                                                 : holdsEvents || !holdsReminders,
            .isAnswering = collection.isAnswering && !isSilent};
}

std::vector<EKCalendar> orderedCalendars(const StorageContents& contents,
                                         const std::map<QByteArray, Holdings>& holdings) {
    using Named = std::pair<QByteArray, const Collection*>;
    std::vector<Named> named;
    for (const auto& [name, collection] : contents.collections)
        named.emplace_back(name, &collection);
    std::stable_sort(named.begin(), named.end(), [](const Named& a, const Named& b) {
        const auto rank = [](const Collection& c) { return std::pair(!c.order, c.order.value_or(0)); };
        if (rank(*a.second) != rank(*b.second))
            return rank(*a.second) < rank(*b.second);
        return a.second->title.compare(b.second->title, Qt::CaseInsensitive) < 0;
    });
    std::vector<EKCalendar> result;
    result.reserve(named.size());
    for (const auto& [name, collection] : named)
        result.push_back(calendarFrom(name, *collection, holdings.at(name)));
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

void chooseStandards(Snapshot& snapshot, const StorageContents& contents) {
    snapshot.defaultForReminders =
        standardOf(snapshot.calendars, contents.defaultForReminders, &EKCalendar::allowsReminders);
    snapshot.defaultForEvents =
        standardOf(snapshot.calendars, contents.defaultForEvents, &EKCalendar::allowsEvents);
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

/// The identifier of an item: its own, where none of `entries` has it, else one with its place.
template <typename Entries>
QString identifierFor(const QString& alone, const FileLocation& location, int ordinal,
                      const Entries& entries) {
    return !alone.isEmpty() && !entries.contains(alone) ? alone
                                                        : identifierByLocation(alone, location, ordinal);
}

}  // namespace

void ItemDatabase::rebuildSnapshot() {
    auto snapshot = withChangedFiles();
    snapshot_ = snapshot ? std::move(snapshot) : wholeSnapshot();
    changedFiles_.emplace();
}

std::shared_ptr<const Snapshot> ItemDatabase::wholeSnapshot() {
    auto snapshot = std::make_shared<Snapshot>();
    hasNamesakes_ = false;
    for (const auto& problem : {contents_.problem, contents_.notice}) {
        if (problem)
            snapshot->problems.push_back(*problem);
    }
    qsizetype reminders = 0;
    qsizetype events = 0;
    holdings_.clear();
    for (const auto& [name, collection] : contents_.collections) {
        Holdings& holdings = holdings_[name];
        for (const auto& [file, items] : collection.files) {
            holdings.add(items);
            reminders += std::ssize(items.reminders);
            events += std::ssize(items.events);
        }
    }
    snapshot->calendars = orderedCalendars(contents_, holdings_);
    chooseStandards(*snapshot, contents_);
    snapshot->reminders.reserve(reminders);
    snapshot->events.reserve(events);
    for (const auto& [name, collection] : contents_.collections) {
        if (collection.problem)
            snapshot->problems.push_back(*collection.problem);
        for (const auto& [file, items] : collection.files) {
            if (items.problem)
                snapshot->problems.push_back(*items.problem);
            if (items.warning)
                snapshot->problems.push_back(*items.warning);
            const bool areAlone = addReminders(*snapshot, {name, file}, items);
            hasNamesakes_ = !addEvents(*snapshot, {name, file}, items) || !areAlone || hasNamesakes_;
        }
    }
    snapshot->singleEvents.prepare();
    snapshot->ruledEvents.prepare();
    return snapshot;
}

std::shared_ptr<const Snapshot> ItemDatabase::withChangedFiles() {
    if (!changedFiles_ || changedFiles_->size() > mostFilesExchanged || hasNamesakes_)
        return nullptr;
    auto snapshot = std::make_shared<Snapshot>(*snapshot_);
    std::set<QByteArray> collections;
    for (const auto& [location, before] : *changedFiles_) {
        // Problems are told in the order of the files.
        if (before.problem || before.warning)
            return nullptr;
        for (const auto& reminder : before.reminders)
            snapshot->reminders.remove(reminder->calendarItemIdentifier);
        for (const CompactEvent& event : before.events) {
            snapshot->events.remove(event.identifier());
            event.forEachSingle(
                [&](const auto& single) { snapshot->singleEvents.remove(single->startDate, single); });
            if (const auto bounds = event.series() ? event.series()->recurring() : std::nullopt)
                snapshot->ruledEvents.remove(bounds->start, event.series());
        }
        holdings_[location.collection].remove(before);
        collections.insert(location.collection);
    }
    for (const auto& [location, before] : *changedFiles_) {
        const auto& files = contents_.collections.at(location.collection).files;
        const auto now = files.find(location.file);
        if (now == files.end())
            continue;
        holdings_[location.collection].add(now->second);
        if (now->second.problem || now->second.warning || !addReminders(*snapshot, location, now->second) ||
            !addEvents(*snapshot, location, now->second))
            return nullptr;
    }
    snapshot->singleEvents.prepare();
    snapshot->ruledEvents.prepare();
    for (EKCalendar& calendar : snapshot->calendars) {
        const QByteArray name = QFile::encodeName(calendar.calendarIdentifier);
        if (collections.contains(name))
            calendar = calendarFrom(name, contents_.collections.at(name), holdings_[name]);
    }
    chooseStandards(*snapshot, contents_);
    return snapshot;
}

bool ItemDatabase::addReminders(Snapshot& snapshot, const FileLocation& location, const ItemFile& items) {
    const auto identifierOf = [](const auto& reminder) -> const QString& {
        return reminder->calendarItemIdentifier;
    };
    bool areAlone = true;
    const std::vector<int> ordinals = ordinalsOf(items.reminders, identifierOf);
    for (std::size_t i = 0; i < items.reminders.size(); ++i) {
        Entry entry{location.file, items.reminders[i]};
        const QString& alone = identifierOf(entry.data);
        const QString identifier = identifierFor(alone, location, ordinals[i], snapshot.reminders);
        if (identifier != alone) {
            areAlone = false;
            EKReminderData renamed = *entry.data;
            renamed.calendarItemIdentifier = identifier;
            entry.data = std::make_shared<const EKReminderData>(std::move(renamed));
        }
        snapshot.reminders.insert(entry.data->calendarItemIdentifier, entry);
    }
    return areAlone;
}

bool ItemDatabase::addEvents(Snapshot& snapshot, const FileLocation& location, const ItemFile& items) const {
    const auto identifierOf = [](const CompactEvent& event) -> const QString& { return event.identifier(); };
    bool areAlone = true;
    const std::vector<int> ordinals = ordinalsOf(items.events, identifierOf);
    for (std::size_t i = 0; i < items.events.size(); ++i) {
        EventEntry entry{location.file, items.events[i]};
        const QString& alone = identifierOf(entry.event);
        const QString identifier = identifierFor(alone, location, ordinals[i], snapshot.events);
        if (identifier != alone) {
            areAlone = false;
            entry.event = entry.event.called(identifier, *local_);
        }
        entry.event.forEachSingle([&](const std::shared_ptr<const EKEventData>& single) {
            snapshot.singleEvents.add(single->startDate, single->endDate, single);
        });
        const auto& series = entry.event.series();
        if (const auto bounds = series ? series->recurring() : std::nullopt)
            snapshot.ruledEvents.add(bounds->start, bounds->end.value_or(Instant::max()), series);
        snapshot.events.insert(identifier, entry);
    }
    return areAlone;
}

}  // namespace kestrant::items
