#pragma once

#include "eventkit/recurrence/RecurrenceRule.h"

#include <QDate>
#include <QVarLengthArray>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace kestrant::icalendar {

/// Whether a date of an item is a whole day or a time on it.
enum class DateKind { day, time };

/// The dates that a rule gives, period by period (years, weeks, hours ... as its frequency says), in the
/// clock of its start and without regard to where it starts and ends. Any period is found by arithmetic, and
/// the dates of one are kept as days and times of day, never as a list. Parts that the rule leaves out come
/// from the start. A value. Thread: any. Source: RFC 5545, 3.3.10; SKIP: RFC 7529, 4.1.
class RulePeriods {
  public:
    RulePeriods(RecurrenceRule rule, const LocalTime& start, DateKind kind);

    /// The dates of one period, in order.
    class Dates {
      public:
        [[nodiscard]] std::size_t size() const { return positions_ ? positions_->size() : all(); }
        [[nodiscard]] LocalTime at(std::size_t index) const;
        /// How many are before `time`.
        [[nodiscard]] std::size_t countBefore(const LocalTime& time) const;
        [[nodiscard]] bool contains(const LocalTime& time) const;

      private:
        friend class RulePeriods;
        /// Hours, minutes or seconds: those of a list, or one.
        struct Units {
            const std::vector<int>* list = nullptr;
            int one = 0;
            [[nodiscard]] std::size_t size() const { return list ? list->size() : 1; }
            [[nodiscard]] int at(std::size_t index) const { return list ? (*list)[index] : one; }
        };
        [[nodiscard]] std::size_t timesOfDay() const;
        [[nodiscard]] std::size_t all() const {
            return static_cast<std::size_t>(days_.size()) * timesOfDay();
        }

        QVarLengthArray<QDate, 7> days_;
        std::array<Units, 3> units_;
        /// The chosen ones where the rule has BYSETPOS.
        std::optional<std::vector<std::size_t>> positions_;
    };

    struct Period {
        Dates dates;
        /// The nearest periods after and before this one that may have dates.
        qint64 next = 0;
        qint64 previous = 0;
    };

    /// The period of an index, which counts from the period of the start; `steps` grows by the days and times
    /// that were looked at.
    [[nodiscard]] Period period(qint64 index, qint64& steps) const;
    /// The last period that begins at or before `time`; never negative.
    [[nodiscard]] qint64 indexOf(const LocalTime& time) const;
    /// The day on which a period begins; invalid after the year 9999.
    [[nodiscard]] QDate firstDayOf(qint64 index) const;
    /// Whether a period may have a date that lies in the next one (SKIP=FORWARD).
    [[nodiscard]] bool reachesIntoNext() const { return rule_.skip == RecurrenceRule::Skip::forward; }
    /// The rule has no date at all.
    [[nodiscard]] bool isImpossible() const { return isImpossible_; }

    /// Where every period of less than a day has equally many dates on the days that have any: how many that
    /// are; otherwise 0.
    [[nodiscard]] std::size_t datesPerTime() const;
    /// The number of periods of less than a day that begin before `day`, and whether the day has dates.
    [[nodiscard]] qint64 periodsBefore(QDate day) const;
    [[nodiscard]] bool fits(QDate day) const;

  private:
    [[nodiscard]] bool isWithinDay() const;
    [[nodiscard]] qint64 stepSeconds() const;
    [[nodiscard]] QDate firstWeek() const;
    void addDays(qint64 index, Dates& dates, qint64& steps) const;
    void addDaysOfYear(int year, Dates& dates, qint64& steps) const;
    void addDaysOfWeekYear(int year, Dates& dates, qint64& steps) const;
    void addDaysOfMonth(int year, int month, Dates& dates, qint64& steps) const;
    [[nodiscard]] Period timesAt(qint64 index) const;
    void choosePositions(Dates& dates) const;
    [[nodiscard]] bool fitsWeekDay(QDate day) const;
    [[nodiscard]] bool fitsWeekNumber(QDate day) const;

    RecurrenceRule rule_;
    LocalTime start_;
    bool isImpossible_ = false;
};

}  // namespace kestrant::icalendar
