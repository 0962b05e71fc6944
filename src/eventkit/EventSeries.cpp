#include "eventkit/EventSeries.h"

#include "eventkit/icalendar/Occurrences.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using icalendar::DateKind;
using icalendar::EventComponent;
using icalendar::EventItem;
using icalendar::EventLength;
using icalendar::EventTimes;
using icalendar::LocalTime;
using icalendar::Occurrences;
using icalendar::RecurrenceRule;

constexpr std::size_t mostInOneSpan = 20'000;
/// The last date of a rule with a larger COUNT is not looked for.
constexpr int mostCounted = 10'000;
/// No local time lies further from its instant than this, whatever the clocks do.
constexpr Duration clockMargin = std::chrono::hours(48);
/// No date is later.
constexpr Instant lastInstant =
    std::chrono::sys_days(std::chrono::year(9999) / std::chrono::December / 31) + clockMargin;

DateKind kindOf(const EventTimes& times) {
    return times.start.includesTime() ? DateKind::time : DateKind::day;
}

template <typename Value>
void sortUnique(std::vector<Value>& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

}  // namespace

EventSeries::EventSeries(EventItem item, const QString& identifier, const QString& calendarIdentifier,
                         const ZoneCalendar& local)
    : item_(std::move(item))
    , local_(local)
    , length_(icalendar::lengthOf(item_.event.times, local))
    , zone_(icalendar::calendarOf(item_.event.times.start, local)) {
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
    addRules(event.data.recurrenceRules);
    addExtraDates();
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
            icalendar::calendarOf(*component.recurrenceId, local_).instantFrom(*component.recurrenceId);
    singles_.push_back({std::make_shared<const EKEventData>(std::move(data)), time, change});
}

/// What a change stands for is not shown from the rules any more.
void EventSeries::addChanges() {
    for (std::size_t i = 0; i < item_.changes.size(); ++i) {
        const EventComponent& change = item_.changes[i];
        if (!change.recurrenceId)
            continue;
        const LocalTime time = icalendar::localTimeIn(item_.event.times.start, *change.recurrenceId, local_);
        excludedTimes_.push_back(time);
        if (!change.isCancelled)
            addSingle(change, time, intervalOf(change.times, local_), i);
    }
}

void EventSeries::addRules(const std::vector<EKRecurrenceRule>& rules) {
    for (const EKRecurrenceRule& rule : rules) {
        if (auto parsed = RecurrenceRule::parse(rule.text.toUtf8()))
            rules_.push_back(std::move(*parsed));
    }
    if (rules_.empty())
        rules_.push_back(RecurrenceRule{.count = 1});
    ruled_ = Bounds{instantOf(icalendar::localTimeOf(item_.event.times.start)), lastEnd()};
}

void EventSeries::addExtraDates() {
    const EventTimes& times = item_.event.times;
    for (const EventTimes& extra : item_.extraDates) {
        const LocalTime time = icalendar::localTimeIn(times.start, extra.start, local_);
        const auto isThis = [&](const LocalTime& other) { return other == time; };
        if (isExcluded(time) || !ruledTimes(time, time.day, 1, isThis).empty())
            continue;
        // A date that is given twice is one date.
        excludedTimes_.insert(std::upper_bound(excludedTimes_.begin(), excludedTimes_.end(), time), time);
        const bool hasLength = extra.end || extra.duration;
        addSingle(item_.event, time,
                  intervalOf(times, time, hasLength ? lengthOf(extra, local_) : length_, local_),
                  std::nullopt);
    }
}

std::optional<Instant> EventSeries::lastEnd() const {
    const EventTimes& times = item_.event.times;
    Instant last = intervalOf(times, local_).end;
    for (const RecurrenceRule& rule : rules_) {
        LocalTime end;
        if (rule.count && *rule.count <= mostCounted) {
            Occurrences dates(rule, icalendar::localTimeOf(times.start), kindOf(times), zone_);
            while (const auto date = dates.next())
                end = *date;
        } else if (rule.until) {
            end = {rule.until->time.day.addDays(2), QTime(0, 0)};
        } else {
            return std::nullopt;
        }
        last = std::max(last, intervalOf(times, end, length_, local_).end);
    }
    return last;
}

