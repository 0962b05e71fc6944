#pragma once

#include "calendar/CalendarError.h"
#include "calendar/CalendarItems.h"
#include "eventkit/model/EKEvent.h"
#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"

#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// The content of a creation form.
struct NewCalendarEvent {
    QString title;
    Instant startDate;
    Instant endDate;
    bool isAllDay = false;
    /// The calendar chosen in the form; absent leaves the choice to the database.
    std::optional<QString> calendarID;
    /// Empty for none.
    QString location = {};
    QString notes = {};
    QString url = {};
    /// The event is its first date.
    std::optional<EKRecurrenceRule> rule = {};
    /// Rings so long before the start.
    std::optional<Duration> alert = {};
};

/// The content of an edit form, shown and returned.
struct CalendarEventEditDetails {
    QString title;
    Instant startDate;
    /// Excluded. All-day: the start of the day after the last one when loaded.
    Instant endDate;
    bool isAllDay = false;
    QString calendarID;
    /// Empty when there is none.
    QString location;
    QString notes;

    bool operator==(const CalendarEventEditDetails&) const = default;
};

// Pure functions for creating and editing.

/// The values of a new event, without its calendar: the title trimmed; a timed event at least half an hour
/// long and written in `zone`; an all-day one from the start of its first day to the start of
/// the end's day, at least one day. Fails with `emptyTitle`.
[[nodiscard]] tl::expected<EKEventData, CalendarError> newEventData(const NewCalendarEvent& event,
                                                                    const TimeZone& zone);

[[nodiscard]] CalendarEventEditDetails editDetails(const EKEventData& event);

/// The details as they will be saved: texts trimmed; for an all-day event the start at the start of its day
/// and the end at the start of its own day, or of the day after where that is the start's day. Fails with
/// `emptyTitle` or `invalidDateRange`.
[[nodiscard]] tl::expected<CalendarEventEditDetails, CalendarError>
validated(const CalendarEventEditDetails& details, const TimeZone& zone);

/// Puts validated details into an event. Empty location and notes become absent. An event that gets a time of
/// day is written in `zone`; one that has one keeps its own.
void apply(const CalendarEventEditDetails& details, const TimeZone& zone, EKEventData& event);

/// Whether an event that was looked up by the row's identifier is the one the row shows: it starts within
/// five minutes of it, or it does not recur.
[[nodiscard]] bool isEventBehind(const CalendarEventItem& row, const EKEventData& lookedUp);

/// Where to search for the event otherwise: two minutes around the row.
[[nodiscard]] DateInterval searchIntervalFor(const CalendarEventItem& row);

/// Whether an event that was found there is the one the row shows: same identifier, start within five
/// minutes.
[[nodiscard]] bool isOccurrenceBehind(const CalendarEventItem& row, const EKEventData& found);

}  // namespace kestrant
