#pragma once

#include "foundation/Instant.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"
#include "speech/Rule.h"

#include <QDate>
#include <QString>
#include <QTime>

#include <cstdint>
#include <optional>

namespace kestrant::speech {

/// The order of day and month in "3/4".
enum class DateOrder : std::uint8_t { dayFirst, monthFirst };

/// The present and the customs against which a line is read.
struct Present {
    Instant now;
    TimeZone zone;
    /// All languages are understood; this one decides where a word is in two of them.
    Language language = Language::english;
    DateOrder order = DateOrder::dayFirst;
    /// Times such as "5:30" are those of a twelve-hour clock.
    bool hasTwelveHours = false;

    [[nodiscard]] QDate today() const { return zone.dayOf(now); }
};

enum class DayPart : std::uint8_t { none, morning, afternoon, evening, night };
/// Where in a part of the day: "early", "mid", "late".
enum class PartEdge : std::uint8_t { none, early, middle, late };
[[nodiscard]] QTime usualTime(DayPart part, PartEdge edge = PartEdge::none);

/// What words say about a moment. Absent values are open; those of neighbours are joined, and a date is made
/// of them at the end.
struct Meaning {
    /// From 1; 0 where nothing is said.
    std::uint8_t weekday = 0;
    std::uint8_t month = 0;
    std::uint8_t monthDay = 0;
    DayPart part = DayPart::none;
    PartEdge edge = PartEdge::none;
    int year = 0;
    /// A day by itself: "tomorrow", "in 3 days".
    QDate date;
    /// The days of a week, month or year; both ends included. By itself it means its first one.
    QDate first;
    QDate last;
    /// Minutes of the day; up to 1440.
    int minute = -1;
    /// It may be twelve hours later as well; and nothing but custom tells which.
    bool isOfTwelve = false;
    bool isVague = false;
    /// The zone that is named.
    std::optional<TimeZone> zone;
    /// A moment by itself: "in 2 hours".
    std::optional<Instant> moment;
    /// "this friday" may be today; a weekday by its name alone may not.
    bool mayBeToday = false;
    /// The last moment that is meant, not the first: "by".
    bool isDeadline = false;
    /// Lies in the past, and so is nothing to do: "last friday".
    bool isPast = false;
    std::optional<Rule> rule;
    /// Where the rule begins: "starting monday".
    QDate start;

    [[nodiscard]] bool hasDay() const {
        return weekday != 0 || month != 0 || monthDay != 0 || year != 0 || date.isValid() ||
               first.isValid() || moment;
    }
    [[nodiscard]] bool hasTime() const {
        return minute >= 0 || part != DayPart::none || edge != PartEdge::none || moment;
    }

    /// Both together; absent where they contradict each other.
    [[nodiscard]] static std::optional<Meaning> joined(const Meaning& a, const Meaning& b,
                                                       const Present& present);
};

/// A day, and perhaps a time on it.
struct Moment {
    QDate day;
    std::optional<QTime> time;

    bool operator==(const Moment&) const = default;
};

/// The minute of the day that is most likely meant.
[[nodiscard]] int minuteOfDay(const Meaning& meaning);
/// The next moment that has this meaning; absent for one that never comes. Of a repetition, its first date.
[[nodiscard]] std::optional<Moment> resolved(const Meaning& meaning, const Present& present);

/// The end of a span that begins at `start`, itself made of `startMeaning`. Both are adapted to each other:
/// of "2-4pm" the start is at 14:00. Absent where there is none after it.
[[nodiscard]] std::optional<Moment> resolvedEnd(const Meaning& end, const Meaning& startMeaning,
                                                Moment& start, const Present& present);

/// The rule with the days that were said beside it: "monthly on the 15th".
[[nodiscard]] Rule completedRule(const Meaning& meaning);

}  // namespace kestrant::speech
