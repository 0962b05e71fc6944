#include "eventkit/recurrence/RecurrenceSet.h"

#include <algorithm>
#include <iterator>

namespace kestrant::icalendar {
namespace {

template <typename Value>
void sortUnique(std::vector<Value>& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

template <typename Value>
bool holds(const std::vector<Value>& sorted, const Value& value) {
    return std::binary_search(sorted.begin(), sorted.end(), value);
}

bool contain(std::vector<OccurrenceIterator>& rules, const LocalTime& time) {
    return std::any_of(rules.begin(), rules.end(),
                       [&](OccurrenceIterator& rule) { return rule.contains(time); });
}

}  // namespace

void RecurrenceSet::sort() {
    sortUnique(extraDates);
    sortUnique(excludedTimes);
    sortUnique(excludedDays);
}

OccurrenceIterator RecurrenceSet::datesOf(const RecurrenceRule& rule,
                                          OccurrenceIterator::Start meaning) const {
    return {rule, start, kind, zone, meaning};
}

std::vector<OccurrenceIterator> RecurrenceSet::exceptions() const {
    std::vector<OccurrenceIterator> result;
    for (const RecurrenceRule& rule : exceptionRules)
        result.push_back(datesOf(rule, OccurrenceIterator::Start::isDateIfItFits));
    return result;
}

LocalTime RecurrenceSet::shownTime(const LocalTime& time) const {
    if (kind == DateKind::day)
        return time;
    const Instant instant = zone.instantAt(time.day, time.time);
    return {zone.dayOf(instant), zone.timeOf(instant)};
}

bool RecurrenceSet::isGiven(const LocalTime& time) const {
    return holds(extraDates, time) ||
           std::any_of(rules.begin(), rules.end(),
                       [&](const RecurrenceRule& rule) { return datesOf(rule).contains(time); });
}

bool RecurrenceSet::isListedAsExcluded(const LocalTime& time) const {
    const auto isListed = [this](const LocalTime& each) {
        return holds(excludedTimes, each) || holds(excludedDays, each.day);
    };
    // What leaves out a time that the clocks skip may name the moment that is meant.
    return isListed(time) || (!excludedTimes.empty() && isListed(shownTime(time)));
}

bool RecurrenceSet::contains(const LocalTime& time) const {
    if (!isGiven(time) || isListedAsExcluded(time))
        return false;
    std::vector<OccurrenceIterator> excluded = exceptions();
    return !contain(excluded, time);
}

RecurrenceWalk::RecurrenceWalk(const RecurrenceSet& set, Way way, const LocalTime& from, QDate first,
                               QDate last, qint64 steps)
    : set_(set)
    , way_(way)
    , steps_(steps)
    , exceptions_(set.exceptions())
    , passed_(set.rules.size())
    , first_(first)
    , last_(last) {
    for (const RecurrenceRule& rule : set.rules) {
        OccurrenceIterator& dates = rules_.emplace_back(set.datesOf(rule));
        dates.limitSteps(std::max<qint64>(steps / std::ssize(set.rules), 1));
        dates.skipTo(from);
        dates.endWith(first, last);
    }
    extra_ = std::lower_bound(set.extraDates.begin(), set.extraDates.end(), from) - set.extraDates.begin();
    for (OccurrenceIterator& dates : rules_)
        heads_.push_back(advanced(dates));
}

std::optional<LocalTime> RecurrenceWalk::next() {
    while (true) {
        if (present_)
            pass(*present_);
        present_ = nearest();
        comparisons_ += std::ssize(rules_) + std::ssize(exceptions_);
        if (!present_ || comparisons_ > steps_)
            return std::nullopt;
        // A rule takes care of what coincides with its own dates where the clocks skip a time.
        const bool mayCoincide = rules_.size() > 1 || !set_.extraDates.empty();
        const LocalTime shown = mayCoincide ? set_.shownTime(*present_) : *present_;
        if ((shown == *present_ || !set_.isGiven(shown)) && !isLeftOut(*present_))
            return present_;
    }
}

bool RecurrenceWalk::isByRule() const {
    return std::find(heads_.begin(), heads_.end(), present_) != heads_.end();
}

void RecurrenceWalk::pass(const LocalTime& date) {
    for (std::size_t i = 0; i < heads_.size(); ++i) {
        if (heads_[i] == date) {
            heads_[i] = advanced(rules_[i]);
            ++passed_[i];
        }
    }
    if (extra() == date)
        extra_ += way_ == Way::forward ? 1 : -1;
}

qint64 RecurrenceWalk::steps() const {
    qint64 left = 0;
    for (const OccurrenceIterator& dates : rules_)
        left += std::max<qint64>(dates.stepsLeft(), 0);
    return steps_ - left;
}

bool RecurrenceWalk::ranOut() const {
    return comparisons_ > steps_ ||
           std::any_of(rules_.begin(), rules_.end(), [](const auto& dates) { return dates.ranOut(); });
}

bool RecurrenceWalk::isLeftOut(const LocalTime& date) {
    return set_.isListedAsExcluded(date) || contain(exceptions_, date);
}

std::optional<LocalTime> RecurrenceWalk::advanced(OccurrenceIterator& dates) const {
    return way_ == Way::forward ? dates.next() : dates.previous();
}

/// The next extra date; absent where there is none.
std::optional<LocalTime> RecurrenceWalk::extra() const {
    const std::ptrdiff_t index = way_ == Way::forward ? extra_ : extra_ - 1;
    if (index < 0 || index >= std::ssize(set_.extraDates))
        return std::nullopt;
    const LocalTime& result = set_.extraDates[static_cast<std::size_t>(index)];
    const bool isWithin = way_ == Way::forward ? !last_.isValid() || result.day <= last_
                                               : !first_.isValid() || result.day >= first_;
    return isWithin ? std::optional(result) : std::nullopt;
}

std::optional<LocalTime> RecurrenceWalk::nearest() const {
    std::optional<LocalTime> result = extra();
    for (const auto& head : heads_) {
        if (head && (!result || (way_ == Way::forward ? *head < *result : *result < *head)))
            result = head;
    }
    return result;
}

}  // namespace kestrant::icalendar
