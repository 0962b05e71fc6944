#pragma once

#include "completion/CompletionLedger.h"
#include "foundation/TimeZone.h"

#include <QDate>

#include <array>
#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

// Counting of completed reminders by local days: plain functions over the ledger's records.

enum class RecapKind { day, week, month, year };

/// A day, a week, a month or a year.
struct RecapPeriod {
    RecapKind kind = RecapKind::day;
    QDate first;
    /// Included.
    QDate last;

    [[nodiscard]] int dayCount() const { return int(first.daysTo(last)) + 1; }
    bool operator==(const RecapPeriod&) const = default;
};

/// The period that holds a day; weeks begin on `firstDayOfWeek`.
[[nodiscard]] RecapPeriod periodContaining(RecapKind kind, QDate day, Qt::DayOfWeek firstDayOfWeek);
/// The period of the same kind that ends the day before.
[[nodiscard]] RecapPeriod periodBefore(const RecapPeriod& period);

/// A week of a year, which near New Year may be another one than the calendar's.
struct WeekNumber {
    int week = 0;
    int year = 0;
    bool operator==(const WeekNumber&) const = default;
};
/// Where weeks begin on Monday by ISO 8601: week 1 holds the year's first Thursday. Elsewhere week 1 holds
/// 1 January.
[[nodiscard]] WeekNumber weekNumberOf(QDate day, Qt::DayOfWeek firstDayOfWeek);

/// Completions of one local day.
struct CompletedDay {
    QDate day;
    int count = 0;
    /// Completions by local hour.
    std::array<int, 24> hours{};
    bool operator==(const CompletedDay&) const = default;
};

/// The days on which something was completed, in order. `records` are in order of their dates; those after
/// `now` are not counted, since they have not happened yet. Takes time in proportion to the records, and asks
/// for the zone's rules once for each day.
[[nodiscard]] std::vector<CompletedDay> completedDays(const std::vector<CompletionRecord>& records,
                                                      const TimeZone& zone, Instant now);

/// The figures of a period.
struct Recap {
    RecapPeriod period;
    int completed = 0;
    /// One for each day of the period.
    std::vector<int> days;
    /// Days that have begun.
    int elapsedDays = 0;
    /// Of those, days on which nothing was completed.
    int quietDays = 0;
    /// The day with the most completions, the later one of several; absent without any.
    std::optional<QDate> bestDay;
    int bestCount = 0;
    /// The hour of the clock in which the most was completed, the earlier one of several; absent without any.
    std::optional<int> usualHour;
    /// Days in a row with completions, the last of them the last day that has begun; a present day without
    /// any does not break it. It may have begun before the period.
    int streak = 0;
    /// The most days in a row within the period.
    int longestStreak = 0;
    /// Completions of the period before, in as many of its days as have begun of this one.
    int completedBefore = 0;
};

/// `days` is what completedDays() gives.
[[nodiscard]] Recap recapOf(const RecapPeriod& period, const std::vector<CompletedDay>& days, QDate today);

struct ListCount {
    QString list;
    int count = 0;
    bool operator==(const ListCount&) const = default;
};
/// Completions of a period by list, the most first, then by name. `listOf` gives the name of the list that
/// holds a reminder; absent where nobody knows it any more, which is then left out.
[[nodiscard]] std::vector<ListCount>
completedByList(const std::vector<CompletionRecord>& records, const RecapPeriod& period, const TimeZone& zone,
                Instant now,
                const std::function<std::optional<QString>(const QString& reminderIdentifier)>& listOf);

}  // namespace kestrant