bool EventSeries::isExcluded(const LocalTime& time) const {
    return std::binary_search(excludedTimes_.begin(), excludedTimes_.end(), time) ||
           std::binary_search(excludedDays_.begin(), excludedDays_.end(), time.day);
}

Instant EventSeries::instantOf(const LocalTime& time) const {
    return intervalOf(item_.event.times, time, {}, local_).start;
}

DateInterval EventSeries::intervalFrom(const LocalTime& start) const {
    return intervalOf(item_.event.times, start, length_, local_);
}

/// The dates that rules give from `from` to the end of the day `last` and that are wanted, at most so many of
/// each rule. Those that are left out are not among them.
std::vector<LocalTime> EventSeries::ruledTimes(const LocalTime& from, QDate last, std::size_t most,
                                               const std::function<bool(const LocalTime&)>& isWanted) const {
    std::vector<LocalTime> result;
    const EventTimes& times = item_.event.times;
    for (const RecurrenceRule& rule : rules_) {
        Occurrences dates(rule, icalendar::localTimeOf(times.start), kindOf(times), zone_);
        dates.skipTo(from);
        const std::size_t known = result.size();
        for (auto date = dates.next(); date && date->day <= last; date = dates.next()) {
            if (isExcluded(*date) || !isWanted(*date))
                continue;
            result.push_back(*date);
            if (result.size() - known == most)
                break;
        }
    }
    if (rules_.size() > 1)
        sortUnique(result);
    return result;
}

EventSeries::Occurrence EventSeries::ruledOccurrence(const LocalTime& time) const {
    const DateInterval interval = intervalFrom(time);
    EKEventData data = item_.event.data;
    data.startDate = interval.start;
    data.endDate = interval.end;
    data.occurrenceDate = interval.start;
    return {std::make_shared<const EKEventData>(std::move(data)), time, std::nullopt};
}

void EventSeries::forEachRuled(Instant from, Instant to,
                               const std::function<void(std::shared_ptr<const EKEventData>)>& visit) const {
    if (!ruled_ || to < ruled_->start || (ruled_->end && from > *ruled_->end))
        return;
    from = std::max(from, ruled_->start);
    to = std::min(to, lastInstant);
    const Instant start = from - std::chrono::days(length_.days) - length_.exact - clockMargin;
    const auto touches = [&](const LocalTime& time) {
        const DateInterval interval = intervalFrom(time);
        return interval.start <= to && interval.end >= from;
    };
    for (const LocalTime& time :
         ruledTimes({zone_.dayOf(start), QTime(0, 0)}, zone_.dayOf(to + clockMargin), mostInOneSpan, touches))
        visit(ruledOccurrence(time).data);
}

std::optional<EventSeries::Occurrence>
EventSeries::occurrence(const std::optional<Instant>& occurrenceDate) const {
    for (const Occurrence& single : singles_) {
        if (single.data->occurrenceDate == occurrenceDate)
            return single;
    }
    if (!occurrenceDate || !ruled_ || *occurrenceDate > lastInstant || *occurrenceDate < ruled_->start)
        return std::nullopt;
    const auto found = ruledTimes({zone_.dayOf(*occurrenceDate - clockMargin), QTime(0, 0)},
                                  zone_.dayOf(*occurrenceDate + clockMargin), 1,
                                  [&](const LocalTime& time) { return instantOf(time) == *occurrenceDate; });
    return found.empty() ? std::nullopt : std::optional(ruledOccurrence(found.front()));
}

std::optional<EventSeries::Occurrence> EventSeries::first() const {
    std::optional<Occurrence> result;
    for (const Occurrence& single : singles_) {
        if (!result || single.data->startDate < result->data->startDate)
            result = single;
    }
    const auto times = ruledTimes(icalendar::localTimeOf(item_.event.times.start), QDate(9999, 12, 31), 1,
                                  [](const LocalTime&) { return true; });
    if (!times.empty() && (!result || instantOf(times.front()) < result->data->startDate))
        result = ruledOccurrence(times.front());
    return result;
}

}  // namespace kestrant
