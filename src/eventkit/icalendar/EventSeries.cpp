#include "eventkit/icalendar/EventSeries.h"

#include "eventkit/icalendar/DateValue.h"

#include <QTime>

#include <algorithm>
#include <chrono>
#include <map>
#include <tuple>
#include <utility>

namespace kestrant {
namespace {

using icalendar::EventComponent;
using icalendar::EventItem;
using icalendar::EventTimes;
using icalendar::LocalTime;
using icalendar::OccurrenceIterator;
using icalendar::RecurrenceRule;
using icalendar::RecurrenceWalk;

/// Room for the occurrences that one series has in an answer, on one side of the present.
constexpr std::size_t mostBytes = 2'500'000;
/// No local time lies further from its instant than this, whatever the clocks do.
constexpr Duration clockMargin = std::chrono::hours(48);
/// No date is later.
constexpr Instant lastInstant =
    std::chrono::sys_days(std::chrono::year(9999) / std::chrono::December / 31) + clockMargin;

/// `time` as far from `to` as it was from `from`, by the clock.
LocalTime moved(const LocalTime& time, const LocalTime& from, const LocalTime& to) {
    const qint64 seconds = QTime(0, 0).secsTo(time.time) + from.time.secsTo(to.time);
    const qint64 days = seconds >= 0 ? seconds / 86'400 : -((86'399 - seconds) / 86'400);
    return {time.day.addDays(from.day.daysTo(to.day) + days),
            QTime(0, 0).addSecs(static_cast<int>(seconds - days * 86'400))};
}

/// Whether a change holds rather than another one of the same date.
bool isNewer(const EventComponent& change, const EventComponent& other) {
    return std::tuple(change.sequence, change.stamp) > std::tuple(other.sequence, other.stamp);
}

bool isRepresentable(const LocalTime& time) {
    return time.day.isValid() && time.day.year() >= 1 && time.day.year() <= 9999;
}

}  // namespace

EventSeries::EventSeries(EventItem item, const QString& identifier, const QString& calendarIdentifier,
                         const TimeZone& local)
    : item_(std::move(item))
    , local_(local)
    , length_(icalendar::lengthOf(item_.event.times, local)) {
    item_.event.data.calendarItemIdentifier = identifier;
    item_.event.data.eventIdentifier = identifier;
    item_.event.data.calendarIdentifier = calendarIdentifier;
    const EventComponent& event = item_.event;
    const DateComponents& start = event.times.start;
    set_.start = icalendar::localTimeOf(start);
    set_.kind = start.includesTime() ? icalendar::DateKind::time : icalendar::DateKind::day;
    set_.zone = start.timeZone.value_or(local);
    if (!item_.recurs()) {
        if (!event.isCancelled)
            addSingle(event, set_.start, intervalOf(event.times, local), std::nullopt);
        return;
    }
    for (const DateComponents& date : item_.excludedDates) {
        if (date.includesTime())
            set_.excludedTimes.push_back(icalendar::localTimeIn(start, date, local));
        else
            set_.excludedDays.push_back(date.date());
    }
    addChanges();
    if (!event.isCancelled) {
        addRules();
        addExtraDates();
    }
    set_.sort();
    if (!event.isCancelled)
        addBounds();
}

void EventSeries::addSingle(const EventComponent& component, const LocalTime& time, DateInterval interval,
                            std::optional<std::size_t> change) {
    EKEventData data = component.data;
    data.calendarItemIdentifier = identifier();
    data.eventIdentifier = identifier();
    data.calendarIdentifier = calendarIdentifier();
    data.startDate = interval.start;
    data.endDate = interval.end;
    data.isDetached = component.recurrenceId.has_value();
    if (item_.recurs())
        data.occurrenceDate = instantOf(time);
    else if (component.recurrenceId)
        data.occurrenceDate =
            component.recurrenceId->timeZone.value_or(local_).instantFrom(*component.recurrenceId);
    const std::optional<std::size_t> source = change && component.isForLaterDates ? change : std::nullopt;
    singles_.push_back({std::make_shared<const EKEventData>(std::move(data)), time, change, source});
}

/// What a change stands for is not shown from the rules any more.
void EventSeries::addChanges() {
    std::map<LocalTime, std::size_t> changes;
    std::map<LocalTime, std::size_t> ranges;
    for (std::size_t i = 0; i < item_.changes.size(); ++i) {
        const EventComponent& change = item_.changes[i];
        if (!change.recurrenceId)
            continue;
        auto& known = change.isForLaterDates ? ranges : changes;
        const auto [entry, isFirst] =
            known.emplace(icalendar::localTimeIn(item_.event.times.start, *change.recurrenceId, local_), i);
        if (!isFirst && isNewer(change, item_.changes[entry->second]))
            entry->second = i;
    }
    for (const auto& [time, index] : ranges) {
        ranges_.push_back({time, index});
        // A change of this date alone goes first.
        changes.emplace(time, index);
    }
    for (const auto& [time, index] : changes) {
        const EventComponent& change = item_.changes[index];
        const bool isLeftOut = change.isForLaterDates &&
                               (std::find(set_.excludedTimes.begin(), set_.excludedTimes.end(), time) !=
                                    set_.excludedTimes.end() ||
                                std::find(set_.excludedDays.begin(), set_.excludedDays.end(), time.day) !=
                                    set_.excludedDays.end());
        set_.excludedTimes.push_back(time);
        if (!change.isCancelled && !isLeftOut)
            addSingle(change, time, intervalOf(change.times, local_), index);
    }
}

void EventSeries::addRules() {
    const auto add = [&](const QByteArray& text, OccurrenceIterator::Start meaning,
                         std::vector<RecurrenceRule>& rules) {
        auto rule = RecurrenceRule::parse(text);
        if (!rule)
            return;
        if (rule->count) {
            OccurrenceIterator dates = set_.datesOf(*rule, meaning);
            dates.limitSteps(mostSteps);
            const auto last = dates.lastByCount();
            rule->count.reset();
            if (last && (!rule->until || dates.contains(*last)))
                rule->until = {*last, RecurrenceRule::UntilForm::local};
        }
        rules.push_back(std::move(*rule));
    };
    for (const EKRecurrenceRule& rule : item_.event.data.recurrenceRules)
        add(rule.text.toUtf8(), OccurrenceIterator::Start::isDate, set_.rules);
    if (set_.rules.empty())
        set_.rules.push_back(
            RecurrenceRule{.until = RecurrenceRule::Until{set_.start, RecurrenceRule::UntilForm::local}});
    for (const QByteArray& text : item_.exceptionRules)
        add(text, OccurrenceIterator::Start::isDateIfItFits, set_.exceptionRules);
}

void EventSeries::addExtraDates() {
    for (const EventTimes& given : item_.extraDates) {
        const LocalTime time = icalendar::localTimeIn(item_.event.times.start, given.start, local_);
        const bool hasLength = given.end || given.duration;
        // A date that is given twice is one date, the first one.
        if (lengths_.emplace(time, hasLength ? lengthOf(given, local_) : length_).second)
            set_.extraDates.push_back(time);
    }
}

void EventSeries::addBounds() {
    const EventTimes& times = item_.event.times;
    const auto reach = [this](const LocalTime& date, const DateInterval& interval) {
        const Instant start = instantOf(date);
        reachBack_ = std::max(reachBack_, start - interval.start);
        reachOn_ = std::max(reachOn_, interval.end - start);
    };
    reach(set_.start, intervalOf(times, local_));
    for (const auto& [time, length] : lengths_)
        reach(time, intervalOf(times, time, length, local_));
    for (const Range& range : ranges_)
        reach(range.from, intervalOf(item_.changes[range.change].times, local_));
    if (!ranges_.empty()) {
        reachBack_ += clockMargin;
        reachOn_ += clockMargin;
    }
    recurring_ = Bounds{instantOf(firstTime()) - reachBack_, lastEnd()};
}

std::optional<Instant> EventSeries::lastEnd() const {
    LocalTime last = set_.start;
    for (const RecurrenceRule& rule : set_.rules) {
        if (!rule.until)
            return std::nullopt;
        const bool isExact = rule.until->form == RecurrenceRule::UntilForm::local;
        last = std::max(last, isExact ? rule.until->time : LocalTime{rule.until->time.day.addDays(2)});
    }
    if (!set_.extraDates.empty())
        last = std::max(last, set_.extraDates.back());
    return instantOf(last) + reachOn_;
}

LocalTime EventSeries::firstTime() const {
    return set_.extraDates.empty() ? set_.start : std::min(set_.start, set_.extraDates.front());
}

Instant EventSeries::instantOf(const LocalTime& time) const {
    return intervalOf(item_.event.times, time, {}, local_).start;
}

std::optional<EventSeries::Date> EventSeries::placed(const LocalTime& time) const {
    const EventTimes& times = item_.event.times;
    auto range =
        std::upper_bound(ranges_.begin(), ranges_.end(), time,
                         [](const LocalTime& value, const Range& each) { return value < each.from; });
    if (range != ranges_.begin()) {
        --range;
        const EventComponent& change = item_.changes[range->change];
        // The distance is one on the series' own clock, whatever zone the change is written in.
        const bool isOnOneClock = times.start.includesTime() && change.times.start.includesTime();
        const EventTimes& form = isOnOneClock ? times : change.times;
        const LocalTime start =
            moved(time, range->from, icalendar::localTimeIn(form.start, change.times.start, local_));
        if (change.isCancelled || !isRepresentable(start))
            return std::nullopt;
        return Date{time, intervalOf(form, start, lengthOf(change.times, local_), local_), range->change};
    }
    const auto length = lengths_.find(time);
    return Date{time, intervalOf(times, time, length == lengths_.end() ? length_ : length->second, local_),
                std::nullopt};
}

std::size_t EventSeries::mostOccurrences() const {
    std::size_t each = sizeof(EKEventData);
    const auto add = [&](const EKEventData& data) {
        each = std::max(each, sizeof(EKEventData) + data.alarms.size() * sizeof(EKAlarm) +
                                  data.recurrenceRules.size() * sizeof(EKRecurrenceRule));
    };
    add(item_.event.data);
    for (const Range& range : ranges_)
        add(item_.changes[range.change].data);
    return std::max<std::size_t>(mostBytes / each, 1);
}

std::shared_ptr<const EKEventData> EventSeries::dataOf(const Date& date) const {
    EKEventData data = date.source ? item_.changes[*date.source].data : item_.event.data;
    data.calendarItemIdentifier = identifier();
    data.eventIdentifier = identifier();
    data.calendarIdentifier = calendarIdentifier();
    data.startDate = date.interval.start;
    data.endDate = date.interval.end;
    data.occurrenceDate = instantOf(date.time);
    return std::make_shared<const EKEventData>(std::move(data));
}

EventSeries::Occurrence EventSeries::occurrenceOn(const Date& date) const {
    return {dataOf(date), date.time, std::nullopt, date.source};
}

EventSeries::Cost EventSeries::forEachRecurring(const Span& span,
                                                const std::function<bool(const Date&)>& visit,
                                                qint64 steps) const {
    Cost cost;
    if (!recurring_ || span.to < recurring_->start || (recurring_->end && span.from > *recurring_->end))
        return cost;
    const auto dayOf = [this](Instant instant) {
        return set_.zone.dayOf(std::clamp(instant, recurring_->start, lastInstant));
    };
    const Instant now = std::clamp(span.now, recurring_->start, lastInstant);
    const LocalTime present{set_.zone.dayOf(now), set_.zone.timeOf(now)};
    const QDate first = dayOf(span.from - reachOn_ - clockMargin);
    const QDate last = dayOf(std::min(span.to, lastInstant) + reachBack_ + clockMargin);
    const std::size_t most = mostOccurrences();
    for (const auto way : {RecurrenceWalk::Way::forward, RecurrenceWalk::Way::back}) {
        if (way == RecurrenceWalk::Way::forward ? last < present.day : first > present.day)
            continue;
        RecurrenceWalk walk(set_, way, present, first, last, steps);
        std::size_t dates = 0;
        for (auto time = walk.next(); time; time = walk.next()) {
            const auto date = placed(*time);
            if (!date)
                continue;
            const auto& [start, end] = date->interval;
            const bool isBeyond = way == RecurrenceWalk::Way::forward ? start > span.to : end < span.from;
            if (!isBeyond && dates++ == most) {
                cost.isExceeded = true;
                break;
            }
            if (start <= span.to && end >= span.from && !visit(*date))
                break;
        }
        cost.isExceeded = cost.isExceeded || walk.ranOut();
        cost.steps += walk.steps();
    }
    return cost;
}

std::optional<EventSeries::Occurrence>
EventSeries::occurrence(const std::optional<Instant>& occurrenceDate) const {
    for (const Occurrence& single : singles_) {
        if (single.data->occurrenceDate == occurrenceDate)
            return single;
    }
    if (!occurrenceDate || !recurring_ || *occurrenceDate > lastInstant)
        return std::nullopt;
    const auto timeAt = [&](Instant instant) {
        return LocalTime{set_.zone.dayOf(instant), set_.zone.timeOf(instant)};
    };
    // Besides the time that the clocks show then, the one that they would show had they not been set forward.
    const Instant before = *occurrenceDate - std::chrono::hours(25);
    LocalTime unset = timeAt(before);
    unset = moved(unset, {unset.day}, {unset.day.addDays(1), QTime(1, 0)});
    for (LocalTime time : {timeAt(*occurrenceDate), unset}) {
        if (set_.kind == icalendar::DateKind::day)
            time.time = QTime(0, 0);
        if (!isRepresentable(time) || instantOf(time) != *occurrenceDate || !set_.contains(time))
            continue;
        if (const auto date = placed(time))
            return occurrenceOn(*date);
    }
    return std::nullopt;
}

std::optional<EventSeries::Occurrence> EventSeries::first() const {
    std::optional<Occurrence> result;
    for (const Occurrence& single : singles_) {
        if (!result || single.data->startDate < result->data->startDate)
            result = single;
    }
    if (!recurring_)
        return result;
    RecurrenceWalk walk(set_, RecurrenceWalk::Way::forward, firstTime(), {}, {}, mostSteps);
    for (auto time = walk.next(); time; time = walk.next()) {
        if (const auto date = placed(*time)) {
            if (!result || date->interval.start < result->data->startDate)
                result = occurrenceOn(*date);
            break;
        }
    }
    return result;
}

}  // namespace kestrant
