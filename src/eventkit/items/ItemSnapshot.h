#pragma once

#include "eventkit/EKEventStore.h"
#include "eventkit/EventSeries.h"
#include "eventkit/IntervalIndex.h"

#include <QHash>

#include <memory>
#include <optional>
#include <vector>

namespace kestrant::items {

/// Where an item is.
struct ItemEntry {
    QByteArray version;
    QByteArray collection;
    QByteArray file;
    QByteArray key;
    int ordinal = 0;
};

struct Entry : ItemEntry {
    std::shared_ptr<const EKReminderData> data;
};

struct EventEntry : ItemEntry {
    std::shared_ptr<const EventSeries> series;
};

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
    QHash<QString, Entry> reminders;
    QHash<QString, EventEntry> events;
    std::vector<TextPair> problems;

    /// One occurrence, with the version of its file.
    struct ShownEvent {
        std::shared_ptr<const EKEventData> data;
        QByteArray version;
    };
    /// The occurrences that match, each of a series by itself.
    [[nodiscard]] std::vector<ShownEvent> eventsMatching(const EKEventPredicate& predicate) const;
    /// The occurrence of an event with this occurrenceDate.
    [[nodiscard]] std::optional<ShownEvent> event(const QString& identifier,
                                                  const std::optional<Instant>& occurrenceDate) const;
    /// The first occurrence of an event.
    [[nodiscard]] std::optional<ShownEvent> firstEvent(const QString& identifier) const;
    [[nodiscard]] std::optional<EKCalendar> calendar(const QString& identifier) const;

    struct RuledEvent {
        std::shared_ptr<const EventSeries> series;
        QByteArray version;
    };
    IntervalIndex<ShownEvent> singleEvents;
    IntervalIndex<RuledEvent> ruledEvents;
};

}  // namespace kestrant::items
