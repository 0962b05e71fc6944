#include "calendar/CalendarRows.h"

#include "calendar/EventLinks.h"

#include <QCollatorSortKey>

#include <algorithm>
#include <chrono>
#include <numeric>

namespace kestrant {
namespace {

constexpr QLatin1String reminderPrefix("reminder_");
constexpr Duration reminderLength = std::chrono::minutes(30);
constexpr Duration joinedBefore = std::chrono::minutes(10);

QString titleOr(const QString& title, const TextPair& untitled, Language language) {
    return title.trimmed().isEmpty() ? untitled.in(language) : title;
}

}  // namespace

QString eventRowID(const QString& calendarItemIdentifier, Instant startDate) {
    QString number = QString::number(secondsSince1970(startDate), 'f', QLocale::FloatingPointShortest);
    if (!number.contains(u'.'))
        number += QLatin1String(".0");
    return calendarItemIdentifier + u'_' + number;
}

QString reminderRowID(const QString& calendarItemIdentifier) {
    return reminderPrefix + calendarItemIdentifier;
}

std::optional<QString> reminderIdentifier(const QString& rowID) {
    if (!rowID.startsWith(reminderPrefix))
        return std::nullopt;
    return rowID.mid(reminderPrefix.size());
}

bool isHappening(const CalendarEventItem& event, Instant now) {
    return !event.isReminder && !event.isAllDay && event.startDate <= now && event.endDate > now;
}

bool canBeJoined(const CalendarEventItem& event, Instant now) {
    return !event.meetingLink.isEmpty() && !event.isAllDay && event.startDate - joinedBefore <= now &&
           event.endDate > now;
}

std::optional<Instant> reminderDueDate(const EKReminderData& reminder, const TimeZone& zone) {
    return reminder.dueDateComponents ? zone.instantFrom(*reminder.dueDateComponents) : std::nullopt;
}

CalendarEventItem eventRow(const EKEventData& event, const CalendarAppearance* appearance,
                           Language language) {
    CalendarEventItem row;
    row.id = eventRowID(event.calendarItemIdentifier, event.startDate);
    row.itemIdentifier =
        event.eventIdentifier.isEmpty() ? event.calendarItemIdentifier : event.eventIdentifier;
    row.title = titleOr(event.title, text("Untitled Event", "Événement sans titre"), language);
    row.startDate = event.startDate;
    row.endDate = event.endDate;
    row.isAllDay = event.isAllDay;
    row.calendarTitle = appearance ? appearance->title : QString();
    row.calendarColor = appearance ? appearance->color.value_or(defaultEventColor) : defaultEventColor;
    row.location = event.location;
    row.notes = event.notes;
    row.meetingLink = meetingLink(event);
    row.isRecurring = !event.recurrenceRules.empty() || event.occurrenceDate.has_value();
    return row;
}

CalendarEventItem reminderRow(const EKReminderData& reminder, Instant dueDate,
                              const CalendarAppearance* appearance, Language language) {
    CalendarEventItem row;
    row.id = reminderRowID(reminder.calendarItemIdentifier);
    row.itemIdentifier = reminder.calendarItemIdentifier;
    row.title = titleOr(reminder.title, text("Untitled Reminder", "Rappel sans titre"), language);
    row.startDate = dueDate;
    row.endDate = dueDate + reminderLength;
    row.isAllDay = !reminder.dueDateComponents || !reminder.dueDateComponents->includesTime();
    row.calendarTitle = appearance ? appearance->title : text("Reminders", "Rappels").in(language);
    row.calendarColor = appearance ? appearance->color.value_or(defaultReminderColor) : defaultReminderColor;
    row.notes = reminder.notes;
    row.isReminder = true;
    row.isRecurring = !reminder.recurrenceRules.empty();
    return row;
}

std::vector<std::size_t> rowOrder(const std::vector<CalendarEventItem>& rows,
                                  const TextCollation& collation) {
    std::vector<std::size_t> order(rows.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto time = [&](std::size_t row) { return std::pair(!rows[row].isAllDay, rows[row].startDate); };
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return time(a) < time(b); });

    // Titles matter only between rows of the same time, so only those are prepared for comparison.
    for (auto first = order.begin(); first != order.end();) {
        const auto last =
            std::find_if(first, order.end(), [&](std::size_t row) { return time(row) != time(*first); });
        if (last - first > 1) {
            std::vector<std::pair<QCollatorSortKey, std::size_t>> titled;
            titled.reserve(static_cast<std::size_t>(last - first));
            std::transform(first, last, std::back_inserter(titled), [&](std::size_t row) {
                return std::pair(collation.sortKey(rows[row].title), row);
            });
            std::stable_sort(titled.begin(), titled.end(),
                             [](const auto& a, const auto& b) { return a.first.compare(b.first) < 0; });
            std::transform(titled.begin(), titled.end(), first, [](const auto& row) { return row.second; });
        }
        first = last;
    }
    return order;
}

}  // namespace kestrant
