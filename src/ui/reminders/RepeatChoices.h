#pragma once

#include "reminders/model/ReminderRepeat.h"
#include "ui/panel/Localizer.h"

#include <QString>
#include <QVariantList>

#include <vector>

namespace kestrant {

/// The words for a repetition in a form: "Weekly", "Every 2 weeks on Mon".
[[nodiscard]] QString repeatTitle(const std::vector<EKRecurrenceRule>& rules, const Localizer& localizer);

/// {id, title} each; an id is the raw value of a choice. Rules that are none of the choices are among them
/// under an empty id, so that they can be kept.
[[nodiscard]] QVariantList repeatChoices(const std::vector<EKRecurrenceRule>& present,
                                         const Localizer& localizer);

}  // namespace kestrant
