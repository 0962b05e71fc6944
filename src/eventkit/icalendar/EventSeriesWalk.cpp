#include "eventkit/icalendar/EventSeriesWalk.h"

#include <algorithm>
#include <iterator>

namespace kestrant {

using icalendar::LocalTime;
using icalendar::OccurrenceIterator;
using icalendar::RecurrenceRule;

EventSeries::Walk::Walk(const EventSeries& series, Way way, const LocalTime& from, QDate first, QDate last,
                        qint64 steps)
    : series_(series)
    , way_(way)
    , steps_(steps)
    , exceptions_(series.exceptions())
    , first_(first)
    , last_(last) {
    for (const RecurrenceRule& rule : series.rules_) {
        OccurrenceIterator& dates = rules_.emplace_back(series.datesOf(rule));
        dates.limitSteps(std::max<qint64>(steps / std::ssize(series.rules_), 1));
        dates.skipTo(from);
        dates.endWith(first, last);
    }
    const auto& extras = series.extras_;
    extra_ = std::lower_bound(extras.begin(), extras.end(), Extra{from, 0}) - extras.begin();
    for (OccurrenceIterator& dates : rules_)
        heads_.push_back(advanced(dates));
}

std::optional<LocalTime> EventSeries::Walk::next() {
    while (const auto date = nearest()) {
        comparisons_ += std::ssize(rules_) + std::ssize(exceptions_);
        if (comparisons_ > steps_)
            break;
        for (std::size_t i = 0; i < heads_.size(); ++i) {
            if (heads_[i] == date)
                heads_[i] = advanced(rules_[i]);
        }
        if (extra() && extra()->time == date)
            extra_ += way_ == Way::forward ? 1 : -1;
        // A rule takes care of what coincides with its own dates where the clocks skip a time.
        const bool mayCoincide = rules_.size() > 1 || !series_.extras_.empty();
        const LocalTime shown = mayCoincide ? series_.shownTime(*date) : *date;
        if ((shown == *date || !series_.isGiven(shown)) && !isLeftOut(*date))
            return date;
    }
    return std::nullopt;
}

qint64 EventSeries::Walk::steps() const {
    qint64 left = 0;
    for (const OccurrenceIterator& dates : rules_)
        left += std::max<qint64>(dates.stepsLeft(), 0);
    return steps_ - left;
}

bool EventSeries::Walk::ranOut() const {
    return comparisons_ > steps_ ||
           std::any_of(rules_.begin(), rules_.end(), [](const auto& dates) { return dates.ranOut(); });
}

bool EventSeries::Walk::isLeftOut(const LocalTime& date) {
    return series_.isListedAsExcluded(date) ||
           std::any_of(exceptions_.begin(), exceptions_.end(),
                       [&](OccurrenceIterator& rule) { return rule.contains(date); });
}

std::optional<LocalTime> EventSeries::Walk::advanced(OccurrenceIterator& dates) const {
    return way_ == Way::forward ? dates.next() : dates.previous();
}

const EventSeries::Extra* EventSeries::Walk::extra() const {
    const auto& extras = series_.extras_;
    const std::ptrdiff_t index = way_ == Way::forward ? extra_ : extra_ - 1;
    if (index < 0 || index >= std::ssize(extras))
        return nullptr;
    const Extra& result = extras[static_cast<std::size_t>(index)];
    const bool isWithin = way_ == Way::forward ? !last_.isValid() || result.time.day <= last_
                                               : !first_.isValid() || result.time.day >= first_;
    return isWithin ? &result : nullptr;
}

std::optional<LocalTime> EventSeries::Walk::nearest() const {
    std::optional<LocalTime> result;
    const auto consider = [&](const LocalTime& date) {
        if (!result || (way_ == Way::forward ? date < *result : *result < date))
            result = date;
    };
    for (const auto& head : heads_) {
        if (head)
            consider(*head);
    }
    if (const Extra* given = extra())
        consider(given->time);
    return result;
}

}  // namespace kestrant
