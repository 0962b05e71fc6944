#pragma once

#include "reminders/model/ReminderAlertSchedule.h"

#include <QString>

#include <optional>

namespace kestrant {

/// Reads an alert as it is typed: "0" at the due time, "15m", "2h", "1d" before it; for a whole day "09:00"
/// on the day and "1d 18:00" on the day before. Absent for anything else.
[[nodiscard]] std::optional<ReminderAlertSchedule> readTypedAlert(const QString& typed);

}  // namespace kestrant
