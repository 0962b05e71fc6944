#include "eventkit/model/UnusableEventStore.h"

namespace kestrant {

void UnusableEventStore::requestFullAccessToReminders(AccessCompletion completion) {
    scheduler_.post([completion = std::move(completion), reason = reason_] { completion(false, reason); });
}

void UnusableEventStore::requestFullAccessToEvents(AccessCompletion completion) {
    requestFullAccessToReminders(std::move(completion));
}

void UnusableEventStore::fetchReminders(const EKPredicate&, FetchCompletion completion) {
    scheduler_.post([completion = std::move(completion)] { completion({}); });
}

void UnusableEventStore::events(const EKEventPredicate&, EventsCompletion completion) {
    scheduler_.post([completion = std::move(completion)] { completion({}); });
}

void UnusableEventStore::refuse(SaveCompletion completion) {
    scheduler_.post(
        [completion = std::move(completion), reason = reason_] { completion(tl::unexpected(reason)); });
}

void UnusableEventStore::saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) {
    scheduler_.post([count = reminders.size(), completion = std::move(completion), reason = reason_] {
        completion(std::vector<tl::expected<EKSaveResult, EKError>>(count, tl::unexpected(reason)));
    });
}

void UnusableEventStore::saveCalendar(const EKCalendar&, CalendarCompletion completion) {
    scheduler_.post(
        [completion = std::move(completion), reason = reason_] { completion(tl::unexpected(reason)); });
}

}  // namespace kestrant
