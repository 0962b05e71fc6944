#pragma once

#include "eventkit/icalendar/RecurrenceRule.h"
#include "foundation/ZoneCalendar.h"

#include <optional>
#include <vector>

namespace kestrant::icalendar {

/// Whether a date of an item is a whole day or a time on it.
enum class DateKind { day, time };

/// Walks through the dates of one recurrence rule (RFC 5545, 3.3.10) in order. The start is always the first
/// of them and counts, whether or not it fits the rule. A day that a month does not have is left out: monthly
/// from 31 January goes on with 31 March. Works on local times, so that 09:00 stays 09:00 when the clocks
/// change. Ends in the year 9999, and where a rule has no dates for a very long time.
class Occurrences {
  public:
    /// `zone` is the start's own and is asked only for an end given in UTC.
    Occurrences(RecurrenceRule rule, LocalTime start, DateKind kind, const ZoneCalendar& zone);

    [[nodiscard]] std::optional<LocalTime> next();

    /// Leaves out the dates before `time`: without looking at them where the rule has no COUNT, else by
    /// counting them.
    void skipTo(const LocalTime& time);

  private:
    [[nodiscard]] qint64 periodOf(const LocalTime& time) const;
    [[nodiscard]] QDate firstWeek() const;
    [[nodiscard]] qint64 unit() const;
    [[nodiscard]] std::vector<LocalTime> nextPeriod();
    [[nodiscard]] std::vector<LocalTime> nextDays();
    [[nodiscard]] std::vector<LocalTime> nextTimes();
    [[nodiscard]] bool fits(QDate day) const;
    [[nodiscard]] bool fitsWeekDay(QDate day) const;
    [[nodiscard]] bool isPastEnd(const LocalTime& candidate) const;
    [[nodiscard]] std::vector<LocalTime> selectedPositions(std::vector<LocalTime> candidates) const;

    RecurrenceRule rule_;
    LocalTime start_;
    DateKind kind_;
    ZoneCalendar zone_;
    qint64 period_ = 0;
    int emitted_ = 0;
    LocalTime earliest_;
    bool finished_ = false;
    std::vector<LocalTime> pending_;
    std::size_t position_ = 0;
};

}  // namespace kestrant::icalendar
