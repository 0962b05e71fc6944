#include "calendar/CalendarFetch.h"

#include <utility>

namespace kestrant {
namespace {

/// A number of days earlier or later at the same local time; the instant itself where no such day exists.
Instant movedByDays(Instant instant, int days, const ZoneCalendar& calendar) {
    const QDate day = calendar.dayOf(instant).addDays(days);
    if (day.year() < 1 || day.year() > 9999)
        return instant;
    return calendar.instantAt(day, calendar.timeOf(instant));
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

void fetchCalendarItems(Instant from, Instant to, EKEventStore& store, bool showReminders,
                        const ZoneCalendar& calendar, std::function<void(CalendarItems)> completion) {
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
    pending->parts = showReminders ? 2 : 1;
    pending->completion = std::move(completion);
    store.events(EKEventStore::predicateForEvents(from, to, std::nullopt), [pending, &store](EKEvents found) {
        pending->items.events = std::move(found.events);
        pending->items.isCut = found.isCut;
        pending->end(store);
    });
    if (!showReminders)
        return;
    store.fetchReminders(EKEventStore::predicateForIncompleteReminders(
                             movedByDays(from, -1, calendar), movedByDays(to, 1, calendar), std::nullopt),
                         [pending, &store](EKReminders reminders) {
                             pending->items.reminders = std::move(reminders);
                             pending->end(store);
                         });
}

}  // namespace kestrant
