#include "calendar/CalendarWriter.h"

#include "calendar/CalendarLoader.h"
#include "calendar/CalendarRows.h"
#include "calendar/CalendarStore.h"
#include "calendar/CalendarStoreServices.h"
#include "eventkit/model/EKErrors.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/NotificationCenter.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

using ErrorCode = CalendarError::Code;

std::optional<EKCalendar> eventCalendar(const EKEventStore& store, const QString& identifier) {
    auto calendar = store.calendarWithIdentifier(identifier);
    return calendar && calendar->allowsEvents ? calendar : std::nullopt;
}

/// The sentence with the title in it.
TextPair outcomeOf(const TextPair& sentence, const QString& title) {
    const QString name = title.simplified();
    constexpr qsizetype longest = 60;
    const QString shown = name.size() > longest ? name.first(longest - 1) + u'…' : name;
    return {sentence.english.arg(shown), sentence.french.arg(shown)};
}

/// The same of a row, with the words for one occurrence of a series.
TextPair outcomeOf(const TextPair& sentence, const QString& title, const CalendarEventItem& row) {
    TextPair outcome = outcomeOf(sentence, title);
    if (row.isRecurring && !row.isReminder) {
        outcome.english += QStringLiteral(", only this one of its series");
        outcome.french += QStringLiteral(", seulement celui-ci de sa série");
    }
    return outcome;
}

}  // namespace

CalendarWriter::CalendarWriter(const CalendarStoreServices& services, const CalendarLoader& loader,
                               RecordedEventChanges& recorder)
    : services_(services)
    , loader_(loader)
    , recorder_(recorder) {
    connect(&recorder_, &RecordedEventChanges::replayed, this,
            [this] { changed(CalendarStore::eventChangedNotification, {}); });
}

void CalendarWriter::findEvent(const CalendarEventItem& row, Found done) {
    EKEventRef event = row.isReminder ? nullptr : services_.eventStore.event(row.itemIdentifier);
    if (row.isReminder || (event && isEventBehind(row, event->data))) {
        services_.scheduler.post([self = QPointer(this), done = std::move(done), event] {
            if (self)
                done(event);
        });
        return;
    }
    const auto [start, end] = searchIntervalFor(row);
    services_.eventStore.events(
        EKEventStore::predicateForEvents(start, end, std::nullopt),
        [self = QPointer(this), row, done = std::move(done)](const EKEvents& found) {
            if (!self)
                return;
            const auto& events = found.events;
            const auto occurrence = std::find_if(events.begin(), events.end(), [&](const auto& candidate) {
                return isOccurrenceBehind(row, *candidate);
            });
            done(occurrence == events.end() ? nullptr : std::make_shared<EKEvent>(*occurrence));
        });
}

void CalendarWriter::save(const EKEventRef& event, const char* notification,
                          const RecordedEventChangeRef& recorded, const Completion& completion,
                          const Completion& known) {
    const auto tell = [self = QPointer(this), notification](const Completion& told, const Result& result) {
        if (self && result)
            self->changed(notification, told);
        else if (self && told)
            told(tl::unexpected(CalendarError::from(result.error())));
    };
    services_.eventStore.save(
        event, EKSpan::thisEvent,
        [self = QPointer(this), recorded, completion, known, tell](const Result& result) {
            if (!self)
                return;
            self->recorder_.end(recorded, result, [tell, known](const Result& late) { tell(known, late); });
            tell(completion, result);
        });
}

void CalendarWriter::fail(const Completion& completion, const CalendarError& error) {
    services_.scheduler.post([self = QPointer(this), completion, error] {
        if (self && completion)
            completion(tl::unexpected(error));
    });
}

void CalendarWriter::changed(const char* notification, const Completion& completion) {
    // Views of the calendar reload it.
    services_.notifications.post(QString::fromLatin1(notification));
    if (completion)
        completion({});
}

void CalendarWriter::endRemoval(const CalendarEventItem& row, const RecordedEventChangeRef& recorded,
                                const Completion& completion, const Result& result) {
    recorder_.end(recorded, result);
    if (result || result.error().code == EKError::Code::itemNotFound)
        rowRemoved(row, completion);
    else if (completion)
        completion(tl::unexpected(CalendarError::from(result.error())));
}

void CalendarWriter::rowRemoved(const CalendarEventItem& row, const Completion& completion) {
    Q_EMIT removed(row.id);
    changed(CalendarStore::eventChangedNotification, completion);
}

std::optional<EKCalendar> CalendarWriter::calendar(const QString& identifier) const {
    return eventCalendar(services_.eventStore, identifier);
}

std::vector<EKCalendar> CalendarWriter::writableCalendars() const {
    std::vector<EKCalendar> calendars = services_.eventStore.calendars(EKEntityType::event);
    std::erase_if(calendars, [](const EKCalendar& calendar) { return !calendar.allowsContentModifications; });
    return calendars;
}

