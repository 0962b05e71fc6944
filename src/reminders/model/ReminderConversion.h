#pragma once

#include "eventkit/model/EKReminder.h"
#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"
#include "reminders/model/ReminderTask.h"

#include <optional>
#include <vector>

namespace kestrant {

/// A reminder of the database as it is shown, with the flag that is shown for it.
[[nodiscard]] ReminderTask reminderTask(const EKReminderData& reminder, const TimeZone& zone, bool isFlagged);

/// A reminder of the database as an edit form shows it.
[[nodiscard]] ReminderEditDetails reminderEditDetails(const EKReminderData& reminder, const TimeZone& zone);

/// The components to store for a due date: day, and hour and minute when a time is included. `previous` is
/// returned as it stands when it says the same already; otherwise a new time is told in the zone the previous
/// one was told in, or without a zone.
[[nodiscard]] DateComponents dueComponents(Instant dueDate, bool includesTime, const TimeZone& zone,
                                           const std::optional<DateComponents>& previous);

/// Sets due date and alert, and moves the reminder's one alarm accordingly. With its due date a reminder
/// loses the alarm and the repetition too.
void applyDueDate(EKReminderData& reminder, const std::optional<DateComponents>& due,
                  const std::optional<ReminderAlertSchedule>& schedule, const TimeZone& zone);

/// Has the reminder repeat from its due date on, in place of the rules it has. One without a start gets its
/// due date as one too, because other programs count from the start alone.
void applyRules(EKReminderData& reminder, std::vector<EKRecurrenceRule> rules);

/// The list a new reminder goes to: the chosen one, else the preferred one, each when it still exists; else
/// the database's default, else the first, each when it may be changed. Absent when there is none.
[[nodiscard]] std::optional<EKCalendar> listForNewReminder(const std::optional<QString>& chosenID,
                                                           const std::optional<QString>& preferredID,
                                                           const std::optional<EKCalendar>& databaseDefault,
                                                           const std::vector<EKCalendar>& lists);

}  // namespace kestrant
