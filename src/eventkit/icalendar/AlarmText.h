#pragma once

#include "eventkit/EKTypes.h"
#include "eventkit/icalendar/Document.h"

namespace kestrant::icalendar {

/// Reads a VALARM. One that is bound to a place has neither an absolute nor a relative date, whatever trigger
/// stands in for it, and the placeholder trigger of 1976 is no date. Offsets are given to the due date where
/// the item has both dates and the alarm is bound to its start.
[[nodiscard]] EKAlarm readAlarm(ComponentView alarm, const EKReminderData& item, const Document& document,
                                const ZoneCalendar& local);

/// Makes the item's alarms what `alarms` says, in this order. One with a source text keeps its lines, but for
/// its trigger, identifier and acknowledgement where these were changed.
void writeAlarms(Component& item, const std::vector<EKAlarm>& alarms, const EKReminderData& data,
                 const Document& document, const ZoneCalendar& local);

}  // namespace kestrant::icalendar
