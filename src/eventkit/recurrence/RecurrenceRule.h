#pragma once

#include <QByteArrayView>
#include <QDate>
#include <QTime>

#include <optional>
#include <vector>

namespace kestrant::icalendar {

/// A date and time as clocks in one place show it; a whole day has the time 00:00.
struct LocalTime {
    QDate day;
    QTime time{0, 0};

    bool operator==(const LocalTime&) const = default;
    bool operator<(const LocalTime& other) const {
        return day != other.day ? day < other.day : time < other.time;
    }
};

/// A recurrence rule (RFC 5545, 3.3.10), parsed. The parts are as written; what they mean together is for
/// OccurrenceIterator.
struct RecurrenceRule {
    enum class Frequency { secondly, minutely, hourly, daily, weekly, monthly, yearly };
    enum class UntilForm { date, local, utc };
    /// What becomes of a date on a day that its month or year does not have: it is left out, moved to the day
    /// before or to the day after (RFC 7529, 4.1).
    enum class Skip { omit, backward, forward };
    /// A day of the week, 1 = Monday; `ordinal` counts such days in the month or year, from the end when
    /// negative; 0 stands for all of them.
    struct WeekDay {
        int ordinal = 0;
        int day = 1;
    };
    /// The last moment that may still be an occurrence.
    struct Until {
        LocalTime time;
        UntilForm form = UntilForm::date;
    };

    Frequency frequency = Frequency::daily;
    int interval = 1;
    std::optional<int> count;
    std::optional<Until> until;
    std::vector<int> bySecond;
    std::vector<int> byMinute;
    std::vector<int> byHour;
    std::vector<WeekDay> byDay;
    std::vector<int> byMonthDay;
    std::vector<int> byYearDay;
    std::vector<int> byWeekNumber;
    std::vector<int> byMonth;
    std::vector<int> bySetPosition;
    int weekStart = 1;
    Skip skip = Skip::omit;

    /// Whether more than frequency, interval and end is said.
    [[nodiscard]] bool hasByParts() const;

    /// Absent for a text that is no valid rule: a part that is missing, unknown, repeated or out of its
    /// range. Parts whose name begins with "X-" are passed over; the only RSCALE is GREGORIAN.
    [[nodiscard]] static std::optional<RecurrenceRule> parse(QByteArrayView text);
};

}  // namespace kestrant::icalendar
