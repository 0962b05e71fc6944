#pragma once

#include "eventkit/icalendar/Document.h"
#include "eventkit/model/EKTypes.h"

namespace kestrant::icalendar {

/// Reads a VALARM. One that is bound to a place has neither an absolute date nor an offset, whatever trigger
/// stands in for it, and the placeholder trigger of 1976 is no date. Nor has one that does something else
/// than show a message (a sound, an e-mail, a procedure). An offset says nothing yet about when it rings.
[[nodiscard]] EKAlarm readAlarm(ComponentView alarm, const Document& document, const TimeZone& local);

/// Makes the item's alarms what `alarms` says, in this order. One with a source text keeps its lines, but for
/// its trigger, identifier and acknowledgement where these were changed. A new one says `title`.
void writeAlarms(Component& item, const std::vector<EKAlarm>& alarms, const QString& title,
                 const Document& document, const TimeZone& local);

}  // namespace kestrant::icalendar
