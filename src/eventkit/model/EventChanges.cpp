#include "eventkit/model/EventChanges.h"

#include "eventkit/model/EKErrors.h"
#include "eventkit/model/EKEventStore.h"

#include <algorithm>
#include <chrono>
#include <tuple>

namespace kestrant {
namespace {

constexpr Instant firstInstant = std::chrono::sys_days(std::chrono::year(1) / 1 / 2);
constexpr Instant lastInstant = std::chrono::sys_days(std::chrono::year(9999) / 12 / 31);

}  // namespace

Merged<EKEventData> mergeEdits(const EKEventData& base, const EKEventData& edited,
                               const EKEventData& current) {
    using Data = EKEventData;
    return mergeProperties(base, edited, current,
                           std::tuple(&Data::isAllDay, &Data::startDate, &Data::endDate, &Data::timeZone));
}

std::optional<EKError> invalidReason(const std::optional<EKEventData>& before, const EKEventData& edited) {
    if (edited.endDate < edited.startDate)
        return invalidItemError(text("An event cannot end before it starts.",
                                     "Un événement ne peut pas finir avant de commencer."));
    if (edited.startDate < firstInstant || edited.endDate > lastInstant)
        return noSuchDateError();
    const auto known = before ? before->recurrenceRules : std::vector<EKRecurrenceRule>();
    if (edited.recurrenceRules == known)
        return std::nullopt;
    if (edited.occurrenceDate)
        return invalidItemError(text("The repetition cannot be changed for one occurrence alone.",
                                     "La répétition ne peut pas être modifiée pour une seule occurrence."));
    if (!areValidRules(edited.recurrenceRules, known))
        return invalidItemError(text("The repetition of this event is not valid.",
                                     "La répétition de cet événement n’est pas valide."));
    return std::nullopt;
}

EKEventData preparedForSave(const std::optional<EKEventData>& before, EKEventData edited, Instant now) {
    const auto wholeSeconds = [](Instant instant) -> Instant {
        return std::chrono::floor<std::chrono::seconds>(instant);
    };
    if (!before && !edited.creationDate)
        edited.creationDate = now;
    edited.lastModifiedDate = now;
    for (const auto property : {&EKEventData::startDate, &EKEventData::endDate})
        edited.*property = wholeSeconds(edited.*property);
    for (const auto property : {&EKEventData::creationDate, &EKEventData::lastModifiedDate}) {
        if (edited.*property)
            edited.*property = wholeSeconds(*(edited.*property));
    }
    edited.isDetached = edited.occurrenceDate.has_value();
    return edited;
}

bool matches(const EKEventPredicate& predicate, const EKEventData& data) {
    if (predicate.calendars && std::find(predicate.calendars->begin(), predicate.calendars->end(),
                                         data.calendarIdentifier) == predicate.calendars->end())
        return false;
    return touches(predicate, {data.startDate, data.endDate});
}

bool touches(const EKEventPredicate& predicate, const DateInterval& event) {
    if (event.start == event.end)
        return event.start >= predicate.start && event.start < predicate.end;
    return event.start < predicate.end && event.end > predicate.start;
}

}  // namespace kestrant
