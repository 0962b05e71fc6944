#include "eventkit/recurrence/RulePeriods.h"

#include <QTime>

#include <algorithm>
#include <utility>

namespace kestrant::icalendar {
namespace {

using Frequency = RecurrenceRule::Frequency;
using Skip = RecurrenceRule::Skip;

constexpr int lastYear = 9999;
constexpr qint64 secondsPerDay = 86'400;

bool contains(const std::vector<int>& numbers, int number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/// Whether a position, or the same one counted from the end of `size`, is among the numbers.
bool containsPosition(const std::vector<int>& numbers, int position, int size) {
    return contains(numbers, position) || contains(numbers, position - size - 1);
}

/// The first day of the first week of a year: the week that has at least four of its days (ISO 8601, for any
/// first day).
QDate firstWeekOf(int year, int weekStart) {
    const QDate fourth(year, 1, 4);
    return fourth.addDays(-((fourth.dayOfWeek() - weekStart + 7) % 7));
}

/// The year whose weeks include the day.
int weekYearOf(QDate day, int weekStart) {
    const int year = day.year();
    return day >= firstWeekOf(year + 1, weekStart) ? year + 1
           : day < firstWeekOf(year, weekStart)    ? year - 1
                                                   : year;
}

int weeksOf(int weekYear, int weekStart) {
    return static_cast<int>(firstWeekOf(weekYear, weekStart).daysTo(firstWeekOf(weekYear + 1, weekStart)) /
                            7);
}

qint64 secondsOf(const LocalTime& time) {
    return time.day.toJulianDay() * secondsPerDay + QTime(0, 0).secsTo(time.time);
}

LocalTime fromSeconds(qint64 seconds) {
    return {QDate::fromJulianDay(seconds / secondsPerDay),
            QTime(0, 0).addSecs(static_cast<int>(seconds % secondsPerDay))};
}

qint64 roundedUp(qint64 dividend, qint64 divisor) {
    return (dividend + divisor - 1) / divisor;
}

template <typename Container>
void sortUnique(Container& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

/// The rule with the parts that it leaves to its start, and without those that mean nothing for its kind.
RecurrenceRule completed(RecurrenceRule rule, const LocalTime& start, DateKind kind) {
    if (kind == DateKind::day) {
        for (auto* list : {&rule.byHour, &rule.byMinute, &rule.bySecond})
            list->clear();
        const qint64 unit = rule.frequency == Frequency::hourly     ? 3600
                            : rule.frequency == Frequency::minutely ? 60
                            : rule.frequency == Frequency::secondly ? 1
                                                                    : 0;
        if (unit > 0) {
            rule.frequency = Frequency::daily;
            rule.interval = static_cast<int>(std::max<qint64>(unit * rule.interval / secondsPerDay, 1));
        }
    }
    // A leap second is the one before it (RFC 5545, 3.3.12).
    for (int& second : rule.bySecond)
        second = std::min(second, 59);
    sortUnique(rule.bySecond);
    const bool namesDays = !rule.byDay.empty() || !rule.byMonthDay.empty() || !rule.byYearDay.empty();
    if (namesDays)
        return rule;
    const bool takesWeekDay = rule.frequency == Frequency::weekly ||
                              (rule.frequency == Frequency::yearly && !rule.byWeekNumber.empty());
    if (takesWeekDay) {
        rule.byDay = {{0, start.day.dayOfWeek()}};
    } else if (rule.frequency == Frequency::monthly || rule.frequency == Frequency::yearly) {
        rule.byMonthDay = {start.day.day()};
        if (rule.frequency == Frequency::yearly && rule.byMonth.empty())
            rule.byMonth = {start.day.month()};
    }
    return rule;
}

/// Whether no month has any of the days.
bool namesNoDay(const RecurrenceRule& rule) {
    if (rule.byMonth.empty() || rule.byMonthDay.empty() || rule.skip != Skip::omit)
        return false;
    return std::none_of(rule.byMonth.begin(), rule.byMonth.end(), [&](int month) {
        const int length = QDate(2024, month, 1).daysInMonth();
        return std::any_of(rule.byMonthDay.begin(), rule.byMonthDay.end(),
                           [&](int day) { return std::abs(day) <= length; });
    });
}

}  // namespace

std::size_t RulePeriods::Dates::timesOfDay() const {
    return units_[0].size() * units_[1].size() * units_[2].size();
}

LocalTime RulePeriods::Dates::at(std::size_t index) const {
    const std::size_t position = positions_ ? (*positions_)[index] : index;
    const std::size_t time = position % timesOfDay();
    const std::size_t seconds = units_[2].size();
    const std::size_t minutes = units_[1].size();
    return {days_[static_cast<qsizetype>(position / timesOfDay())],
            QTime(units_[0].at(time / seconds / minutes), units_[1].at(time / seconds % minutes),
                  units_[2].at(time % seconds))};
}

std::size_t RulePeriods::Dates::countBefore(const LocalTime& time) const {
    std::size_t low = 0;
    std::size_t high = size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (at(middle) < time)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

bool RulePeriods::Dates::contains(const LocalTime& time) const {
    const std::size_t index = countBefore(time);
    return index < size() && at(index) == time;
}

RulePeriods::RulePeriods(RecurrenceRule rule, const LocalTime& start, DateKind kind)
    : rule_(completed(std::move(rule), start, kind))
    , start_(start)
    , isImpossible_(namesNoDay(rule_)) {}

bool RulePeriods::isWithinDay() const {
    return rule_.frequency == Frequency::hourly || rule_.frequency == Frequency::minutely ||
           rule_.frequency == Frequency::secondly;
}

/// The distance of periods of less than a day.
qint64 RulePeriods::stepSeconds() const {
    const qint64 unit = rule_.frequency == Frequency::hourly     ? 3600
                        : rule_.frequency == Frequency::minutely ? 60
                                                                 : 1;
    return unit * rule_.interval;
}

/// The first day of the week in which the rule starts.
QDate RulePeriods::firstWeek() const {
    return start_.day.addDays(-((start_.day.dayOfWeek() - rule_.weekStart + 7) % 7));
}

qint64 RulePeriods::indexOf(const LocalTime& time) const {
    qint64 distance = 0;
    switch (rule_.frequency) {
    case Frequency::yearly:
        distance = rule_.byWeekNumber.empty()
                       ? time.day.year() - start_.day.year()
                       : weekYearOf(time.day, rule_.weekStart) - weekYearOf(start_.day, rule_.weekStart);
        break;
    case Frequency::monthly:
        distance = (time.day.year() - start_.day.year()) * 12 + time.day.month() - start_.day.month();
        break;
    case Frequency::weekly:
        distance = firstWeek().daysTo(time.day) / 7;
        break;
    case Frequency::daily:
        distance = start_.day.daysTo(time.day);
        break;
    default:
        return std::max<qint64>((secondsOf(time) - secondsOf(start_)) / stepSeconds(), 0);
    }
    return std::max<qint64>(distance / rule_.interval, 0);
}

QDate RulePeriods::firstDayOf(qint64 index) const {
    const qint64 steps = index * rule_.interval;
    QDate result;
    switch (rule_.frequency) {
    case Frequency::yearly: {
        const bool byWeeks = !rule_.byWeekNumber.empty();
        const qint64 year = (byWeeks ? weekYearOf(start_.day, rule_.weekStart) : start_.day.year()) + steps;
        if (year > lastYear)
            return {};
        return byWeeks ? firstWeekOf(static_cast<int>(year), rule_.weekStart)
                       : QDate(static_cast<int>(year), 1, 1);
    }
    case Frequency::monthly: {
        const qint64 month = start_.day.year() * 12LL + start_.day.month() - 1 + steps;
        return month / 12 > lastYear
                   ? QDate()
                   : QDate(static_cast<int>(month / 12), static_cast<int>(month % 12) + 1, 1);
    }
    case Frequency::weekly:
        result = firstWeek().addDays(7 * steps);
        break;
    case Frequency::daily:
        result = start_.day.addDays(steps);
        break;
    default:
        result = QDate::fromJulianDay((secondsOf(start_) + index * stepSeconds()) / secondsPerDay);
        break;
    }
    return result.isValid() && result.year() <= lastYear ? result : QDate();
}

RulePeriods::Period RulePeriods::period(qint64 index, qint64& steps) const {
    ++steps;
    if (isWithinDay()) {
        Period result = timesAt(index);
        choosePositions(result.dates);
        return result;
    }
    Period result{.next = index + 1, .previous = index - 1};
    const auto units = [](const std::vector<int>& list, int otherwise) {
        return list.empty() ? Dates::Units{nullptr, otherwise} : Dates::Units{&list, 0};
    };
    result.dates.units_ = {units(rule_.byHour, start_.time.hour()),
                           units(rule_.byMinute, start_.time.minute()),
                           units(rule_.bySecond, start_.time.second())};
    addDays(index, result.dates, steps);
    choosePositions(result.dates);
    return result;
}

void RulePeriods::addDays(qint64 index, Dates& dates, qint64& steps) const {
    const QDate first = firstDayOf(index);
    if (!first.isValid())
        return;
    switch (rule_.frequency) {
    case Frequency::yearly:
        if (!rule_.byWeekNumber.empty())
            addDaysOfWeekYear(weekYearOf(first, rule_.weekStart), dates, steps);
        else
            addDaysOfYear(first.year(), dates, steps);
        break;
    case Frequency::monthly:
        if (rule_.byMonth.empty() || contains(rule_.byMonth, first.month()))
            addDaysOfMonth(first.year(), first.month(), dates, steps);
        break;
    default:
        for (QDate day = first, end = first.addDays(rule_.frequency == Frequency::weekly ? 7 : 1); day < end;
             day = day.addDays(1), ++steps) {
            if (fits(day))
                dates.days_.push_back(day);
        }
        break;
    }
}

void RulePeriods::addDaysOfYear(int year, Dates& dates, qint64& steps) const {
    if (rule_.byYearDay.empty()) {
        for (int month = 1; month <= 12; ++month) {
            if (rule_.byMonth.empty() || contains(rule_.byMonth, month))
                addDaysOfMonth(year, month, dates, steps);
        }
        if (rule_.skip == Skip::forward)
            sortUnique(dates.days_);
        return;
    }
    const QDate first(year, 1, 1);
    const int length = first.daysInYear();
    for (const int number : rule_.byYearDay) {
        ++steps;
        int position = number > 0 ? number : length + number + 1;
        if (position > length && rule_.skip != Skip::omit)
            position = rule_.skip == Skip::forward ? length + 1 : length;
        else if (position < 1 || position > length)
            continue;
        const QDate day = first.addDays(position - 1);
        if ((rule_.byMonth.empty() || contains(rule_.byMonth, day.month())) &&
            (rule_.byMonthDay.empty() || containsPosition(rule_.byMonthDay, day.day(), day.daysInMonth())) &&
            fitsWeekDay(day))
            dates.days_.push_back(day);
    }
    sortUnique(dates.days_);
}

void RulePeriods::addDaysOfWeekYear(int year, Dates& dates, qint64& steps) const {
    const int weeks = weeksOf(year, rule_.weekStart);
    const QDate first = firstWeekOf(year, rule_.weekStart);
    for (const int number : rule_.byWeekNumber) {
        const int week = number > 0 ? number : weeks + number + 1;
        if (week < 1 || week > weeks)
            continue;
        for (int i = 0; i < 7; ++i, ++steps) {
            const QDate day = first.addDays(7 * (week - 1) + i);
            if (fits(day))
                dates.days_.push_back(day);
        }
    }
    sortUnique(dates.days_);
}

void RulePeriods::addDaysOfMonth(int year, int month, Dates& dates, qint64& steps) const {
    const QDate first(year, month, 1);
    const int length = first.daysInMonth();
    const auto add = [&](int position) {
        ++steps;
        const QDate day = first.addDays(position - 1);
        if ((rule_.byYearDay.empty() ||
             containsPosition(rule_.byYearDay, day.dayOfYear(), day.daysInYear())) &&
            (rule_.byWeekNumber.empty() || fitsWeekNumber(day)) && fitsWeekDay(day))
            dates.days_.push_back(day);
    };
    if (rule_.byMonthDay.empty()) {
        for (int position = 1; position <= length; ++position)
            add(position);
        return;
    }
    QVarLengthArray<int, 31> positions;
    for (const int number : rule_.byMonthDay) {
        const int position = number > 0 ? number : length + number + 1;
        if (position >= 1 && position <= length)
            positions.push_back(position);
        else if (position > length && rule_.skip != Skip::omit)
            positions.push_back(rule_.skip == Skip::forward ? length + 1 : length);
    }
    sortUnique(positions);
    for (const int position : positions)
        add(position);
}

/// A period of less than a day. Where it has no dates, all that have none for the same reason are passed
/// over.
RulePeriods::Period RulePeriods::timesAt(qint64 index) const {
    const qint64 step = stepSeconds();
    const qint64 origin = secondsOf(start_);
    const qint64 present = origin + index * step;
    const LocalTime time = fromSeconds(present);
    const int hour = time.time.hour();
    const int minute = time.time.minute();
    const int second = time.time.second();
    Period result{.next = index + 1, .previous = index - 1};
    const auto passOver = [&](qint64 begin, qint64 end) {
        result.next = std::max(index + 1, roundedUp(end - origin, step));
        result.previous = begin <= origin ? -1 : std::min(index - 1, (begin - origin - 1) / step);
    };
    const auto passOverEvery = [&](qint64 length) {
        passOver(present / length * length, present / length * length + length);
    };
    const auto excludes = [](const std::vector<int>& numbers, int number) {
        return !numbers.empty() && !contains(numbers, number);
    };
    const auto unit = step / rule_.interval;
    if (excludes(rule_.byMonth, time.day.month())) {
        const QDate first(time.day.year(), time.day.month(), 1);
        passOver(first.toJulianDay() * secondsPerDay, first.addMonths(1).toJulianDay() * secondsPerDay);
    } else if (!fits(time.day)) {
        passOverEvery(secondsPerDay);
    } else if (excludes(rule_.byHour, hour)) {
        passOverEvery(3600);
    } else if (unit < 3600 && excludes(rule_.byMinute, minute)) {
        passOverEvery(60);
    } else if (unit > 1 || !excludes(rule_.bySecond, second)) {
        const bool expandsMinutes = unit == 3600 && !rule_.byMinute.empty();
        const bool expandsSeconds = unit > 1 && !rule_.bySecond.empty();
        result.dates.days_.push_back(time.day);
        result.dates.units_ = {
            Dates::Units{nullptr, hour},
            expandsMinutes ? Dates::Units{&rule_.byMinute, 0} : Dates::Units{nullptr, minute},
            expandsSeconds ? Dates::Units{&rule_.bySecond, 0} : Dates::Units{nullptr, second}};
    }
    return result;
}

void RulePeriods::choosePositions(Dates& dates) const {
    const auto size = static_cast<qint64>(dates.all());
    if (rule_.bySetPosition.empty() || size == 0)
        return;
    std::vector<std::size_t> positions;
    for (const int number : rule_.bySetPosition) {
        const qint64 position = number > 0 ? number - 1 : size + number;
        if (position >= 0 && position < size)
            positions.push_back(static_cast<std::size_t>(position));
    }
    sortUnique(positions);
    dates.positions_ = std::move(positions);
}

std::size_t RulePeriods::datesPerTime() const {
    const bool filtersMinutes = rule_.frequency != Frequency::hourly && !rule_.byMinute.empty();
    const bool filtersSeconds = rule_.frequency == Frequency::secondly && !rule_.bySecond.empty();
    if (!isWithinDay() || !rule_.byHour.empty() || filtersMinutes || filtersSeconds)
        return 0;
    Dates dates;
    dates.days_.push_back(start_.day);
    if (!rule_.byMinute.empty())
        dates.units_[1].list = &rule_.byMinute;
    if (!rule_.bySecond.empty())
        dates.units_[2].list = &rule_.bySecond;
    choosePositions(dates);
    return dates.size();
}

qint64 RulePeriods::periodsBefore(QDate day) const {
    const qint64 distance = day.toJulianDay() * secondsPerDay - secondsOf(start_);
    return distance <= 0 ? 0 : roundedUp(distance, stepSeconds());
}

bool RulePeriods::fits(QDate day) const {
    if (!rule_.byMonth.empty() && !contains(rule_.byMonth, day.month()))
        return false;
    if (!rule_.byMonthDay.empty() && !containsPosition(rule_.byMonthDay, day.day(), day.daysInMonth()))
        return false;
    if (!rule_.byYearDay.empty() && !containsPosition(rule_.byYearDay, day.dayOfYear(), day.daysInYear()))
        return false;
    if (!rule_.byWeekNumber.empty() && !fitsWeekNumber(day))
        return false;
    return fitsWeekDay(day);
}

bool RulePeriods::fitsWeekNumber(QDate day) const {
    const int year = weekYearOf(day, rule_.weekStart);
    const auto week = static_cast<int>(firstWeekOf(year, rule_.weekStart).daysTo(day) / 7) + 1;
    return containsPosition(rule_.byWeekNumber, week, weeksOf(year, rule_.weekStart));
}

bool RulePeriods::fitsWeekDay(QDate day) const {
    if (rule_.byDay.empty())
        return true;
    const bool perYear =
        rule_.frequency == Frequency::yearly && rule_.byMonth.empty() && rule_.byWeekNumber.empty();
    const bool perMonth = rule_.frequency == Frequency::monthly ||
                          (rule_.frequency == Frequency::yearly && !rule_.byMonth.empty());
    const int ofWeek = day.dayOfWeek();
    return std::any_of(rule_.byDay.begin(), rule_.byDay.end(), [&](const RecurrenceRule::WeekDay& weekDay) {
        if (weekDay.day != ofWeek)
            return false;
        if (weekDay.ordinal == 0 || (!perYear && !perMonth))
            return true;
        const int position = perYear ? day.dayOfYear() : day.day();
        const int size = perYear ? day.daysInYear() : day.daysInMonth();
        return weekDay.ordinal == (position - 1) / 7 + 1 || weekDay.ordinal == -((size - position) / 7 + 1);
    });
}

}  // namespace kestrant::icalendar
