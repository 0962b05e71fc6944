#include "eventkit/items/CompactEvent.h"

#include <utility>

namespace kestrant::items {

using icalendar::EventItem;

namespace {

/// Whether a date means days, or the same moment wherever one is.
bool isPlaced(const DateComponents& date) {
    return !date.includesTime() || date.timeZone;
}

/// Whether one occurrence says everything about the event.
bool isOneOccurrence(const EventItem& item) {
    return !item.recurs() && item.changes.empty() && !item.event.isCancelled && !item.event.recurrenceId &&
           isPlaced(item.event.times.start) && (!item.event.times.end || isPlaced(*item.event.times.end));
}

}  // namespace

CompactEvent::CompactEvent(EventItem item, const QString& identifier, const QString& calendarIdentifier,
                           const TimeZone& local) {
    if (!isOneOccurrence(item)) {
        series_ = std::make_shared<const EventSeries>(std::move(item), identifier, calendarIdentifier, local);
        return;
    }
    const DateInterval interval = icalendar::intervalOf(item.event.times, local);
    EKEventData data = std::move(item.event.data);
    data.calendarItemIdentifier = identifier;
    data.eventIdentifier = identifier;
    data.calendarIdentifier = calendarIdentifier;
    data.startDate = interval.start;
    data.endDate = interval.end;
    only_ = std::make_shared<const EKEventData>(std::move(data));
}

const QString& CompactEvent::identifier() const {
    return only_ ? only_->calendarItemIdentifier : series_->identifier();
}

const QString& CompactEvent::calendarIdentifier() const {
    return only_ ? only_->calendarIdentifier : series_->calendarIdentifier();
}

CompactEvent CompactEvent::called(const QString& identifier, const TimeZone& local) const {
    if (series_)
        return {series_->item(), identifier, series_->calendarIdentifier(), local};
    EKEventData data = *only_;
    data.calendarItemIdentifier = identifier;
    data.eventIdentifier = identifier;
    CompactEvent result;
    result.only_ = std::make_shared<const EKEventData>(std::move(data));
    return result;
}

CompactEvent CompactEvent::placedIn(const TimeZone& after, const TimeZone& before) const {
    if (series_)
        return {series_->item(), series_->identifier(), series_->calendarIdentifier(), after};
    if (!only_->isAllDay)
        return *this;
    EKEventData data = *only_;
    data.startDate = after.startOfDay(before.dayOf(data.startDate));
    data.endDate = after.startOfDay(before.dayOf(data.endDate));
    CompactEvent result;
    result.only_ = std::make_shared<const EKEventData>(std::move(data));
    return result;
}

bool CompactEvent::isSame(const CompactEvent& other) const {
    if (series_ && other.series_)
        return series_->item() == other.series_->item();
    return only_ && other.only_ && *only_ == *other.only_;
}

std::shared_ptr<const EKEventData>
CompactEvent::occurrence(const std::optional<Instant>& occurrenceDate) const {
    if (only_)
        return occurrenceDate ? nullptr : only_;
    auto found = series_->occurrence(occurrenceDate);
    return found ? std::move(found->data) : nullptr;
}

std::shared_ptr<const EKEventData> CompactEvent::first() const {
    if (only_)
        return only_;
    auto found = series_->first();
    return found ? std::move(found->data) : nullptr;
}

}  // namespace kestrant::items
