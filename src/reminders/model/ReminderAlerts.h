#pragma once

#include "eventkit/model/EKReminder.h"
#include "foundation/Choice.h"
#include "foundation/ClockText.h"
#include "foundation/DateComponents.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"
#include "reminders/model/ReminderAlertSchedule.h"

#include <array>
#include <optional>

namespace kestrant {

/// The choices of an alert for a reminder with a due time, in the order of the picker.
enum class ReminderAlertTiming {
    atDueTime,
    fiveMinutesBefore,
    fifteenMinutesBefore,
    oneHourBefore,
    oneDayBefore
};

/// The raw value is the number of seconds from the due instant.
template <>
inline constexpr auto choicesOf<ReminderAlertTiming> = std::to_array<Choice<ReminderAlertTiming, double>>({
    {ReminderAlertTiming::atDueTime, 0, "At due time", "À l’heure"},
    {ReminderAlertTiming::fiveMinutesBefore, -300, "5 min before", "5 min avant"},
    {ReminderAlertTiming::fifteenMinutesBefore, -900, "15 min before", "15 min avant"},
    {ReminderAlertTiming::oneHourBefore, -3600, "1 hr before", "1 h avant"},
    {ReminderAlertTiming::oneDayBefore, -86400, "1 day before", "1 jour avant"},
});

/// The choices of an alert's day for a date-only reminder.
enum class ReminderDateOnlyAlertDay { sameDay, dayBefore };

/// The raw value is the number of days from the due day.
template <>
inline constexpr auto
    choicesOf<ReminderDateOnlyAlertDay> = std::to_array<Choice<ReminderDateOnlyAlertDay, int>>({
        {ReminderDateOnlyAlertDay::sameDay, 0, "On day of event", "Le jour même"},
        {ReminderDateOnlyAlertDay::dayBefore, -1, "Day before", "La veille"},
    });

/// Any schedule in words, one that no picker offers included: "15 min before", "Day before at 09:00",
/// "3 days before at 18:30".
[[nodiscard]] TextPair label(const ReminderAlertSchedule& schedule,
                             ClockHours hours = ClockHours::twentyFour);

/// A reminder's due date together with its alert.
struct ReminderDueAlert {
    std::optional<DateComponents> dueComponents;
    std::optional<ReminderAlertSchedule> schedule;
    bool operator==(const ReminderDueAlert&) const = default;
};

/// When the alert rings; absent when there is none, or when the schedule does not fit the due date. A time
/// that the clock skips moves to the next existing one; of a repeated time the first occurrence is taken.
[[nodiscard]] std::optional<Instant> alarmInstant(const ReminderDueAlert& dueAlert, const TimeZone& zone);

/// Puts the alarm that `after` wants in the place of the one that belongs to `before`: the alarm at the
/// instant of `before` and, where alertSchedule() read `before` from one, that very alarm, within a second's
/// tolerance. Nothing is added where one rings at the wanted instant already. An alert that stays while the
/// due date moves keeps its distance, whatever it is, and its alarm keeps its text; one that follows the due
/// date by itself is not touched. Alarms at other times and at places stay as they are. What was snoozed of
/// an alarm that rings at another time now, or not at all, goes with it. The reminder's own due date is not
/// looked at.
void replaceAlarm(EKReminderData& reminder, const ReminderDueAlert& before, const ReminderDueAlert& after,
                  const TimeZone& zone);

/// The schedule that the first alarm with a date and without a place stands for, repetitions of snoozed ones
/// passed over; absent when there is none or the reminder has no due date.
[[nodiscard]] std::optional<ReminderAlertSchedule> alertSchedule(const EKReminderData& reminder,
                                                                 const TimeZone& zone);

}  // namespace kestrant
