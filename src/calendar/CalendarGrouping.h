#pragma once

#include "calendar/CalendarItems.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"

#include <QLocale>

#include <optional>

namespace kestrant {

struct CalendarItems;

// How events and reminders become days and rows: decisions over values, on any thread.

enum class CalendarMode {
    /// The seven days from today on. What is over is not shown; today is, even when it is empty.
    compact,
    /// Every day of an interval that has something.
    full,
};

/// Days from `first` up to, not including, `end`.
struct DayRange {
    QDate first;
    QDate end;
    bool operator==(const DayRange&) const = default;
};

/// Under which circumstances rows are made.
struct CalendarPresent {
    Instant now;
    TimeZone zone;
    Language language = Language::english;
    /// Decides the order of titles.
    QLocale locale;
};

/// The days that the compact mode shows.
[[nodiscard]] DayRange compactDays(const CalendarPresent& present);

/// The largest number of rows shown.
inline constexpr qsizetype mostRows = 50'000;

/// Those of `days` around today, or nearest to it, that have at most so many rows; one day at least.
[[nodiscard]] DayRange daysThatFit(const CalendarItems& items, const DayRange& days,
                                   const CalendarPresent& present, qsizetype most = mostRows);
/// The same of groups.
[[nodiscard]] QList<CalendarDayGroup> groupsThatFit(const QList<CalendarDayGroup>& groups, QDate today,
                                                    qsizetype most = mostRows);

/// The day groups of `days`, in order. An item is listed on every day it touches: it starts before the day
/// ends and ends after the day starts. An event without length is so listed on the day it lies in, and on
/// none where it lies on the border of two. Costs what the rows and days cost, whatever the product of days
/// and events is. Compact: a single empty group for today becomes no group at all.
[[nodiscard]] QList<CalendarDayGroup> groupByDay(const CalendarItems& items, const DayRange& days,
                                                 CalendarMode mode, const CalendarPresent& present);

/// One list of groups, one group per day, in day order. Rows of a day that both lists have are united by id
/// and sorted again.
[[nodiscard]] QList<CalendarDayGroup> merged(const QList<CalendarDayGroup>& a,
                                             const QList<CalendarDayGroup>& b, const QLocale& locale);

/// The groups without the rows of this id, and without the groups that this leaves with no reason to be
/// shown.
[[nodiscard]] QList<CalendarDayGroup> withoutRow(QList<CalendarDayGroup> groups, const QString& id,
                                                 CalendarMode mode);

/// The groups as they are at a later moment of the same day: what happens now, and (compact) without what is
/// over.
[[nodiscard]] QList<CalendarDayGroup> atMoment(QList<CalendarDayGroup> groups, Instant now,
                                               CalendarMode mode);

/// When atMoment() may next give something else; absent when nothing of today is left to begin or end.
[[nodiscard]] std::optional<Instant> nextMomentOfChange(const QList<CalendarDayGroup>& groups, Instant now);

/// The first timed event that starts after `now`.
[[nodiscard]] std::optional<CalendarEventItem> nextEvent(const QList<CalendarDayGroup>& groups, Instant now);

/// The heading of a day.
[[nodiscard]] QString headerTitle(QDate day, QDate today, Language language);

}  // namespace kestrant
