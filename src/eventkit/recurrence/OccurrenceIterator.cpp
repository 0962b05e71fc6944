#include "eventkit/recurrence/OccurrenceIterator.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant::icalendar {
namespace {

using UntilForm = RecurrenceRule::UntilForm;

/// The days after which the Gregorian calendar repeats itself. A rule that has had no date for so many steps,
/// each of which is a day or more, has none.
constexpr qint64 emptySteps = 400 * 366;
/// The end that a COUNT means is not looked for any longer: it lies centuries after the start.
constexpr qint64 countingSteps = 100'000;
/// Zones are not asked about later years, where each answer takes long.
constexpr int lastYearOfClocks = 2099;

LocalTime localTimeAt(Instant instant, const TimeZone& zone) {
    return {zone.dayOf(instant), zone.timeOf(instant)};
}

/// The last second of the day before.
Instant eveOf(QDate day, const TimeZone& zone) {
    return zone.startOfDay(day) - std::chrono::seconds(1);
}

}  // namespace

OccurrenceIterator::OccurrenceIterator(RecurrenceRule rule, LocalTime start, DateKind kind,
                                       const TimeZone& zone, Start meaning)
    : rule_(std::move(rule))
    , periods_(rule_, start, kind)
    , start_(start)
    , kind_(kind)
    , zone_(zone)
    , meaning_(meaning) {
    if (rule_.until && rule_.until->form == UntilForm::utc) {
        const LocalTime& end = rule_.until->time;
        untilLocal_ = localTimeAt(TimeZone().instantAt(end.day, end.time), zone_);
    }
}

std::optional<LocalTime> OccurrenceIterator::next() {
    begin(Way::forward);
    if (!std::exchange(startIsPast_, true) && meaning_ == Start::isDate) {
        given_ = start_;
        ++count_;
        if (!(start_ < earliest_))
            return start_;
    }
    while (!finished_ && (!rule_.count || count_ < *rule_.count)) {
        if (position_ == period_.dates.size()) {
            if (!advance(Way::forward))
                break;
            continue;
        }
        const LocalTime candidate = period_.dates.at(position_++);
        if (!spend(1) || isPastEnd(candidate) || (lastDay_.isValid() && candidate.day > lastDay_))
            break;
        if (isBeforeStart(candidate) || (given_ && !(*given_ < candidate)) || coincidesAfterGap(candidate))
            continue;
        given_ = candidate;
        ++count_;
        if (!(candidate < earliest_))
            return candidate;
    }
    finished_ = true;
    return std::nullopt;
}

std::optional<LocalTime> OccurrenceIterator::previous() {
    begin(Way::back);
    while (!finished_) {
        if (position_ == 0) {
            if (!advance(Way::back))
                break;
            continue;
        }
        const LocalTime candidate = period_.dates.at(--position_);
        if (!spend(1) || isBeforeStart(candidate) || (firstDay_.isValid() && candidate.day < firstDay_))
            break;
        if (isPastEnd(candidate) || !(candidate < given_.value_or(earliest_)) || coincidesAfterGap(candidate))
            continue;
        given_ = candidate;
        return candidate;
    }
    const bool givesStart = !finished_ && !ranOut() && meaning_ == Start::isDate &&
                            start_ < given_.value_or(earliest_) &&
                            (!firstDay_.isValid() || start_.day >= firstDay_);
    finished_ = true;
    return givesStart ? std::optional(start_) : std::nullopt;
}

void OccurrenceIterator::skipTo(const LocalTime& time) {
    endByCount();
    earliest_ = time;
    startIsPast_ = start_ < time;
    given_.reset();
}

void OccurrenceIterator::endWith(QDate first, QDate last) {
    firstDay_ = first;
    lastDay_ = last;
}

void OccurrenceIterator::begin(Way way) {
    if (std::exchange(hasBegun_, true) || !(start_ < earliest_))
        return;
    LocalTime from = earliest_;
    if (way == Way::back && rule_.until)
        from = std::min(from, afterEnd());
    qint64 index = periods_.indexOf(from);
    if (way == Way::forward && periods_.reachesIntoNext())
        index = std::max<qint64>(index - 1, 0);
    qint64 steps = 0;
    period_ = periods_.period(index, steps);
    position_ = period_.dates.countBefore(from);
    (void)spend(steps);
}