bool CalendarWriter::isWritable(const CalendarEventItem& row) const {
    EKEventStore& eventStore = services_.eventStore;
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

std::optional<EKCalendar> CalendarWriter::defaultCalendar() const {
    const std::vector<EKCalendar> calendars = writableCalendars();
    auto chosen = services_.eventStore.defaultCalendarForNewEvents();
    if (chosen && std::find(calendars.begin(), calendars.end(), *chosen) != calendars.end())
        return chosen;
    return calendars.empty() ? std::nullopt : std::optional(calendars.front());
}

void CalendarWriter::createEvent(const NewCalendarEvent& event, const Completion& completion,
                                 const Completion& known) {
    if (!loader_.isAuthorized())
        return fail(completion, {ErrorCode::notAuthorized});
    auto data = newEventData(event, services_.currentZone.zone());
    if (!data)
        return fail(completion, data.error());
    const EKEventStore& eventStore = services_.eventStore;
    auto calendar = event.calendarID ? eventCalendar(eventStore, *event.calendarID) : std::nullopt;
    if (!calendar)
        calendar = eventStore.defaultCalendarForNewEvents();
    if (calendar)
        data->calendarIdentifier = calendar->calendarIdentifier;
    const auto created = std::make_shared<EKEvent>();
    created->data = std::move(*data);
    const auto recorded =
        recorder_.begin(text("Create event", "Créer l’événement"),
                        outcomeOf(text("“%1” added", "« %1 » ajouté"), created->data.title));
    save(created, CalendarStore::eventCreatedNotification, recorded, completion, known);
}

void CalendarWriter::loadEvent(const CalendarEventItem& row, const EventCompletion& completion) {
    if (!completion)
        return;
    findEvent(row, [completion](const EKEventRef& event) {
        if (event)
            completion(event->data);
        else
            completion(tl::unexpected(CalendarError{ErrorCode::itemNotFound}));
    });
}

void CalendarWriter::loadEditDetails(const CalendarEventItem& row, const DetailsCompletion& completion) {
    if (completion)
        loadEvent(row, [completion](const auto& event) { completion(event.map(editDetails)); });
}

void CalendarWriter::updateEvent(const CalendarEventItem& row, const CalendarEventEditDetails& details,
                                 const Completion& completion) {
    if (!loader_.isAuthorized())
        return fail(completion, {ErrorCode::notAuthorized});
    const TimeZone zone = services_.currentZone.zone();
    auto valid = validated(details, zone);
    if (valid && !eventCalendar(services_.eventStore, valid->calendarID))
        valid = tl::unexpected(CalendarError{ErrorCode::calendarUnavailable});
    if (!valid)
        return fail(completion, valid.error());
    const auto recorded =
        recorder_.begin(text("Edit event", "Modifier l’événement"),
                        outcomeOf(text("“%1” changed", "« %1 » modifié"), valid->title, row));
    findEvent(row, [this, zone, valid = std::move(*valid), recorded, completion](const EKEventRef& event) {
        if (!event) {
            recorder_.end(recorded, tl::unexpected(itemNotFoundError()));
            fail(completion, {ErrorCode::itemNotFound});
            return;
        }
        apply(valid, zone, event->data);
        save(event, CalendarStore::eventChangedNotification, recorded, completion);
    });
}

void CalendarWriter::deleteItem(const CalendarEventItem& row, const Completion& completion) {
    if (!loader_.isAuthorized())
        return fail(completion, {ErrorCode::notAuthorized});
    const auto recorded = recorder_.begin(row.isReminder ? text("Delete reminder", "Supprimer le rappel")
                                                         : text("Delete event", "Supprimer l’événement"),
                                          outcomeOf(text("“%1” deleted", "« %1 » supprimé"), row.title, row));
    const auto end = [self = QPointer(this), row, recorded, completion](const Result& result) {
        if (self)
            self->endRemoval(row, recorded, completion, result);
    };
    if (row.isReminder) {
        EKEventStore& eventStore = services_.eventStore;
        if (const auto reminder = eventStore.calendarItem(reminderIdentifier(row.id).value_or(QString())))
            eventStore.remove(reminder, end);
        else
            services_.scheduler.post([end] { end(tl::unexpected(itemNotFoundError())); });
        return;
    }
    findEvent(row, [this, end](const EKEventRef& event) {
        if (event)
            services_.eventStore.remove(event, EKSpan::thisEvent, end);
        else
            end(tl::unexpected(itemNotFoundError()));
    });
}

void CalendarWriter::removeReminderFromCalendar(const CalendarEventItem& row, const Completion& completion) {
    if (!row.isReminder)
        return fail(completion, {ErrorCode::itemNotFound});
    services_.clearReminderDueDate(row.itemIdentifier, [self = QPointer(this), row, completion](
                                                           const tl::expected<void, TextPair>& result) {
        if (!self)
            return;
        if (result)
            self->rowRemoved(row, completion);
        else if (completion)
            completion(tl::unexpected(CalendarError{ErrorCode::database, result.error()}));
    });
}

}  // namespace kestrant
