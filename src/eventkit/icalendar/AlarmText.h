#pragma once

#include "eventkit/EKTypes.h"
#include "eventkit/icalendar/Document.h"

namespace kestrant::icalendar {

/// What the alarms of an item are bound to.
struct AlarmAnchor {
    /// How far the item's start and its end (or due date) lie from the date that offsets are counted from.
    Duration start{};
    Duration end{};
    /// The RELATED of a new alarm with an offset: that date.
    QByteArray related;
    /// What a new alarm says.
    QString title;
};
/// Offsets are counted from the due date, or from the start of what has none.
[[nodiscard]] AlarmAnchor alarmAnchorOf(const EKReminderData& reminder, const ZoneCalendar& local);

/// Reads a VALARM. One that is bound to a place has neither an absolute nor a relative date, whatever trigger
/// stands in for it, and the placeholder trigger of 1976 is no date.
[[nodiscard]] EKAlarm readAlarm(ComponentView alarm, const AlarmAnchor& anchor, const Document& document,
                                const ZoneCalendar& local);

/// Makes the item's alarms what `alarms` says, in this order. One with a source text keeps its lines, but for
/// its trigger, identifier and acknowledgement where these were changed.
void writeAlarms(Component& item, const std::vector<EKAlarm>& alarms, const AlarmAnchor& anchor,
                 const Document& document, const ZoneCalendar& local);

}  // namespace kestrant::icalendar
