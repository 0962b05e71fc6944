#pragma once

#include "calendar/CalendarItems.h"
#include "eventkit/model/EKEvent.h"
#include "foundation/TextCollation.h"
#include "foundation/TimeZone.h"

#include <optional>
#include <vector>

namespace kestrant {

// How one event or reminder becomes a row, and the order of rows.

/// How a calendar or list looks in its rows.
struct CalendarAppearance {
    QString title;
    std::optional<Color> color;
};

/// Colours of rows whose calendar has none.
inline constexpr Color defaultEventColor{0x0a, 0x84, 0xff};
inline constexpr Color defaultReminderColor{0xff, 0x9f, 0x0a};

/// The row key of an event; the seconds always carry a fraction ("UID_1774612800.0").
[[nodiscard]] QString eventRowID(const QString& calendarItemIdentifier, Instant startDate);

/// The row key of a reminder, and the way back; absent for another row's key.
[[nodiscard]] QString reminderRowID(const QString& calendarItemIdentifier);
[[nodiscard]] std::optional<QString> reminderIdentifier(const QString& rowID);

/// Whether a timed event has begun and is not over.
[[nodiscard]] bool isHappening(const CalendarEventItem& event, Instant now);

/// Whether the meeting of an event is of use: from ten minutes before until its end.
[[nodiscard]] bool canBeJoined(const CalendarEventItem& event, Instant now);

/// When a reminder is due: at its time, or at the start of its day when it has none. Absent when it names no
/// day.
[[nodiscard]] std::optional<Instant> reminderDueDate(const EKReminderData& reminder, const TimeZone& zone);

/// The row of an event, not happening now. `appearance` may be null.
[[nodiscard]] CalendarEventItem eventRow(const EKEventData& event, const CalendarAppearance* appearance,
                                         Language language);
/// The row of a reminder that is due at `dueDate`. `appearance` may be null.
[[nodiscard]] CalendarEventItem reminderRow(const EKReminderData& reminder, Instant dueDate,
                                            const CalendarAppearance* appearance, Language language);

/// The rows' positions in the order they are shown in: all-day before timed, then the earlier start, then the
/// title that comes first in the locale, letter case aside; rows that are equal in all of these stay as they
/// are.
[[nodiscard]] std::vector<std::size_t> rowOrder(const std::vector<CalendarEventItem>& rows,
                                                const TextCollation& collation);

}  // namespace kestrant