/// A time close after the end, before which all dates lie.
LocalTime OccurrenceIterator::afterEnd() const {
    const LocalTime& end = rule_.until->time;
    if (rule_.until->form == UntilForm::date || kind_ == DateKind::day)
        return {end.day.addDays(2)};
    // Before the clocks were set back they showed later times.
    constexpr int setBackBy = 3 * 3600;
    const LocalTime& last = untilLocal_ ? *untilLocal_ : end;
    const bool isNextDay = last.time.secsTo(QTime(23, 59, 59)) < setBackBy;
    return {last.day.addDays(isNextDay ? 1 : 0), last.time.addSecs(setBackBy)};
}

bool OccurrenceIterator::advance(Way way) {
    const bool forward = way == Way::forward;
    qint64 empty = 0;
    do {
        const qint64 index = forward ? period_.next : period_.previous;
        if (index < 0 || periods_.isImpossible())
            return false;
        const QDate first = periods_.firstDayOf(index);
        if (!first.isValid() || (forward && lastDay_.isValid() && first > lastDay_))
            return false;
        if (!forward && firstDay_.isValid()) {
            // A date may have been moved to the first day of the period that follows.
            const QDate following = periods_.firstDayOf(index + 1);
            if (following.isValid() && following.addDays(1) < firstDay_)
                return false;
        }
        qint64 steps = 0;
        period_ = periods_.period(index, steps);
        empty += steps;
        if (!spend(steps) || empty > emptySteps)
            return false;
    } while (period_.dates.size() == 0);
    position_ = forward ? 0 : period_.dates.size();
    return true;
}

bool OccurrenceIterator::spend(qint64 steps) {
    stepsLeft_ -= steps;
    return stepsLeft_ > 0;
}

bool OccurrenceIterator::isBeforeStart(const LocalTime& candidate) const {
    return candidate < start_ || (meaning_ == Start::isDate && candidate == start_);
}

bool OccurrenceIterator::isPastEnd(const LocalTime& candidate) const {
    if (!rule_.until)
        return false;
    const LocalTime& end = rule_.until->time;
    switch (rule_.until->form) {
    case UntilForm::date:
        return candidate.day > end.day;
    case UntilForm::local:
        return kind_ == DateKind::day ? candidate.day > end.day : end < candidate;
    case UntilForm::utc:
        break;
    }
    const qint64 days = untilLocal_->day.daysTo(candidate.day);
    if (kind_ == DateKind::day || std::abs(days) > 2)
        return days > 0;
    return zone_.instantAt(candidate.day, candidate.time) > TimeZone().instantAt(end.day, end.time);
}

/// Whether the pattern of the rule has this date, its end aside.
bool OccurrenceIterator::gives(const LocalTime& time) {
    if (meaning_ == Start::isDate && time == start_)
        return true;
    if (isBeforeStart(time) || periods_.isImpossible())
        return false;
    qint64 steps = 0;
    const qint64 index = periods_.indexOf(time);
    const bool result =
        periods_.period(index, steps).dates.contains(time) ||
        (periods_.reachesIntoNext() && index > 0 && periods_.period(index - 1, steps).dates.contains(time));
    (void)spend(steps);
    return result;
}

/// Whether the clocks skip this time and the rule has another date at the moment that is meant.
bool OccurrenceIterator::coincidesAfterGap(const LocalTime& candidate) {
    const LocalTime shown = localTimeAt(zone_.instantAt(candidate.day, candidate.time), zone_);
    return !(shown == candidate) && gives(kind_ == DateKind::day ? LocalTime{shown.day} : shown);
}

bool OccurrenceIterator::contains(const LocalTime& time) {
    endByCount();
    return gives(time) && !isPastEnd(time) && !coincidesAfterGap(time);
}

/// Where the rule has a COUNT, gives it the end that this means.
void OccurrenceIterator::endByCount() {
    if (!rule_.count)
        return;
    const qint64 stepsOfWalk = std::exchange(stepsLeft_, countingSteps);
    const auto last = lastByCount();
    stepsLeft_ = stepsOfWalk;
    rule_.count.reset();
    if (last && !isPastEnd(*last))
        rule_.until = {*last, UntilForm::local};
}

