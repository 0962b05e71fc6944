#include "calendar/CalendarRows.h"
#include "calendar/CalendarStorePrivate.h"
#include "eventkit/model/EKErrors.h"
#include "foundation/NotificationCenter.h"

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

using ErrorCode = CalendarError::Code;

std::optional<EKCalendar> eventCalendar(const EKEventStore& store, const QString& identifier) {
    auto calendar = store.calendarWithIdentifier(identifier);
    return calendar && calendar->allowsEvents ? calendar : std::nullopt;
}

}  // namespace

void CalendarStore::Private::findEvent(const CalendarEventItem& row,
                                       std::function<void(Private&, const EKEventRef&)> done) {
    EKEventRef event = row.isReminder ? nullptr : services.eventStore.event(row.itemIdentifier);
    if (row.isReminder || (event && isEventBehind(row, event->data))) {
        services.scheduler.post(
            whileAlive([done = std::move(done), event](Private& self) { done(self, event); }));
        return;
    }
    const auto [start, end] = searchIntervalFor(row);
    services.eventStore.events(
        EKEventStore::predicateForEvents(start, end, std::nullopt),
        whileAlive([row, done = std::move(done)](Private& self, const EKEvents& found) {
            const auto& events = found.events;
            const auto occurrence = std::find_if(events.begin(), events.end(), [&](const auto& candidate) {
                return isOccurrenceBehind(row, *candidate);
            });
            done(self, occurrence == events.end() ? nullptr : std::make_shared<EKEvent>(*occurrence));
        }));
}

void CalendarStore::Private::save(const EKEventRef& event, const char* notification,
                                  const RecordedChangeRef& recorded, const Completion& completion) {
    services.eventStore.save(
        event, EKSpan::thisEvent,
        whileAlive([notification, completion, recorded, identifier = event->data.calendarItemIdentifier](
                       Private& self, const tl::expected<EKSaveResult, EKError>& result) {
            self.endAction(recorded, identifier, result);
            if (result)
                self.changed(notification, completion);
            else if (completion)
                completion(tl::unexpected(CalendarError::from(result.error())));
        }));
}

void CalendarStore::Private::fail(const Completion& completion, const CalendarError& error) {
    services.scheduler.post(whileAlive([completion, error](Private&) {
        if (completion)
            completion(tl::unexpected(error));
    }));
}

void CalendarStore::Private::changed(const char* notification, const Completion& completion) {
    // The reload is what observe() does about it.
    services.notifications.post(QString::fromLatin1(notification));
    if (completion)
        completion({});
}

void CalendarStore::Private::removed(const CalendarEventItem& row, const Completion& completion) {
    const QList<CalendarDayGroup> groups = withoutRow(dayGroups, row.id, shownMode);
    if (groups != dayGroups)
        show(groups);
    changed(eventChangedNotification, completion);
}

EKEventStore::SaveCompletion CalendarStore::Private::removalEnd(const CalendarEventItem& row,
                                                                const RecordedChangeRef& recorded,
                                                                const Completion& completion) {
    return whileAlive(
        [row, recorded, completion](Private& self, const tl::expected<EKSaveResult, EKError>& result) {
            self.endAction(recorded, row.itemIdentifier, result);
            if (result || result.error().code == EKError::Code::itemNotFound)
                self.removed(row, completion);
            else if (completion)
                completion(tl::unexpected(CalendarError::from(result.error())));
        });
}

std::vector<EKCalendar> CalendarStore::writableCalendars() const {
    std::vector<EKCalendar> calendars = d_->services.eventStore.calendars(EKEntityType::event);
    std::erase_if(calendars, [](const EKCalendar& calendar) { return !calendar.allowsContentModifications; });
    return calendars;
}

bool CalendarStore::isWritable(const CalendarEventItem& row) const {
    EKEventStore& eventStore = d_->services.eventStore;
    QString calendar;
    if (row.isReminder) {
        if (const auto reminder = eventStore.calendarItem(reminderIdentifier(row.id).value_or(QString())))
            calendar = reminder->data.calendarIdentifier;
    } else if (const EKEventRef event = eventStore.event(row.itemIdentifier)) {
        calendar = event->data.calendarIdentifier;
    }
    const auto found = eventStore.calendarWithIdentifier(calendar);
    return !found || found->allowsContentModifications;
}

std::optional<EKCalendar> CalendarStore::defaultCalendar() const {
    const std::vector<EKCalendar> calendars = writableCalendars();
    auto chosen = d_->services.eventStore.defaultCalendarForNewEvents();
    if (chosen && std::find(calendars.begin(), calendars.end(), *chosen) != calendars.end())
        return chosen;
    return calendars.empty() ? std::nullopt : std::optional(calendars.front());
}

