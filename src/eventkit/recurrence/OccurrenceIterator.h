#pragma once

#include "eventkit/recurrence/RecurrenceRule.h"
#include "eventkit/recurrence/RulePeriods.h"
#include "foundation/TimeZone.h"

#include <limits>
#include <optional>

namespace kestrant::icalendar {

/// Walks through the dates of one recurrence rule (RFC 5545, 3.3.10), from its start on or, after skipTo(),
/// from anywhere in either direction. A day that a month does not have is left out (monthly from 31 January
/// goes on with 31 March) unless the rule has a SKIP. Works on local times, so that 09:00 stays 09:00 when
/// the clocks change. A time that the clocks skip is a date and counts; it is the later moment that RFC
/// 5545, 3.3.5 makes of it (so erratum 4271 on 3.3.10), and where the rule has a date at that moment already,
/// it is that one date. A time that the clocks show twice is its first one.
///
/// Ends in the year 9999, and where nothing is found for as long as the Gregorian calendar takes to repeat
/// itself.
class OccurrenceIterator {
  public:
    /// The role of the start beside being the origin of the rule.
    enum class Start {
        /// The first date, whether or not it fits the rule; it counts.
        isDate,
        /// A date where it fits the rule (the rules of exceptions).
        isDateIfItFits,
    };

    /// `zone` is the start's own.
    OccurrenceIterator(RecurrenceRule rule, LocalTime start, DateKind kind, const TimeZone& zone,
                       Start meaning = Start::isDate);

    /// The next date; absent at the end.
    [[nodiscard]] std::optional<LocalTime> next();
    /// After skipTo(), instead of next(): the dates before that time, the latest one first.
    [[nodiscard]] std::optional<LocalTime> previous();

    /// Leaves out the dates before `time`, mostly without looking at them.
    void skipTo(const LocalTime& time);
    /// Ends the walk with the day `last`, or before `first` on the way back, without a search beyond.
    void endWith(QDate first, QDate last);

    /// Ends the walk after so many steps: days and times that were looked at.
    void limitSteps(qint64 most) { stepsLeft_ = most; }
    [[nodiscard]] qint64 stepsLeft() const { return stepsLeft_; }
    /// Whether the steps did not suffice.
    [[nodiscard]] bool ranOut() const { return stepsLeft_ <= 0; }

    /// Whether the rule gives this date.
    [[nodiscard]] bool contains(const LocalTime& time);

    /// The last date of a rule with a COUNT; absent where it has none, or where it is not found within the
    /// steps.
    [[nodiscard]] std::optional<LocalTime> lastByCount();

  private:
    enum class Way { forward, back };

    [[nodiscard]] bool isBeforeStart(const LocalTime& candidate) const;
    [[nodiscard]] bool isPastEnd(const LocalTime& candidate) const;
    [[nodiscard]] LocalTime afterEnd() const;
    [[nodiscard]] bool gives(const LocalTime& time);
    [[nodiscard]] bool coincidesAfterGap(const LocalTime& candidate);
    /// Enters the period from which skipTo() has the walk begin.
    void begin(Way way);
    /// Enters the next period that has dates; false where the walk ends.
    [[nodiscard]] bool advance(Way way);
    /// False when no steps are left.
    [[nodiscard]] bool spend(qint64 steps);
    void endByCount();
    [[nodiscard]] std::optional<LocalTime> nthAfterStart(qint64 count);
    [[nodiscard]] qint64 coincidencesUntil(const LocalTime& last);
    [[nodiscard]] qint64 coincidencesOn(QDate day, const LocalTime& last);

    RecurrenceRule rule_;
    RulePeriods periods_;
    LocalTime start_;
    DateKind kind_;
    TimeZone zone_;
    Start meaning_;
    /// A rule that ends at an instant: its local time, near which instants are compared.
    std::optional<LocalTime> untilLocal_;

    qint64 stepsLeft_ = std::numeric_limits<qint64>::max();
    QDate firstDay_;
    QDate lastDay_;
    LocalTime earliest_;
    bool hasBegun_ = false;
    bool startIsPast_ = false;
    bool finished_ = false;
    qint64 count_ = 0;
    std::optional<LocalTime> given_;
    /// The period in hand; how many of its dates lie behind on the way forward.
    RulePeriods::Period period_{.next = 0, .previous = -1};
    std::size_t position_ = 0;
};

}  // namespace kestrant::icalendar
