#pragma once

#include "foundation/ClockText.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"

#include <QDate>
#include <QString>

namespace kestrant {

/// A due date in words: "Today", "Tomorrow 09:00", "Mon 23 Nov", "Mon 23 Nov 2027 09:00"; in
/// French "Aujourd’hui", "Demain 09:00", "Lun. 23 nov.". The year is told when it is not the present one.
[[nodiscard]] QString reminderDueText(Instant dueDate, bool includesTime, Instant now, const TimeZone& zone,
                                      Language language, ClockHours hours = ClockHours::twentyFour);

/// The day alone, whatever day it is: "Mon 23 Nov", "lun. 23 nov.", with the year where it is not this one.
[[nodiscard]] QString dateInWords(QDate day, QDate today, Language language);

}  // namespace kestrant
