#pragma once

#include "eventkit/model/EKTypes.h"
#include "eventkit/recurrence/OccurrenceIterator.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace kestrant {

/// What shapes a recurring reminder besides its values. Times are local times of the series' own zone.
struct SeriesDates {
    /// The date the rules count from, when the reminder's present date is a later one of them.
    std::optional<icalendar::LocalTime> anchor;
    std::vector<icalendar::LocalTime> extraTimes;
    std::vector<QDate> extraDays;
    std::vector<icalendar::LocalTime> excludedTimes;
    /// Any occurrence on these days is left out.
    std::vector<QDate> excludedDays;
    /// Rules whose dates are left out.
    std::vector<QByteArray> exceptionRules;

    bool operator==(const SeriesDates&) const = default;
};

/// The date a series is counted from: the start, else the due date; absent when there is neither.
[[nodiscard]] std::optional<DateComponents> seriesAnchor(const EKReminderData& data);

/// A date that moves along when the series' own date goes from `from` to `to`: whole days by days, times by
/// the same local time of the series' zone.
[[nodiscard]] DateComponents movedAlong(const DateComponents& date, const icalendar::LocalTime& from,
                                        const icalendar::LocalTime& to, const TimeZone& seriesZone,
                                        const TimeZone& local);

struct SeriesDate {
    icalendar::LocalTime time;
    /// It is one of the extra dates and no date of a rule.
    bool isExtra = false;
    /// How many dates each rule has spent before it, for rules with a COUNT; absent where they are too many
    /// to be counted.
    std::vector<std::optional<int>> spent;
};
/// Finds the first date of a series at or after `from` that is not left out; absent also where it is not
/// found within a bounded number of steps.
enum class SearchFrom { included, excluded };
[[nodiscard]] std::optional<SeriesDate> findSeriesDate(const EKReminderData& data, const SeriesDates& dates,
                                                       const icalendar::LocalTime& from,
                                                       SearchFrom searchFrom, const TimeZone& local);

struct CompletedOccurrence {
    /// The series at its next date; completed itself when it has none left.
    EKReminderData series;
    /// The finished occurrence as a reminder of its own that does not recur and does not ring; absent when
    /// the series itself was completed.
    std::optional<EKReminderData> copy;
    /// The next date is an extra one: the rules go on counting from where they did.
    bool keepsAnchor = false;
};

/// Completes the present occurrence of a recurring reminder and, where it is overdue, every other that was
/// due before the day of `now`: the series goes on to its first date after the present one that is not due
/// before that day. Dates that are passed over count against a COUNT. `completed` has isCompleted and
/// completionDate set already; `local` is the person's time zone.
[[nodiscard]] CompletedOccurrence completeOccurrence(EKReminderData completed, const SeriesDates& dates,
                                                     Instant now, const TimeZone& local);

}  // namespace kestrant
