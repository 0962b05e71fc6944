#include "eventkit/model/ReminderChanges.h"

#include "eventkit/model/EKErrors.h"
#include "eventkit/model/EKEventStore.h"

#include <algorithm>
#include <chrono>
#include <tuple>

namespace kestrant {
namespace {

Instant wholeSeconds(Instant instant) {
    return std::chrono::floor<std::chrono::seconds>(instant);
}

bool namesADay(const DateComponents& components) {
    return components.date().isValid() && (!components.includesTime() || components.time().isValid());
}

/// The same day as a date of the kind of `due`, which has a time or has none.
DateComponents inKindOf(const DateComponents& due, const DateComponents& start, const TimeZone& local) {
    if (start.includesTime() == due.includesTime())
        return start;
    if (due.includesTime())
        return DateComponents::fromDateTime(start.date(), QTime(0, 0), due.timeZone);
    const auto instant = local.instantFrom(start);
    return instant ? DateComponents::fromDate(local.dayOf(*instant)) : start;
}

}  // namespace

Merged<EKReminderData> mergeEdits(const EKReminderData& base, const EKReminderData& edited,
                                  const EKReminderData& current) {
    using Data = EKReminderData;
    auto result = mergeProperties(base, edited, current, std::tuple(&Data::priority),
                                  std::tuple(&Data::dueDateComponents),
                                  std::tuple(&Data::startDateComponents), std::tuple(&Data::isCompleted),
                                  std::tuple(&Data::completionDate), std::tuple(&Data::isFlagged));
    const bool completes = edited.isCompleted && !base.isCompleted;
    if (completes && !base.recurrenceRules.empty() && !current.isCompleted &&
        (current.dueDateComponents != base.dueDateComponents ||
         current.startDateComponents != base.startDateComponents))
        result.conflict = true;
    return result;
}

std::optional<EKError> invalidReason(const std::optional<EKReminderData>& before,
                                     const EKReminderData& edited) {
    if ((edited.priority < 0 || edited.priority > 9) && (!before || before->priority != edited.priority))
        return invalidItemError(
            text("A priority is a number from 0 to 9.", "Une priorité est un nombre de 0 à 9."));
    for (const auto property : {&EKReminderData::dueDateComponents, &EKReminderData::startDateComponents}) {
        const auto& date = edited.*property;
        if (date && !namesADay(*date) && (!before || (*before).*property != date))
            return noSuchDateError();
    }
    if (!areValidRules(edited.recurrenceRules,
                       before ? before->recurrenceRules : std::vector<EKRecurrenceRule>()))
        return invalidItemError(text("The repetition of this reminder is not valid.",
                                     "La répétition de ce rappel n’est pas valide."));
    return std::nullopt;
}

EKReminderData preparedForSave(const std::optional<EKReminderData>& before, EKReminderData edited,
                               Instant now, const TimeZone& local) {
    now = wholeSeconds(now);
    if (!edited.isCompleted)
        edited.completionDate.reset();
    else if (!edited.completionDate && (!before || !before->isCompleted))
        edited.completionDate = now;
    if (!before && !edited.creationDate)
        edited.creationDate = now;
    for (const auto property : {&EKReminderData::completionDate, &EKReminderData::creationDate}) {
        if (edited.*property)
            edited.*property = wholeSeconds(*(edited.*property));
    }
    for (EKAlarm& alarm : edited.alarms) {
        for (auto* date : {&alarm.absoluteDate, &alarm.acknowledgedDate}) {
            if (*date)
                *date = wholeSeconds(**date);
        }
    }
    edited.lastModifiedDate = now;

    const auto& due = edited.dueDateComponents;
    auto& start = edited.startDateComponents;
    const bool startEdited = !before || before->startDateComponents != start;
    if (startEdited || before->dueDateComponents != due)
        start = startFitting(start, startEdited ? std::nullopt : before->dueDateComponents, due, local);
    return edited;
}

std::optional<DateComponents> startFitting(const std::optional<DateComponents>& start,
                                           const std::optional<DateComponents>& dueBefore,
                                           const std::optional<DateComponents>& due, const TimeZone& local) {
    if (!start || !due || start == due)
        return start;
    if (start == dueBefore)
        return due;
    const DateComponents fitting = inKindOf(*due, *start, local);
    const auto begins = local.instantFrom(fitting);
    const auto ends = local.instantFrom(*due);
    return begins && ends && *begins > *ends ? *due : fitting;
}

bool saysTheSame(EKReminderData a, EKReminderData b) {
    for (EKReminderData* data : {&a, &b}) {
        data->calendarItemIdentifier.clear();
        data->lastModifiedDate.reset();
        data->isFlagged = false;
        std::erase_if(data->alarms, [](const EKAlarm& alarm) { return !alarm.snoozedAlarm.isEmpty(); });
        for (EKAlarm& alarm : data->alarms) {
            alarm.sourceText.clear();
            alarm.identifier.clear();
            alarm.acknowledgedDate.reset();
        }
    }
    return a == b;
}

bool matches(const EKPredicate& predicate, const EKReminderData& data, const TimeZone& local) {
    const bool wantsCompleted = predicate.kind == EKPredicate::Kind::completedReminders;
    if (data.isCompleted != wantsCompleted)
        return false;
    if (predicate.calendars && std::find(predicate.calendars->begin(), predicate.calendars->end(),
                                         data.calendarIdentifier) == predicate.calendars->end())
        return false;
    if (!predicate.start && !predicate.end)
        return true;
    std::optional<Instant> date;
    if (wantsCompleted)
        date = data.completionDate;
    else if (data.dueDateComponents)
        date = local.instantFrom(*data.dueDateComponents);
    return date && (!predicate.start || *date >= *predicate.start) &&
           (!predicate.end || *date < *predicate.end);
}

}  // namespace kestrant
