#pragma once

#include "calendar/CalendarRows.h"
#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/TimeZone.h"

#include <QHash>

#include <functional>
#include <memory>
#include <vector>

namespace kestrant {

/// The database's content for an interval. A value; thread: any.
struct CalendarItems {
    std::vector<std::shared_ptr<const EKEventData>> events;
    std::vector<std::shared_ptr<const EKReminderData>> reminders;
    /// Whether events were left out: those farthest from the present are.
    bool isCut = false;
    /// Keyed by calendar identifier.
    QHash<QString, CalendarAppearance> calendars;
};

/// Reads every event that touches the interval and every open reminder that is due on its days or on one next
/// to them. `openReminders` is null where reminders are not shown. Completes once, on a later turn; `store`
/// exists until then. Thread: main.
void fetchCalendarItems(Instant from, Instant to, EKEventStore& store, OpenReminders* openReminders,
                        const TimeZone& zone, std::function<void(CalendarItems)> completion);

}  // namespace kestrant
