#include "eventkit/icalendar/EventSeries.h"

#include "eventkit/icalendar/DateValue.h"
#include "eventkit/icalendar/EventSeriesWalk.h"

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

/// Room for the occurrences that one series has in an answer, on one side of the present.
constexpr std::size_t mostBytes = 2'500'000;
/// No local time lies further from its instant than this, whatever the clocks do.
constexpr Duration clockMargin = std::chrono::hours(48);
/// No date is later.
constexpr Instant lastInstant =
    std::chrono::sys_days(std::chrono::year(9999) / std::chrono::December / 31) + clockMargin;

template <typename Value>
void sortUnique(std::vector<Value>& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

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
    , length_(icalendar::lengthOf(item_.event.times, local))
    , zone_(item_.event.times.start.timeZone.value_or(local)) {
    item_.event.data.calendarItemIdentifier = identifier;
    item_.event.data.eventIdentifier = identifier;
    item_.event.data.calendarIdentifier = calendarIdentifier;
    const EventComponent& event = item_.event;
    if (!item_.recurs()) {
        if (!event.isCancelled)
            addSingle(event, icalendar::localTimeOf(event.times.start), intervalOf(event.times, local),
                      std::nullopt);
        return;
    }
    for (const DateComponents& date : item_.excludedDates) {
        if (date.includesTime())
            excludedTimes_.push_back(icalendar::localTimeIn(event.times.start, date, local));
        else
            excludedDays_.push_back(date.date());
    }
    addChanges();
    sortUnique(excludedTimes_);
    sortUnique(excludedDays_);
    if (event.isCancelled)
        return;
    addRules();
    addExtraDates();
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
        const bool isLeftOut =
            change.isForLaterDates &&
            (std::find(excludedTimes_.begin(), excludedTimes_.end(), time) != excludedTimes_.end() ||
             std::find(excludedDays_.begin(), excludedDays_.end(), time.day) != excludedDays_.end());
        excludedTimes_.push_back(time);
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
            OccurrenceIterator dates = datesOf(*rule, meaning);
            dates.limitSteps(mostSteps);
            const auto last = dates.lastByCount();
            rule->count.reset();
            if (last && (!rule->until || dates.contains(*last)))
                rule->until = {*last, RecurrenceRule::UntilForm::local};
        }
        rules.push_back(std::move(*rule));
    };
    for (const EKRecurrenceRule& rule : item_.event.data.recurrenceRules)
        add(rule.text.toUtf8(), OccurrenceIterator::Start::isDate, rules_);
    if (rules_.empty()) {
        const LocalTime start = icalendar::localTimeOf(item_.event.times.start);
        rules_.push_back(
            RecurrenceRule{.until = RecurrenceRule::Until{start, RecurrenceRule::UntilForm::local}});
    }
    for (const QByteArray& text : item_.exceptionRules)
        add(text, OccurrenceIterator::Start::isDateIfItFits, exceptionRules_);
}

void EventSeries::addExtraDates() {
    const EventTimes& times = item_.event.times;
    for (std::size_t i = 0; i < item_.extraDates.size(); ++i)
        extras_.push_back({icalendar::localTimeIn(times.start, item_.extraDates[i].start, local_), i});
    std::stable_sort(extras_.begin(), extras_.end());
    // A date that is given twice is one date.
    extras_.erase(std::unique(extras_.begin(), extras_.end(),
                              [](const Extra& a, const Extra& b) { return a.time == b.time; }),
                  extras_.end());
}

void EventSeries::addBounds() {
    const EventTimes& times = item_.event.times;
    const auto reach = [this](const LocalTime& date, const DateInterval& interval) {
        const Instant start = instantOf(date);
        reachBack_ = std::max(reachBack_, start - interval.start);
        reachOn_ = std::max(reachOn_, interval.end - start);
    };
    const LocalTime start = icalendar::localTimeOf(times.start);
    reach(start, intervalOf(times, local_));
    for (const Extra& extra : extras_) {
        const EventTimes& given = item_.extraDates[extra.index];
        if (given.end || given.duration)
            reach(extra.time, intervalOf(times, extra.time, lengthOf(given, local_), local_));
    }
    for (const Range& range : ranges_)
        reach(range.from, intervalOf(item_.changes[range.change].times, local_));
    if (!ranges_.empty()) {
        reachBack_ += clockMargin;
        reachOn_ += clockMargin;
    }
    const LocalTime first = extras_.empty() ? start : std::min(start, extras_.front().time);
    recurring_ = Bounds{instantOf(first) - reachBack_, lastEnd()};
}

std::optional<Instant> EventSeries::lastEnd() const {
    LocalTime last = icalendar::localTimeOf(item_.event.times.start);
    for (const RecurrenceRule& rule : rules_) {
        if (!rule.until)
            return std::nullopt;
        const bool isExact = rule.until->form == RecurrenceRule::UntilForm::local;
        last = std::max(last, isExact ? rule.until->time : LocalTime{rule.until->time.day.addDays(2)});
    }
    if (!extras_.empty())
        last = std::max(last, extras_.back().time);
    return instantOf(last) + reachOn_;
}

