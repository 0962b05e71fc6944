#pragma once

#include "eventkit/recurrence/OccurrenceIterator.h"
#include "eventkit/recurrence/RecurrenceRule.h"
#include "foundation/TimeZone.h"

#include <QDate>

#include <cstddef>
#include <optional>
#include <vector>

namespace kestrant::icalendar {

/// The recurrence set of an item (RFC 5545, 3.8.5): the dates of its rules and its extra dates, without those
/// that are left out. Local times are of the clock of the item's start. A value. Thread: any.
struct RecurrenceSet {
    LocalTime start;
    DateKind kind = DateKind::time;
    TimeZone zone;
    std::vector<RecurrenceRule> rules;
    /// Sorted, each once, like those that follow.
    std::vector<LocalTime> extraDates;
    std::vector<LocalTime> excludedTimes;
    /// Every date on these days is left out.
    std::vector<QDate> excludedDays;
    /// Rules whose dates are left out.
    std::vector<RecurrenceRule> exceptionRules;

    /// Sorts extra and excluded dates, and drops what is there twice.
    void sort();

    /// The dates of one rule of the set.
    [[nodiscard]] OccurrenceIterator
    datesOf(const RecurrenceRule& rule,
            OccurrenceIterator::Start meaning = OccurrenceIterator::Start::isDate) const;
    [[nodiscard]] std::vector<OccurrenceIterator> exceptions() const;
    /// The time that the clocks show at the moment that is meant, another one where they skip `time`.
    [[nodiscard]] LocalTime shownTime(const LocalTime& time) const;
    /// Whether a rule or an extra date gives this date, be it left out or not.
    [[nodiscard]] bool isGiven(const LocalTime& time) const;
    /// Whether the excluded times and days leave this date out.
    [[nodiscard]] bool isListedAsExcluded(const LocalTime& time) const;
    [[nodiscard]] bool contains(const LocalTime& time) const;
};

/// A walk through the dates of a recurrence set in one order, each once. The set must live as long.
class RecurrenceWalk {
  public:
    enum class Way { forward, back };

    /// On the way back `from` is not included. Days outside `first` and `last` (either may be invalid for
    /// none) are passed over; no more than `steps` are made.
    RecurrenceWalk(const RecurrenceSet& set, Way way, const LocalTime& from, QDate first, QDate last,
                   qint64 steps);

    /// Absent at the end, and when the steps are used up.
    [[nodiscard]] std::optional<LocalTime> next();

    /// Whether the date that next() returned last is one of a rule, and not an extra date alone.
    [[nodiscard]] bool isByRule() const;
    /// The number of dates that each rule has given before that date, counted from where the walk began.
    [[nodiscard]] const std::vector<int>& passed() const { return passed_; }

    /// The number of steps made.
    [[nodiscard]] qint64 steps() const;
    /// Whether the steps were used up.
    [[nodiscard]] bool ranOut() const;

  private:
    void pass(const LocalTime& date);
    [[nodiscard]] bool isLeftOut(const LocalTime& date);
    [[nodiscard]] std::optional<LocalTime> advanced(OccurrenceIterator& dates) const;
    [[nodiscard]] std::optional<LocalTime> extra() const;
    [[nodiscard]] std::optional<LocalTime> nearest() const;

    const RecurrenceSet& set_;
    Way way_;
    qint64 steps_;
    qint64 comparisons_ = 0;
    std::vector<OccurrenceIterator> rules_;
    std::vector<OccurrenceIterator> exceptions_;
    /// The next date of each rule.
    std::vector<std::optional<LocalTime>> heads_;
    std::vector<int> passed_;
    std::optional<LocalTime> present_;
    std::ptrdiff_t extra_ = 0;
    QDate first_;
    QDate last_;
};

}  // namespace kestrant::icalendar
