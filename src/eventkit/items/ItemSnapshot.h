#pragma once

#include "eventkit/items/IntervalIndex.h"
#include "eventkit/items/SharedMap.h"
#include "eventkit/items/StorageContents.h"
#include "eventkit/model/EKEventStore.h"

#include <memory>
#include <optional>
#include <vector>

namespace kestrant::items {

/// A reminder and the file that holds it, in the collection that its calendarIdentifier names.
struct Entry {
    QByteArray file;
    std::shared_ptr<const EKReminderData> data;
};

struct EventEntry {
    QByteArray file;
    CompactEvent event;
};

/// Where an item is.
[[nodiscard]] FileLocation locationOf(const Entry& entry);
[[nodiscard]] FileLocation locationOf(const EventEntry& entry);

/// What an item is called where another one has its identifier: by its location, and by how many of the same
/// identifier are before it in its file.
[[nodiscard]] QString identifierByLocation(const QString& identifier, const FileLocation& location,
                                           int ordinal);

/// The whole database at one moment. Never changes, so any thread may read it.
struct Snapshot {
    /// In their stable order.
    std::vector<EKCalendar> calendars;
    /// For what is new; empty where there is no calendar that can be changed.
    QString defaultForReminders;
    QString defaultForEvents;
    /// By calendarItemIdentifier: the UID; where several files claim one, all but
    /// the first (by collection and file name) get an identifier with their place
    /// in it, and so does an item without UID.
    SharedMap<Entry> reminders;
    SharedMap<EventEntry> events;
    std::vector<TextPair> problems;

    /// The occurrence of an event with this occurrenceDate; null when there is none.
    [[nodiscard]] std::shared_ptr<const EKEventData>
    event(const QString& identifier, const std::optional<Instant>& occurrenceDate) const;
    /// The first occurrence of an event; null when there is none.
    [[nodiscard]] std::shared_ptr<const EKEventData> firstEvent(const QString& identifier) const;
    [[nodiscard]] std::optional<EKCalendar> calendar(const QString& identifier) const;

    IntervalIndex<std::shared_ptr<const EKEventData>> singleEvents;
    IntervalIndex<std::shared_ptr<const EventSeries>> ruledEvents;
};

}  // namespace kestrant::items
