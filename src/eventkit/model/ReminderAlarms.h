#pragma once

#include "eventkit/model/EKTypes.h"

#include <optional>

namespace kestrant {

/// The dates of a reminder that its alarms may follow.
struct AlarmDates {
    std::optional<DateComponents> start;
    std::optional<DateComponents> due;

    [[nodiscard]] static AlarmDates of(const EKReminderData& reminder) {
        return {reminder.startDateComponents, reminder.dueDateComponents};
    }
    /// The one that this alarm follows.
    [[nodiscard]] const std::optional<DateComponents>& followedBy(const EKAlarm& alarm) const;
};

/// When an alarm rings: at its own instant, or at its distance from the date that it follows (RFC 5545,
/// 3.8.6.3). Absent for an alarm at a place, for one without any date, and for an offset from nothing.
[[nodiscard]] std::optional<Instant> ringInstant(const EKAlarm& alarm, const AlarmDates& dates,
                                                 const TimeZone& local);

/// Sets the absolute dates of the alarms that follow the reminder's dates.
void placeAlarms(EKReminderData& reminder, const TimeZone& local);

}  // namespace kestrant
