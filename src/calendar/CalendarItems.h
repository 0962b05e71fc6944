#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/Instant.h"
#include "foundation/Text.h"

#include <QDate>
#include <QList>
#include <QString>

#include <optional>

namespace kestrant {

/// One row of the calendar: an event or a reminder on a day. A value; copies are cheap. Thread: any.
struct CalendarEventItem {
    /// Event: calendar item identifier, "_", start in seconds since 1970, so that the occurrences of a series
    /// differ. Reminder: "reminder_" and its identifier. An item of several days has the same id on each of
    /// them: unique within a day.
    QString id;
    /// The identifier by which the item is found. Event: its event identifier, or its calendar item
    /// identifier where it has none. Reminder: its calendar item identifier.
    QString itemIdentifier;
    /// Never blank: an item without a title gets a text that says so.
    QString title;
    /// Event: its own start and end, also on a day that shows only a part of it. All-day: starts of days, the
    /// end excluded. Reminder: when it is due, and half an hour later.
    Instant startDate;
    Instant endDate;
    bool isAllDay = false;
    QString calendarTitle;
    Color calendarColor;
    /// Absent for reminders.
    std::optional<QString> location;
    std::optional<QString> notes;
    /// The address at which the event takes place on the network; empty for none.
    QString meetingLink;
    /// Only timed events in today's group.
    bool isHappeningNow = false;
    bool isReminder = false;
    /// One date of several.
    bool isRecurring = false;

    bool operator==(const CalendarEventItem&) const = default;
};

/// A day and what happens on it. A value; copies share their rows. Thread: any.
struct CalendarDayGroup {
    QDate day;
    /// The first instant of the day.
    Instant date;
    /// "TODAY · MON 12", "TOMORROW · TUE 13", "WED 14".
    QString headerTitle;
    bool isToday = false;
    /// All-day items first, then by start, then by title.
    QList<CalendarEventItem> events;

    /// The identity of the group: the start of its day.
    [[nodiscard]] Instant id() const { return date; }
    bool operator==(const CalendarDayGroup&) const = default;
};

/// Whether the calendars may be read, and if not, why.
struct CalendarAccessState {
    enum class Kind {
        /// Access has not been requested yet; nothing is shown.
        notDetermined,
        /// The database is being opened.
        requesting,
        /// Events are read and written.
        authorized,
        /// The person said no.
        denied,
        /// The machine's rules say no.
        restricted,
        /// The database could not be opened: `message` says why.
        failed,
    };
    Kind kind = Kind::notDetermined;
    /// Only for `failed`.
    TextPair message;

    [[nodiscard]] static CalendarAccessState failed(const TextPair& message) {
        return {Kind::failed, message};
    }
    bool operator==(const CalendarAccessState&) const = default;
};

}  // namespace kestrant
