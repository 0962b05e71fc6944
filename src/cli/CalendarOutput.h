#pragma once

#include "calendar/CalendarEditing.h"
#include "calendar/CalendarGrouping.h"
#include "cli/CommandLineOutput.h"

#include <QJsonArray>
#include <QList>
#include <QString>

#include <vector>

namespace kestrant {

[[nodiscard]] QJsonArray dayGroupsAsJson(const QList<CalendarDayGroup>& groups);

/// For each day its heading, in the full calendar with month and year, and a line for each row: time, a mark
/// (▸ for what is happening, ○ for a reminder), title, place, calendar and identifier, in columns that are
/// aligned throughout. A time that lies on another day is told by three dots.
[[nodiscard]] QString dayGroupsAsText(const QList<CalendarDayGroup>& groups, CalendarMode mode,
                                      const OutputContext& context);

/// What was understood of a line that is added.
[[nodiscard]] QString eventAsTable(const NewCalendarEvent& event, const std::vector<EKCalendar>& calendars,
                                   const OutputContext& context);

}  // namespace kestrant