std::optional<LocalTime> OccurrenceIterator::lastByCount() {
    if (!rule_.count)
        return std::nullopt;
    if (meaning_ == Start::isDate && *rule_.count == 1)
        return start_;
    if (periods_.reachesIntoNext()) {
        // A date that two periods have counts once.
        OccurrenceIterator dates = *this;
        std::optional<LocalTime> latest;
        while (const auto date = dates.next())
            latest = date;
        stepsLeft_ = dates.stepsLeft_;
        return ranOut() ? std::nullopt : latest;
    }
    auto last = nthAfterStart(*rule_.count - (meaning_ == Start::isDate ? 1 : 0));
    qint64 uncounted = last ? coincidencesUntil(*last) : 0;
    if (uncounted == 0)
        return ranOut() ? std::nullopt : last;
    OccurrenceIterator rest = *this;
    rest.rule_.count.reset();
    rest.skipTo(*last);
    for (auto date = rest.next(); date && uncounted > 0; date = rest.next()) {
        if (*last < *date) {
            last = date;
            --uncounted;
        }
    }
    stepsLeft_ = rest.stepsLeft_;
    return ranOut() ? std::nullopt : last;
}

/// The date that comes `count` dates after the start, by the pattern alone. A period is counted as a whole,
/// and so is a day where every time on it has equally many dates.
std::optional<LocalTime> OccurrenceIterator::nthAfterStart(qint64 count) {
    const auto perTime = static_cast<qint64>(periods_.datesPerTime());
    qint64 looked = 0;
    qint64 index = 0;
    while (looked <= emptySteps && !periods_.isImpossible()) {
        const QDate first = periods_.firstDayOf(index);
        if (!first.isValid())
            break;
        const qint64 dayEnd = perTime > 0 ? periods_.periodsBefore(first.addDays(1)) : 0;
        const qint64 inDay = (dayEnd - index) * perTime;
        if (index > 0 && perTime > 0 && inDay < count && periods_.fits(first)) {
            count -= inDay;
            index = dayEnd;
            looked = 0;
            if (!spend(1))
                break;
            continue;
        }
        qint64 steps = 0;
        const RulePeriods::Period period = periods_.period(index, steps);
        if (!spend(steps))
            break;
        std::size_t from = 0;
        while (from < period.dates.size() && isBeforeStart(period.dates.at(from)))
            ++from;
        const auto dates = static_cast<qint64>(period.dates.size() - from);
        if (dates >= count)
            return period.dates.at(from + static_cast<std::size_t>(count) - 1);
        count -= dates;
        looked = dates > 0 ? 0 : looked + steps;
        index = period.next;
    }
    return std::nullopt;
}

/// How many dates up to `last` coincide with others because the clocks were set forward.
qint64 OccurrenceIterator::coincidencesUntil(const LocalTime& last) {
    constexpr int span = 7;
    qint64 result = 0;
    const int lastYear = std::min(last.day.year(), lastYearOfClocks);
    for (QDate day = start_.day; day <= last.day && day.year() <= lastYear && spend(1);
         day = day.addDays(span)) {
        if (eveOf(day.addDays(span), zone_) - eveOf(day, zone_) >= std::chrono::days(span))
            continue;
        for (int i = 0; i < span; ++i)
            result += coincidencesOn(day.addDays(i), last);
    }
    return result;
}

/// Those of one day.
qint64 OccurrenceIterator::coincidencesOn(QDate day, const LocalTime& last) {
    Instant before = eveOf(day, zone_);
    Instant after = eveOf(day.addDays(1), zone_);
    if (after - before >= std::chrono::days(1))
        return 0;
    // The moment at which the clocks are set lies between the two.
    const Duration offset = zone_.offsetAt(before);
    while (after - before > std::chrono::seconds(1)) {
        const Instant middle = before + (after - before) / 2;
        (zone_.offsetAt(middle) == offset ? before : after) = middle;
    }
    const LocalTime first = localTimeAt(before, zone_);
    const LocalTime end = std::min(localTimeAt(after, zone_), last);
    qint64 result = 0;
    qint64 index = periods_.indexOf(first);
    while (spend(1)) {
        qint64 steps = 0;
        const RulePeriods::Period period = periods_.period(index, steps);
        for (std::size_t i = period.dates.countBefore(first); i < period.dates.size(); ++i) {
            const LocalTime date = period.dates.at(i);
            if (end < date || !spend(1))
                return result;
            if (!isBeforeStart(date) && coincidesAfterGap(date))
                ++result;
        }
        index = period.next;
        const QDate next = periods_.firstDayOf(index);
        if (!next.isValid() || next > end.day)
            break;
    }
    return result;
}

}  // namespace kestrant::icalendar
