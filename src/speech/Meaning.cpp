#include "speech/Meaning.h"

#include "eventkit/recurrence/OccurrenceIterator.h"
#include "speech/Dates.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <chrono>
#include <type_traits>

namespace kestrant::speech {
namespace {

constexpr int noon = 720;
constexpr int wholeDay = 1440;

QTime timeOf(int minute) {
    return QTime(0, 0).addSecs(minute % wholeDay * 60);
}

/// The day that the parts about days mean.
QDate dayOf(const Meaning& meaning, const Present& present) {
    const QDate today = present.today();
    if (meaning.date.isValid())
        return meaning.date;
    if (meaning.first.isValid()) {
        if (meaning.weekday != 0)
            return nthWeekday(meaning.first, meaning.last, meaning.weekday, 1);
        if (meaning.monthDay != 0 || meaning.month != 0) {
            // "the 5th of the month" is over on the 16th; the next one is meant.
            const bool isRunning = meaning.first <= today && today <= meaning.last && meaning.month == 0;
            const QDate found = nextDate(isRunning ? today : meaning.first, meaning.month,
                                         std::max<int>(1, meaning.monthDay));
            return found <= meaning.last || isRunning ? found : QDate();
        }
        return meaning.first;
    }
    if (meaning.year != 0) {
        const int month = std::max<int>(1, meaning.month);
        return {meaning.year, month, std::max<int>(1, meaning.monthDay)};
    }
    if (meaning.month != 0 || meaning.monthDay != 0) {
        const QDate plain = nextDate(today, meaning.month, std::max<int>(1, meaning.monthDay));
        if (meaning.weekday == 0 || meaning.month != 0)
            return plain;
        return nextDate(today, 0, meaning.monthDay, meaning.weekday);
    }
    if (meaning.weekday != 0) {
        const int ahead = (meaning.weekday - today.dayOfWeek() + 7) % 7;
        return today.addDays(ahead == 0 && !meaning.mayBeToday ? 7 : ahead);
    }
    return {};
}

/// The minute that an hour of twelve means in a part of the day, and on which day counted from the named one.
struct Placed {
    int minute = 0;
    int dayOffset = 0;
};

Placed placed(const Meaning& meaning) {
    int minute = meaning.minute;
    if (minute >= wholeDay)
        return {minute - wholeDay, 1};
    if (meaning.part == DayPart::none || !meaning.isOfTwelve) {
        const bool isAfternoon = meaning.isVague && minute < noon;
        if (meaning.part >= DayPart::evening && minute < 5 * 60 && !meaning.isOfTwelve)
            return {minute, 1};
        return {isAfternoon ? minute + noon : minute, 0};
    }
    minute %= noon;
    switch (meaning.part) {
    case DayPart::morning:
        return {minute, 0};
    case DayPart::afternoon:
        return {minute + noon, 0};
    default:
        // The small hours of an evening are those of the next day.
        return minute < (meaning.part == DayPart::night ? 5 * 60 : 4 * 60) + 1 ? Placed{minute, 1}
                                                                               : Placed{minute + noon, 0};
    }
}

Moment inZone(const Moment& moment, const Meaning& meaning, const Present& present) {
    const Instant instant = meaning.zone->instantAt(moment.day, *moment.time);
    return {present.zone.dayOf(instant), present.zone.timeOf(instant)};
}

std::optional<Moment> firstOf(const Meaning& meaning, const Rule& rule, const Present& present) {
    using namespace icalendar;
    QDate from = meaning.start.isValid() ? meaning.start : meaning.date;
    if (!from.isValid() && meaning.year != 0)
        from = dayOf(meaning, present);
    if (!from.isValid() && meaning.first.isValid())
        from = meaning.first;
    const bool isGiven = from.isValid();
    if (meaning.zone) {
        // Where the day of the week would be another one there is no rule for it.
        Meaning single = meaning;
        single.rule.reset();
        if (!single.hasDay())
            single.date = present.today();
        const auto own = resolved(single, present);
        single.zone.reset();
        const auto theirs = resolved(single, present);
        if (!own || !theirs || (own->day != theirs->day && rule.frequency != Rule::Frequency::daily))
            return std::nullopt;
        single = meaning;
        single.zone.reset();
        single.minute = own->time->hour() * 60 + own->time->minute();
        single.isOfTwelve = single.isVague = false;
        return firstOf(single, rule, present);
    }
    if (!isGiven)
        from = present.today();
    std::optional<QTime> time;
    if (meaning.minute >= 0)
        time = timeOf(placed(meaning).minute);
    else if (meaning.part != DayPart::none || meaning.edge != PartEdge::none)
        time = usualTime(meaning.part, meaning.edge);
    if (rule.frequency == Rule::Frequency::hourly) {
        const QTime now = present.zone.timeOf(present.now);
        return Moment{from, time.value_or(QTime(std::min(now.hour() + 1, 23), 0))};
    }
    if (rule.hours != 0) {
        // The first of the times, of today the first that is still to come.
        const QTime now = present.zone.timeOf(present.now);
        std::optional<QTime> next;
        for (int hour = 23; hour >= 0; --hour) {
            const QTime each(hour, time->minute());
            if ((rule.hours >> hour & 1) != 0 && (isGiven || each > now || !next || *next <= now))
                next = each;
        }
        time = next;
    }
    if (!isGiven && time && *time <= present.zone.timeOf(present.now))
        from = from.addDays(1);
    Rule plain = rule;
    plain.interval = 1;
    plain.hours = 0;
    plain.count = 0;
    plain.until = {};
    // Without days of its own it begins at once.
    if (plain.weekdays == 0 && plain.monthDays == 0 && plain.month == 0)
        return Moment{from, time};
    const auto parsed = RecurrenceRule::parse(plain.text().toLatin1());
    if (!parsed)
        return std::nullopt;
    OccurrenceIterator dates(*parsed, {from, QTime(0, 0)}, DateKind::day, present.zone,
                             OccurrenceIterator::Start::isDateIfItFits);
    dates.limitSteps(20'000);
    const auto first = dates.next();
    return first ? std::optional(Moment{first->day, time}) : std::nullopt;
}

}  // namespace

QTime usualTime(DayPart part, PartEdge edge) {
    constexpr std::array<std::array<int, 4>, 5> hours{
        {{0, 8, 12, 20}, {9, 8, 10, 11}, {15, 14, 15, 17}, {19, 18, 19, 21}, {21, 21, 22, 23}}};
    return {hours.at(static_cast<std::size_t>(part)).at(static_cast<std::size_t>(edge)), 0};
}

int minuteOfDay(const Meaning& meaning) {
    return placed(meaning).minute;
}

std::optional<Meaning> Meaning::joined(const Meaning& a, const Meaning& b, const Present& present) {
    Meaning result = a;
    const auto take = [](auto& mine, const auto& other) {
        using Value = std::decay_t<decltype(mine)>;
        if (other == Value{})
            return true;
        const bool agrees = mine == Value{} || mine == other;
        mine = other;
        return agrees;
    };
    if (!take(result.weekday, b.weekday) || !take(result.month, b.month) ||
        !take(result.monthDay, b.monthDay) || !take(result.part, b.part) || !take(result.edge, b.edge) ||
        !take(result.year, b.year) || !take(result.date, b.date) || !take(result.first, b.first) ||
        !take(result.last, b.last))
        return std::nullopt;
    if (b.minute >= 0) {
        if (result.minute >= 0)
            return std::nullopt;
        result.minute = b.minute;
        result.isOfTwelve = b.isOfTwelve;
        result.isVague = b.isVague;
    }
    if (b.zone) {
        if (result.zone || result.minute < 0)
            return std::nullopt;
        result.zone = b.zone;
    }
    if (b.moment || b.rule) {
        if ((b.moment && (a.hasDay() || a.hasTime() || a.rule)) || (b.rule && (a.rule || a.moment)))
            return std::nullopt;
        if (b.moment)
            result.moment = b.moment;
        if (b.rule)
            result.rule = b.rule;
    } else if (a.moment && (b.hasDay() || b.hasTime())) {
        return std::nullopt;
    }
    if (b.start.isValid())
        result.start = b.start;
    result.mayBeToday |= b.mayBeToday;
    result.isDeadline |= b.isDeadline;
    result.isPast |= b.isPast;

    const auto partsOf = [](const Meaning& meaning) {
        return meaning.weekday != 0 || meaning.month != 0 || meaning.monthDay != 0 || meaning.year != 0;
    };
    if (result.rule)
        return result;
    if (result.date.isValid()) {
        if (result.first.isValid() || result.month != 0 || result.monthDay != 0 || result.year != 0 ||
            (result.weekday != 0 && result.date.dayOfWeek() != result.weekday))
            return std::nullopt;
    } else if (result.first.isValid() && partsOf(result)) {
        if (result.year != 0 || !dayOf(result, present).isValid())
            return std::nullopt;
    } else if (result.year != 0 && result.month == 0 && partsOf(result)) {
        if (result.weekday != 0 || result.monthDay != 0)
            return std::nullopt;
    } else if (result.monthDay != 0 && result.month != 0 &&
               !QDate(result.year != 0 ? result.year : 2024, result.month, result.monthDay).isValid()) {
        return std::nullopt;
    }
    return result;
}

Rule completedRule(const Meaning& meaning) {
    Rule rule = *meaning.rule;
    using Frequency = Rule::Frequency;
    if (meaning.weekday != 0) {
        if (rule.frequency == Frequency::daily)
            rule.frequency = Frequency::weekly;
        rule.weekdays |= static_cast<std::uint8_t>(1 << (meaning.weekday - 1));
    }
    if (rule.hours != 0)
        rule.hours |= std::uint32_t{1} << minuteOfDay(meaning) / 60;
    if (meaning.monthDay != 0 && meaning.year == 0)
        rule.monthDays |= std::uint32_t{1} << meaning.monthDay;
    if (meaning.month != 0 && meaning.year == 0) {
        rule.month = meaning.month;
        rule.frequency = Frequency::yearly;
    }
    return rule;
}

std::optional<Moment> resolved(const Meaning& meaning, const Present& present) {
    if (meaning.moment) {
        // A minute that has begun is over.
        const Instant moment = std::chrono::ceil<std::chrono::minutes>(*meaning.moment);
        return Moment{present.zone.dayOf(moment), present.zone.timeOf(moment)};
    }
    if (meaning.rule)
        return firstOf(meaning, completedRule(meaning), present);
    Moment result{dayOf(meaning, present), std::nullopt};
    if (meaning.hasDay() && !result.day.isValid())
        return std::nullopt;
    int dayOffset = 0;
    if (meaning.minute >= 0) {
        const Placed at = placed(meaning);
        result.time = timeOf(at.minute);
        dayOffset = at.dayOffset;
    } else if (meaning.part != DayPart::none || meaning.edge != PartEdge::none) {
        result.time = usualTime(meaning.part, meaning.edge);
    }
    if (!result.day.isValid() && !result.time)
        return std::nullopt;
    if (meaning.zone) {
        const bool hasDay = result.day.isValid();
        Moment moment = inZone({hasDay ? result.day : present.today(), result.time}, meaning, present);
        if (!hasDay && present.zone.instantAt(moment.day, *moment.time) <= present.now)
            moment = inZone({present.today().addDays(1), result.time}, meaning, present);
        return moment;
    }
    if (result.day.isValid()) {
        result.day = result.day.addDays(dayOffset);
    } else {
        const bool isOver = *result.time <= present.zone.timeOf(present.now);
        result.day = present.today().addDays(isOver ? 1 : 0);
    }
    return result;
}

std::optional<Moment> resolvedEnd(const Meaning& end, const Meaning& startMeaning, Moment& start,
                                  const Present& present) {
    Moment result{start.day, std::nullopt};
    if (end.hasDay()) {
        Meaning day = end;
        if (day.year == 0 && startMeaning.year != 0)
            day.year = startMeaning.year;
        day.mayBeToday = true;
        result.day = dayOf(day, present);
        // The end follows the start, whatever comes next from today.
        if (!end.date.isValid() && !end.first.isValid() && result.day < start.day && day.year == 0) {
            if (end.month != 0 || end.monthDay != 0)
                result.day = nextDate(start.day, end.month, std::max<int>(1, end.monthDay));
            else
                result.day = start.day.addDays((end.weekday - start.day.dayOfWeek() + 7) % 7);
        } else if (end.weekday != 0 && !end.date.isValid() && end.monthDay == 0 && !end.first.isValid()) {
            result.day = start.day.addDays((end.weekday - start.day.dayOfWeek() + 7) % 7);
        }
        if (!result.day.isValid() || result.day < start.day)
            return std::nullopt;
    }
    if (end.minute < 0) {
        if (end.part != DayPart::none || end.edge != PartEdge::none)
            result.time = usualTime(end.part, end.edge);
        return result;
    }
    if (!start.time)
        start.time = QTime(9, 0);
    const int startMinute = start.time->hour() * 60 + start.time->minute();
    int endMinute = end.minute % wholeDay;
    const bool isOtherDay = end.hasDay() && result.day > start.day;
    if (end.isOfTwelve) {
        if (isOtherDay || end.part != DayPart::none)
            endMinute = placed(end).minute;
        else if (endMinute % noon > startMinute)
            endMinute %= noon;
        else if (endMinute % noon + noon > startMinute)
            endMinute = endMinute % noon + noon;
    } else if (startMeaning.isOfTwelve && startMeaning.part == DayPart::none && !isOtherDay &&
               !end.hasDay()) {
        // The half of the day in which the start is the nearest before the end.
        const int other = startMinute % noon;
        const int latest = other + noon < endMinute ? other + noon : other;
        if (latest < endMinute)
            start.time = timeOf(latest);
    }
    result.time = timeOf(endMinute);
    if (!isOtherDay && *result.time <= *start.time) {
        if (end.hasDay() && end.minute < wholeDay)
            return std::nullopt;
        result.day = result.day.addDays(1);
    }
    return result;
}

}  // namespace kestrant::speech
