#include "reminders/model/ReminderConversion.h"

#include "reminders/model/ReminderAlerts.h"

#include <algorithm>

namespace kestrant {
namespace {

std::optional<Instant> dueInstant(const EKReminderData& reminder, const TimeZone& zone) {
    return reminder.dueDateComponents ? zone.instantFrom(*reminder.dueDateComponents) : std::nullopt;
}

std::optional<EKCalendar> listWithID(const std::vector<EKCalendar>& lists, const std::optional<QString>& id) {
    const auto found = std::find_if(lists.begin(), lists.end(),
                                    [&](const EKCalendar& list) { return list.calendarIdentifier == id; });
    return found == lists.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

ReminderTask reminderTask(const EKReminderData& reminder, const TimeZone& zone, bool isFlagged) {
    ReminderTask task;
    task.id = reminder.calendarItemIdentifier;
    task.title = reminder.title;
    task.dueDate = dueInstant(reminder, zone);
    task.dueDateIncludesTime = task.dueDate && reminder.dueDateComponents->includesTime();
    task.dueAlertSchedule = alertSchedule(reminder, zone);
    task.creationDate = reminder.creationDate;
    task.priority = reminder.priority;
    task.listID = reminder.calendarIdentifier;
    task.isFlagged = isFlagged;
    task.recurrenceRules = reminder.recurrenceRules;
    return task;
}

ReminderEditDetails reminderEditDetails(const EKReminderData& reminder, const TimeZone& zone) {
    ReminderEditDetails details;
    details.title = reminder.title;
    details.dueDate = dueInstant(reminder, zone);
    details.dueDateIncludesTime = details.dueDate && reminder.dueDateComponents->includesTime();
    details.dueAlertSchedule = alertSchedule(reminder, zone);
    details.priority = reminder.priority;
    details.listID = reminder.calendarIdentifier;
    details.notes = reminder.notes.value_or(QString());
    return details;
}

DateComponents dueComponents(Instant dueDate, bool includesTime, const TimeZone& zone,
                             const std::optional<DateComponents>& previous) {
    if (!includesTime) {
        const DateComponents day = DateComponents::fromDate(zone.dayOf(dueDate));
        const bool same = previous && !previous->includesTime() && previous->date() == day.date();
        return same ? *previous : day;
    }
    if (previous && previous->includesTime() && zone.instantFrom(*previous) == dueDate)
        return *previous;
    const auto ownZone = previous && previous->includesTime() ? previous->timeZone : std::nullopt;
    const TimeZone& shown = ownZone ? *ownZone : zone;
    DateComponents components =
        DateComponents::fromDateTime(shown.dayOf(dueDate), shown.timeOf(dueDate), ownZone);
    components.second.reset();
    return components;
}

void applyDueDate(EKReminderData& reminder, const std::optional<DateComponents>& due,
                  const std::optional<ReminderAlertSchedule>& schedule, const TimeZone& zone) {
    const ReminderDueAlert before{reminder.dueDateComponents, alertSchedule(reminder, zone)};
    reminder.dueDateComponents = due;
    replaceAlarm(reminder, before, {due, schedule}, zone);
    if (!due && before.dueComponents)
        reminder.recurrenceRules.clear();
}

void applyRules(EKReminderData& reminder, std::vector<EKRecurrenceRule> rules) {
    reminder.recurrenceRules = std::move(rules);
    if (!reminder.recurrenceRules.empty() && !reminder.startDateComponents)
        reminder.startDateComponents = reminder.dueDateComponents;
}

std::optional<EKCalendar> listForNewReminder(const std::optional<QString>& chosenID,
                                             const std::optional<QString>& preferredID,
                                             const std::optional<EKCalendar>& databaseDefault,
                                             const std::vector<EKCalendar>& lists) {
    if (auto chosen = listWithID(lists, chosenID))
        return chosen;
    if (auto preferred = listWithID(lists, preferredID))
        return preferred;
    if (databaseDefault && databaseDefault->allowsContentModifications)
        return databaseDefault;
    const auto first = std::find_if(lists.begin(), lists.end(),
                                    [](const EKCalendar& list) { return list.allowsContentModifications; });
    return first == lists.end() ? std::nullopt : std::optional(*first);
}

}  // namespace kestrant
