#pragma once

#include "calendar/CalendarItems.h"
#include "foundation/ClockText.h"
#include "foundation/TimeZone.h"

#include <QLocale>

namespace kestrant {

/// How a person reads days and times of day.
struct TimeStyle {
    TimeZone zone;
    Language language = Language::english;
    /// Names days and months.
    QLocale dates;
    ClockHours hours = ClockHours::twentyFour;
};

[[nodiscard]] TimeStyle timeStyle(const TimeZone& zone, Language language, const QLocale& dates,
                                  const QLocale& personal);

/// "14:00", or "2:00 PM".
[[nodiscard]] QString timeText(Instant instant, const TimeStyle& style);

/// The words for a row's time on one of its days.
struct RowTimeTexts {
    /// "09:30 – 10:15", "all day"; of several days "22:00 – Tue 02:00" on the first, "until Tue" between,
    /// "until 02:00" on the last. Days a week or more ahead are dates: "until 3 Dec".
    QString span;
    /// The same in few letters, for a narrow column: "09:30" where the row begins, "– 02:00" where it ends,
    /// "all day" for a whole day.
    QString brief;
};
[[nodiscard]] RowTimeTexts rowTimeTexts(const CalendarEventItem& row, QDate day, const TimeStyle& style);

}  // namespace kestrant
