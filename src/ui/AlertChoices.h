#pragma once

#include "reminders/ReminderAlertSchedule.h"
#include "ui/Localizer.h"

#include <QString>
#include <QVariantList>

#include <optional>

namespace kestrant {

// What forms offer as a reminder's alert. A choice is known by an id that stands for its schedule.

/// Empty for no alert.
[[nodiscard]] QString alertId(const std::optional<ReminderAlertSchedule>& schedule);
/// Absent for an empty id and for one that is none.
[[nodiscard]] std::optional<ReminderAlertSchedule> alertWithId(const QString& id);

/// What a chosen alert is called.
[[nodiscard]] QString alertTitle(const std::optional<ReminderAlertSchedule>& schedule,
                                 const Localizer& localizer);

/// {id, title} each, for a due date with or without a time of day. A schedule that is none of the usual ones
/// is among them when it is the `present` one.
[[nodiscard]] QVariantList alertChoices(bool dueDateIncludesTime,
                                        const std::optional<ReminderAlertSchedule>& present,
                                        const Localizer& localizer);

/// The schedule, if it fits a due date of this kind.
[[nodiscard]] std::optional<ReminderAlertSchedule>
fittingAlert(const std::optional<ReminderAlertSchedule>& schedule, bool dueDateIncludesTime);

}  // namespace kestrant