bool EventSeries::isListedAsExcluded(const LocalTime& time) const {
    const auto isListed = [this](const LocalTime& each) {
        return std::binary_search(excludedTimes_.begin(), excludedTimes_.end(), each) ||
               std::binary_search(excludedDays_.begin(), excludedDays_.end(), each.day);
    };
    // What leaves out a time that the clocks skip may name the moment that is meant.
    return isListed(time) || (!excludedTimes_.empty() && isListed(shownTime(time)));
}

OccurrenceIterator EventSeries::datesOf(const RecurrenceRule& rule, OccurrenceIterator::Start meaning) const {
    const DateComponents& start = item_.event.times.start;
    const auto kind = start.includesTime() ? icalendar::DateKind::time : icalendar::DateKind::day;
    return {rule, icalendar::localTimeOf(start), kind, zone_, meaning};
}

std::vector<OccurrenceIterator> EventSeries::exceptions() const {
    std::vector<OccurrenceIterator> result;
    for (const RecurrenceRule& rule : exceptionRules_)
        result.push_back(datesOf(rule, OccurrenceIterator::Start::isDateIfItFits));
    return result;
}

const EventSeries::Extra* EventSeries::extraAt(const LocalTime& time) const {
    const auto found = std::lower_bound(extras_.begin(), extras_.end(), Extra{time, 0});
    return found != extras_.end() && found->time == time ? &*found : nullptr;
}

/// Whether a rule or an extra date gives this date.
bool EventSeries::isGiven(const LocalTime& time) const {
    return extraAt(time) || std::any_of(rules_.begin(), rules_.end(), [&](const RecurrenceRule& rule) {
               return datesOf(rule).contains(time);
           });
}

Instant EventSeries::instantOf(const LocalTime& time) const {
    return intervalOf(item_.event.times, time, {}, local_).start;
}

/// The time that the clocks show at the moment that is meant.
LocalTime EventSeries::shownTime(const LocalTime& time) const {
    const Instant instant = instantOf(time);
    if (!item_.event.times.start.includesTime())
        return {zone_.dayOf(instant)};
    return {zone_.dayOf(instant), zone_.timeOf(instant)};
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
    const Extra* extra = extras_.empty() ? nullptr : extraAt(time);
    const EventTimes* given = extra ? &item_.extraDates[extra->index] : nullptr;
    const bool hasLength = given && (given->end || given->duration);
    return Date{time, intervalOf(times, time, hasLength ? lengthOf(*given, local_) : length_, local_),
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
        return zone_.dayOf(std::clamp(instant, recurring_->start, lastInstant));
    };
    const Instant now = std::clamp(span.now, recurring_->start, lastInstant);
    const LocalTime present{zone_.dayOf(now), zone_.timeOf(now)};
    const QDate first = dayOf(span.from - reachOn_ - clockMargin);
    const QDate last = dayOf(std::min(span.to, lastInstant) + reachBack_ + clockMargin);
    const std::size_t most = mostOccurrences();
    for (const auto way : {Walk::Way::forward, Walk::Way::back}) {
        if (way == Walk::Way::forward ? last < present.day : first > present.day)
            continue;
        Walk walk(*this, way, present, first, last, steps);
        std::size_t dates = 0;
        for (auto time = walk.next(); time; time = walk.next()) {
            const auto date = placed(*time);
            if (!date)
                continue;
            const auto& [start, end] = date->interval;
            const bool isBeyond = way == Walk::Way::forward ? start > span.to : end < span.from;
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
        return LocalTime{zone_.dayOf(instant), zone_.timeOf(instant)};
    };
    // Besides the time that the clocks show then, the one that they would show had they not been set forward.
    const Instant before = *occurrenceDate - std::chrono::hours(25);
    LocalTime unset = timeAt(before);
    unset = moved(unset, {unset.day}, {unset.day.addDays(1), QTime(1, 0)});
    for (LocalTime time : {timeAt(*occurrenceDate), unset}) {
        if (!item_.event.times.start.includesTime())
            time.time = QTime(0, 0);
        if (!isRepresentable(time) || instantOf(time) != *occurrenceDate || !isGiven(time) ||
            isListedAsExcluded(time))
            continue;
        std::vector<OccurrenceIterator> rules = exceptions();
        if (std::any_of(rules.begin(), rules.end(),
                        [&](OccurrenceIterator& rule) { return rule.contains(time); }))
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
    LocalTime start = icalendar::localTimeOf(item_.event.times.start);
    if (!extras_.empty())
        start = std::min(start, extras_.front().time);
    Walk walk(*this, Walk::Way::forward, start, {}, {}, mostSteps);
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
