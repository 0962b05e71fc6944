#pragma once

#include "eventkit/model/EKTypes.h"
#include "reminders/model/ReminderTask.h"

#include <QColor>
#include <QVariantList>

#include <vector>

namespace kestrant {

// The choices that forms offer.

[[nodiscard]] inline QColor toQColor(const Color& color) {
    return {color.red, color.green, color.blue};
}

/// The colour of a calendar's events.
[[nodiscard]] QColor eventColor(const EKCalendar& calendar);

/// The lists that take changes, {id, title, color} each.
[[nodiscard]] QVariantList writableChoices(const std::vector<ReminderList>& lists);

/// {id, title, color} each.
[[nodiscard]] QVariantList choices(const std::vector<EKCalendar>& calendars);

/// Null when there is none with this identifier.
[[nodiscard]] const ReminderList* find(const std::vector<ReminderList>& lists, const QString& id);
[[nodiscard]] const EKCalendar* find(const std::vector<EKCalendar>& calendars, const QString& id);

}  // namespace kestrant
