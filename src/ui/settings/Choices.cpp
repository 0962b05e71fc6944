#include "ui/settings/Choices.h"

#include "calendar/CalendarRows.h"
#include "ui/calendar/ListColor.h"

#include <algorithm>

namespace kestrant {
namespace {

QVariantMap choice(const QString& id, const QString& title, const QColor& color) {
    return {{QStringLiteral("id"), id}, {QStringLiteral("title"), title}, {QStringLiteral("color"), color}};
}

}  // namespace

QColor eventColor(const EKCalendar& calendar) {
    return toQColor(calendar.color.value_or(defaultEventColor));
}

QVariantList writableChoices(const std::vector<ReminderList>& lists) {
    QVariantList result;
    for (const ReminderList& list : lists) {
        if (list.allowsContentModifications)
            result.append(choice(list.id, list.title, listColor(&list)));
    }
    return result;
}

QVariantList choices(const std::vector<EKCalendar>& calendars) {
    QVariantList result;
    for (const EKCalendar& calendar : calendars)
        result.append(choice(calendar.calendarIdentifier, calendar.title, eventColor(calendar)));
    return result;
}

const ReminderList* find(const std::vector<ReminderList>& lists, const QString& id) {
    const auto found =
        std::find_if(lists.begin(), lists.end(), [&](const ReminderList& list) { return list.id == id; });
    return found == lists.end() ? nullptr : &*found;
}

const EKCalendar* find(const std::vector<EKCalendar>& calendars, const QString& id) {
    const auto found = std::find_if(calendars.begin(), calendars.end(), [&](const EKCalendar& calendar) {
        return calendar.calendarIdentifier == id;
    });
    return found == calendars.end() ? nullptr : &*found;
}

}  // namespace kestrant
