#include "eventkit/items/ItemSnapshot.h"

#include "eventkit/EventChanges.h"

#include <algorithm>
#include <utility>

namespace kestrant::items {

std::vector<Snapshot::ShownEvent> Snapshot::eventsMatching(const EKEventPredicate& predicate) const {
    std::vector<ShownEvent> result;
    singleEvents.forEachTouching(predicate.start, predicate.end, [&](const ShownEvent& shown) {
        if (matches(predicate, *shown.data))
            result.push_back(shown);
    });
    ruledEvents.forEachTouching(predicate.start, predicate.end, [&](const RuledEvent& event) {
        if (predicate.calendars &&
            std::find(predicate.calendars->begin(), predicate.calendars->end(),
                      event.series->calendarIdentifier()) == predicate.calendars->end())
            return;
        event.series->forEachRuled(predicate.start, predicate.end,
                                   [&](std::shared_ptr<const EKEventData> data) {
                                       if (matches(predicate, *data))
                                           result.push_back({std::move(data), event.version});
                                   });
    });
    return result;
}

std::optional<Snapshot::ShownEvent> Snapshot::event(const QString& identifier,
                                                    const std::optional<Instant>& occurrenceDate) const {
    const auto entry = events.constFind(identifier);
    auto found = entry == events.cend() ? std::nullopt : entry->series->occurrence(occurrenceDate);
    return found ? std::optional(ShownEvent{std::move(found->data), entry->version}) : std::nullopt;
}

std::optional<Snapshot::ShownEvent> Snapshot::firstEvent(const QString& identifier) const {
    const auto entry = events.constFind(identifier);
    auto found = entry == events.cend() ? std::nullopt : entry->series->first();
    return found ? std::optional(ShownEvent{std::move(found->data), entry->version}) : std::nullopt;
}

std::optional<EKCalendar> Snapshot::calendar(const QString& identifier) const {
    const auto found = std::find_if(calendars.begin(), calendars.end(), [&](const EKCalendar& calendar) {
        return calendar.calendarIdentifier == identifier;
    });
    return found == calendars.end() ? std::nullopt : std::optional(*found);
}

}  // namespace kestrant::items
