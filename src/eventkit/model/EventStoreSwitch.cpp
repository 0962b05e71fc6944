#include "eventkit/model/EventStoreSwitch.h"

#include <utility>

namespace kestrant {

EventStoreSwitch::EventStoreSwitch(const QString& name, const Make& make) {
    use(name, make);
}

EventStoreSwitch::~EventStoreSwitch() = default;

void EventStoreSwitch::use(const QString& name, const Make& make) {
    auto& store = stores_[name];
    if (!store)
        store = make();
    store_ = store.get();
    changes_ = store_->observeChanges([this] { observers_.notify(); });
}

void EventStoreSwitch::switchTo(const QString& name, const Make& make) {
    use(name, make);
    observers_.notify();
}

EKAuthorizationStatus EventStoreSwitch::authorizationStatus(EKEntityType type) const {
    return store_->authorizationStatus(type);
}

void EventStoreSwitch::requestFullAccessToReminders(AccessCompletion completion) {
    store_->requestFullAccessToReminders(std::move(completion));
}

void EventStoreSwitch::requestFullAccessToEvents(AccessCompletion completion) {
    store_->requestFullAccessToEvents(std::move(completion));
}

std::vector<EKCalendar> EventStoreSwitch::calendars(EKEntityType type) const {
    return store_->calendars(type);
}

std::optional<EKCalendar> EventStoreSwitch::calendarWithIdentifier(const QString& identifier) const {
    return store_->calendarWithIdentifier(identifier);
}

std::optional<EKCalendar> EventStoreSwitch::defaultCalendarForNewReminders() const {
    return store_->defaultCalendarForNewReminders();
}

std::optional<EKCalendar> EventStoreSwitch::defaultCalendarForNewEvents() const {
    return store_->defaultCalendarForNewEvents();
}

void EventStoreSwitch::fetchReminders(const EKPredicate& matching, FetchCompletion completion) {
    store_->fetchReminders(matching, std::move(completion));
}

EKReminderRef EventStoreSwitch::calendarItem(const QString& withIdentifier) {
    return store_->calendarItem(withIdentifier);
}

void EventStoreSwitch::save(const EKReminderRef& reminder, SaveCompletion completion) {
    store_->save(reminder, std::move(completion));
}

void EventStoreSwitch::saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) {
    store_->saveAll(reminders, std::move(completion));
}

void EventStoreSwitch::remove(const EKReminderRef& reminder, SaveCompletion completion) {
    store_->remove(reminder, std::move(completion));
}

void EventStoreSwitch::revert(const std::shared_ptr<const EKItemChange>& change, const QString& identifier,
                              SaveCompletion completion) {
    store_->revert(change, identifier, std::move(completion));
}

void EventStoreSwitch::awaitOutcome(const EKError& unknown, SaveCompletion completion) {
    store_->awaitOutcome(unknown, std::move(completion));
}

void EventStoreSwitch::events(const EKEventPredicate& matching, EventsCompletion completion) {
    store_->events(matching, std::move(completion));
}

EKEventRef EventStoreSwitch::event(const QString& withIdentifier) {
    return store_->event(withIdentifier);
}

void EventStoreSwitch::save(const EKEventRef& event, EKSpan span, SaveCompletion completion) {
    store_->save(event, span, std::move(completion));
}

void EventStoreSwitch::remove(const EKEventRef& event, EKSpan span, SaveCompletion completion) {
    store_->remove(event, span, std::move(completion));
}

void EventStoreSwitch::saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) {
    store_->saveCalendar(calendar, std::move(completion));
}

Subscription EventStoreSwitch::observeChanges(std::function<void()> observer) {
    return observers_.add(std::move(observer));
}

std::vector<TextPair> EventStoreSwitch::problems() const {
    return store_->problems();
}

std::shared_ptr<const EKReminderData> EventStoreSwitch::storedReminder(const QString& identifier) const {
    return store_->storedReminder(identifier);
}

}  // namespace kestrant
