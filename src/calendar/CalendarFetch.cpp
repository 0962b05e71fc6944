#include "calendar/CalendarFetch.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kestrant {
namespace {

/// Whether a reminder is due on one of these days. Its zone, which is not asked, moves it by no more than a
/// day.
bool isDueAround(const EKReminderData& reminder, QDate first, QDate last) {
    const auto& due = reminder.dueDateComponents;
    return due && due->date() >= first.addDays(-2) && due->date() <= last.addDays(2);
}

QHash<QString, CalendarAppearance> appearances(const EKEventStore& store) {
    QHash<QString, CalendarAppearance> result;
    for (const EKEntityType type : {EKEntityType::reminder, EKEntityType::event}) {
        for (const EKCalendar& calendar : store.calendars(type))
            result.insert(calendar.calendarIdentifier, {calendar.title, calendar.color});
    }
    return result;
}

}  // namespace

void fetchCalendarItems(Instant from, Instant to, EKEventStore& store, OpenReminders* openReminders,
                        const TimeZone& zone, std::function<void(CalendarItems)> completion) {
    struct Pending {
        CalendarItems items;
        int parts = 0;
        std::function<void(CalendarItems)> completion;

        void end(const EKEventStore& eventStore) {
            if (--parts > 0)
                return;
            items.calendars = appearances(eventStore);
            completion(std::move(items));
        }
    };
    const auto pending = std::make_shared<Pending>();
    pending->parts = openReminders ? 2 : 1;
    pending->completion = std::move(completion);
    store.events(EKEventStore::predicateForEvents(from, to, std::nullopt), [pending, &store](EKEvents found) {
        pending->items.events = std::move(found.events);
        pending->items.isCut = found.isCut;
        pending->end(store);
    });
    if (!openReminders)
        return;
    openReminders->fetch([pending, &store, first = zone.dayOf(from),
                          last = zone.dayOf(to)](const OpenReminders::Reminders& reminders) {
        std::copy_if(reminders->begin(), reminders->end(), std::back_inserter(pending->items.reminders),
                     [&](const auto& reminder) { return isDueAround(*reminder, first, last); });
        pending->end(store);
    });
}

}  // namespace kestrant