void CalendarStore::createEvent(const NewCalendarEvent& event, const Completion& completion) {
    if (!d_->isAuthorized()) {
        d_->fail(completion, {ErrorCode::notAuthorized});
        return;
    }
    auto data = newEventData(event, d_->services.calendar.calendar());
    if (!data) {
        d_->fail(completion, data.error());
        return;
    }
    const EKEventStore& eventStore = d_->services.eventStore;
    auto calendar = event.calendarID ? eventCalendar(eventStore, *event.calendarID) : std::nullopt;
    if (!calendar)
        calendar = eventStore.defaultCalendarForNewEvents();
    if (calendar)
        data->calendarIdentifier = calendar->calendarIdentifier;
    const auto created = std::make_shared<EKEvent>();
    created->data = std::move(*data);
    const auto recorded =
        d_->beginAction(text("Create event", "Créer l’événement"),
                        Private::outcomeOf(text("“%1” added", "« %1 » ajouté"), created->data.title,
                                           Private::OutcomeSubject::whole));
    d_->save(created, eventCreatedNotification, recorded, completion);
}

void CalendarStore::loadEditDetails(const CalendarEventItem& row, const DetailsCompletion& completion) {
    if (!completion)
        return;
    d_->findEvent(row, [completion](Private&, const EKEventRef& event) {
        if (event)
            completion(editDetails(event->data));
        else
            completion(tl::unexpected(CalendarError{ErrorCode::itemNotFound}));
    });
}

void CalendarStore::updateEvent(const CalendarEventItem& row, const CalendarEventEditDetails& details,
                                const Completion& completion) {
    if (!d_->isAuthorized()) {
        d_->fail(completion, {ErrorCode::notAuthorized});
        return;
    }
    const ZoneCalendar calendar = d_->services.calendar.calendar();
    auto valid = validated(details, calendar);
    if (valid && !eventCalendar(d_->services.eventStore, valid->calendarID))
        valid = tl::unexpected(CalendarError{ErrorCode::calendarUnavailable});
    if (!valid) {
        d_->fail(completion, valid.error());
        return;
    }
    const auto recorded = d_->beginAction(
        text("Edit event", "Modifier l’événement"),
        Private::outcomeOf(text("“%1” changed", "« %1 » modifié"), valid->title,
                           row.isRecurring && !row.isReminder ? Private::OutcomeSubject::oneOfSeries
                                                              : Private::OutcomeSubject::whole));
    d_->findEvent(row, [calendar, valid = std::move(*valid), recorded, completion](Private& self,
                                                                                   const EKEventRef& event) {
        if (!event) {
            self.endAction(recorded, {}, tl::unexpected(itemNotFoundError()));
            self.fail(completion, {ErrorCode::itemNotFound});
            return;
        }
        apply(valid, calendar, event->data);
        self.save(event, eventChangedNotification, recorded, completion);
    });
}

void CalendarStore::deleteItem(const CalendarEventItem& row, const Completion& completion) {
    if (!d_->isAuthorized()) {
        d_->fail(completion, {ErrorCode::notAuthorized});
        return;
    }
    const auto recorded = d_->beginAction(
        row.isReminder ? text("Delete reminder", "Supprimer le rappel")
                       : text("Delete event", "Supprimer l’événement"),
        Private::outcomeOf(text("“%1” deleted", "« %1 » supprimé"), row.title,
                           row.isRecurring && !row.isReminder ? Private::OutcomeSubject::oneOfSeries
                                                              : Private::OutcomeSubject::whole));
    if (row.isReminder) {
        const auto reminder =
            d_->services.eventStore.calendarItem(reminderIdentifier(row.id).value_or(QString()));
        if (reminder) {
            d_->services.eventStore.remove(reminder, d_->removalEnd(row, recorded, completion));
            return;
        }
        d_->services.scheduler.post(d_->whileAlive([row, recorded, completion](Private& self) {
            self.endAction(recorded, {}, tl::unexpected(itemNotFoundError()));
            self.removed(row, completion);
        }));
        return;
    }
    d_->findEvent(row, [row, recorded, completion](Private& self, const EKEventRef& event) {
        if (event) {
            self.services.eventStore.remove(event, EKSpan::thisEvent,
                                            self.removalEnd(row, recorded, completion));
            return;
        }
        self.endAction(recorded, {}, tl::unexpected(itemNotFoundError()));
        self.removed(row, completion);
    });
}

void CalendarStore::removeReminderFromCalendar(const CalendarEventItem& row, const Completion& completion) {
    if (!row.isReminder) {
        d_->fail(completion, {ErrorCode::itemNotFound});
        return;
    }
    d_->services.clearReminderDueDate(
        row.itemIdentifier,
        d_->whileAlive([row, completion](Private& self, const tl::expected<void, TextPair>& result) {
            if (result)
                self.removed(row, completion);
            else if (completion)
                completion(tl::unexpected(CalendarError{ErrorCode::database, result.error()}));
        }));
}

}  // namespace kestrant
