#pragma once

#include <variant>

namespace kestrant {

/// Rings this many seconds after the due instant (negative: before). Only for a reminder whose due date
/// includes a time.
struct RelativeToDueTime {
    double seconds = 0;
    bool operator==(const RelativeToDueTime&) const = default;
};

/// Rings at hour:minute on the due day shifted by `dayOffset` days. Only for a date-only reminder, and only
/// with an offset of 0 or -1 and a time of day that exists on a clock.
struct DayRelativeToDueDate {
    int dayOffset = 0;
    int hour = 0;
    int minute = 0;
    bool operator==(const DayRelativeToDueDate&) const = default;
};

/// The one notification of a reminder, relative to its due date.
using ReminderAlertSchedule = std::variant<RelativeToDueTime, DayRelativeToDueDate>;

}  // namespace kestrant
