#include "eventkit/icalendar/Occurrences.h"

#include <algorithm>
#include <utility>

namespace kestrant::icalendar {
namespace {

using Frequency = RecurrenceRule::Frequency;

constexpr int lastYear = 9999;
/// So many periods in a row without a date end a rule: more than any rule that has dates ever leaves empty.
constexpr int emptyPeriodLimit = 100'000;
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

bool fitsWeekNumber(QDate day, const std::vector<int>& numbers, int weekStart) {
    int year = day.year();
    if (day >= firstWeekOf(year + 1, weekStart))
        ++year;
    else if (day < firstWeekOf(year, weekStart))
        --year;
    const QDate first = firstWeekOf(year, weekStart);
    const auto weeks = static_cast<int>(first.daysTo(firstWeekOf(year + 1, weekStart)) / 7);
    return containsPosition(numbers, static_cast<int>(first.daysTo(day) / 7) + 1, weeks);
}

qint64 secondsOf(const LocalTime& time) {
    return time.day.toJulianDay() * secondsPerDay + QTime(0, 0).secsTo(time.time);
}

LocalTime fromSeconds(qint64 seconds) {
    return {QDate::fromJulianDay(seconds / secondsPerDay),
            QTime(0, 0).addSecs(static_cast<int>(seconds % secondsPerDay))};
}

std::vector<int> orElse(const std::vector<int>& numbers, int fallback) {
    return numbers.empty() ? std::vector{fallback} : numbers;
}

void addTimes(QDate day, const std::vector<int>& hours, const std::vector<int>& minutes,
              const std::vector<int>& seconds, std::vector<LocalTime>& result) {
    for (const int hour : hours) {
        for (const int minute : minutes) {
            for (const int second : seconds)
                result.push_back({day, QTime(hour, minute, std::min(second, 59))});
        }
    }
}

/// The rule with the parts that it leaves to its start.
RecurrenceRule completed(RecurrenceRule rule, const LocalTime& start) {
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

}  // namespace

Occurrences::Occurrences(RecurrenceRule rule, LocalTime start, DateKind kind, const ZoneCalendar& zone)
    : rule_(completed(std::move(rule), start))
    , start_(start)
    , kind_(kind)
    , zone_(zone) {}

std::optional<LocalTime> Occurrences::next() {
    if (emitted_ == 0) {
        emitted_ = 1;
        if (!(start_ < earliest_))
            return start_;
    }
    int emptyPeriods = 0;
    while (!finished_ && (!rule_.count || emitted_ < *rule_.count)) {
        if (position_ == pending_.size()) {
            pending_ = nextPeriod();
            position_ = 0;
            emptyPeriods = pending_.empty() ? emptyPeriods + 1 : 0;
            if (emptyPeriods > emptyPeriodLimit)
                finished_ = true;
            continue;
        }
        const LocalTime candidate = pending_[position_++];
        if (!(start_ < candidate))
            continue;
        if (isPastEnd(candidate))
            break;
        ++emitted_;
        if (!(candidate < earliest_))
            return candidate;
    }
    finished_ = true;
    return std::nullopt;
}

void Occurrences::skipTo(const LocalTime& time) {
    earliest_ = time;
    if (rule_.count || !(start_ < time))
        return;
    emitted_ = 1;
    const qint64 period = periodOf(time);
    if (period > period_) {
        period_ = period;
        pending_.clear();
        position_ = 0;
    }
}

/// The last period that begins at or before `time`.
qint64 Occurrences::periodOf(const LocalTime& time) const {
    switch (rule_.frequency) {
    case Frequency::yearly:
        return (time.day.year() - start_.day.year()) / rule_.interval;
    case Frequency::monthly:
        return ((time.day.year() - start_.day.year()) * 12 + time.day.month() - start_.day.month()) /
               rule_.interval;
    case Frequency::weekly:
        return firstWeek().daysTo(time.day) / 7 / rule_.interval;
    case Frequency::daily:
        return start_.day.daysTo(time.day) / rule_.interval;
    default:
        return (secondsOf(time) - secondsOf(start_)) / (unit() * rule_.interval);
    }
}

/// The first day of the week in which the rule starts.
QDate Occurrences::firstWeek() const {
    return start_.day.addDays(-((start_.day.dayOfWeek() - rule_.weekStart + 7) % 7));
}

/// The seconds of a period that is less than a day.
qint64 Occurrences::unit() const {
    return rule_.frequency == Frequency::hourly ? 3600 : rule_.frequency == Frequency::minutely ? 60 : 1;
}

bool Occurrences::isPastEnd(const LocalTime& candidate) const {
    if (!rule_.until)
        return false;
    const LocalTime& end = rule_.until->time;
    switch (rule_.until->form) {
    case RecurrenceRule::UntilForm::date:
        return candidate.day > end.day;
    case RecurrenceRule::UntilForm::local:
        return kind_ == DateKind::day ? candidate.day > end.day : end < candidate;
    case RecurrenceRule::UntilForm::utc:
        break;
    }
    const Instant last = ZoneCalendar(TimeZone()).instantAt(end.day, end.time);
    if (kind_ == DateKind::day)
        return candidate.day > zone_.dayOf(last);
    return zone_.instantAt(candidate.day, candidate.time) > last;
}

std::vector<LocalTime> Occurrences::nextPeriod() {
    const bool withinDay = rule_.frequency == Frequency::hourly || rule_.frequency == Frequency::minutely ||
                           rule_.frequency == Frequency::secondly;
    return selectedPositions(withinDay ? nextTimes() : nextDays());
}

std::vector<LocalTime> Occurrences::nextDays() {
    const qint64 steps = period_++ * rule_.interval;
    QDate first;
    QDate end;
    switch (rule_.frequency) {
    case Frequency::yearly:
        if (start_.day.year() + steps <= lastYear) {
            first = QDate(static_cast<int>(start_.day.year() + steps), 1, 1);
            end = first.addYears(1);
        }
        break;
    case Frequency::monthly: {
        const qint64 month = start_.day.year() * 12LL + start_.day.month() - 1 + steps;
        if (month / 12 <= lastYear) {
            first = QDate(static_cast<int>(month / 12), static_cast<int>(month % 12) + 1, 1);
            end = first.addMonths(1);
        }
        break;
    }
    case Frequency::weekly:
        first = firstWeek().addDays(7 * steps);
        end = first.addDays(7);
        break;
    default:
        first = start_.day.addDays(steps);
        end = first.addDays(1);
        break;
    }
    std::vector<LocalTime> result;
    if (!first.isValid() || first.year() > lastYear) {
        finished_ = true;
        return result;
    }
    const bool timed = kind_ == DateKind::time;
    const std::vector<int> hours = timed ? orElse(rule_.byHour, start_.time.hour()) : std::vector{0};
    const std::vector<int> minutes = timed ? orElse(rule_.byMinute, start_.time.minute()) : std::vector{0};
    const std::vector<int> seconds = timed ? orElse(rule_.bySecond, start_.time.second()) : std::vector{0};
    for (QDate day = first; day < end; day = day.addDays(1)) {
        if (fits(day))
            addTimes(day, hours, minutes, seconds, result);
    }
    return result;
}

std::vector<LocalTime> Occurrences::nextTimes() {
    const qint64 unit = this->unit();
    const qint64 step = unit * rule_.interval;
    const qint64 origin = secondsOf(start_);
    const qint64 present = origin + period_ * step;
    const LocalTime time = fromSeconds(present);
    std::vector<LocalTime> result;
    if (time.day.year() > lastYear) {
        finished_ = true;
        return result;
    }
    const auto continueAt = [&](qint64 earliest) {
        period_ = std::max(period_ + 1, (earliest - origin + step - 1) / step);
    };
    const auto excludes = [](const std::vector<int>& numbers, int number) {
        return !numbers.empty() && !contains(numbers, number);
    };
    if (!fits(time.day)) {
        continueAt((present / secondsPerDay + 1) * secondsPerDay);
    } else if (excludes(rule_.byHour, time.time.hour())) {
        continueAt((present / 3600 + 1) * 3600);
    } else if (unit < 3600 && excludes(rule_.byMinute, time.time.minute())) {
        continueAt((present / 60 + 1) * 60);
    } else if (unit == 1 && excludes(rule_.bySecond, time.time.second())) {
        continueAt(present + 1);
    } else {
        addTimes(time.day, {time.time.hour()},
                 unit == 3600 ? orElse(rule_.byMinute, time.time.minute()) : std::vector{time.time.minute()},
                 unit > 1 ? orElse(rule_.bySecond, time.time.second()) : std::vector{time.time.second()},
                 result);
        continueAt(present + 1);
    }
    return result;
}

bool Occurrences::fits(QDate day) const {
    if (!rule_.byMonth.empty() && !contains(rule_.byMonth, day.month()))
        return false;
    if (!rule_.byMonthDay.empty() && !containsPosition(rule_.byMonthDay, day.day(), day.daysInMonth()))
        return false;
    if (!rule_.byYearDay.empty() && !containsPosition(rule_.byYearDay, day.dayOfYear(), day.daysInYear()))
        return false;
    if (!rule_.byWeekNumber.empty() && !fitsWeekNumber(day, rule_.byWeekNumber, rule_.weekStart))
        return false;
    return fitsWeekDay(day);
}

bool Occurrences::fitsWeekDay(QDate day) const {
    if (rule_.byDay.empty())
        return true;
    const bool perYear =
        rule_.frequency == Frequency::yearly && rule_.byMonth.empty() && rule_.byWeekNumber.empty();
    const bool perMonth = rule_.frequency == Frequency::monthly ||
                          (rule_.frequency == Frequency::yearly && !rule_.byMonth.empty());
    return std::any_of(rule_.byDay.begin(), rule_.byDay.end(), [&](const RecurrenceRule::WeekDay& weekDay) {
        if (weekDay.day != day.dayOfWeek())
            return false;
        if (weekDay.ordinal == 0 || (!perYear && !perMonth))
            return true;
        const int position = perYear ? day.dayOfYear() : day.day();
        const int size = perYear ? day.daysInYear() : day.daysInMonth();
        return weekDay.ordinal == (position - 1) / 7 + 1 || weekDay.ordinal == -((size - position) / 7 + 1);
    });
}

std::vector<LocalTime> Occurrences::selectedPositions(std::vector<LocalTime> candidates) const {
    if (rule_.bySetPosition.empty())
        return candidates;
    std::vector<LocalTime> result;
    const auto size = static_cast<int>(candidates.size());
    for (int i = 0; i < size; ++i) {
        if (containsPosition(rule_.bySetPosition, i + 1, size))
            result.push_back(candidates[static_cast<std::size_t>(i)]);
    }
    return result;
}

}  // namespace kestrant::icalendar
