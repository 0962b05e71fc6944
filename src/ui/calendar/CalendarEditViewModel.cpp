#include "ui/calendar/CalendarEditViewModel.h"

#include "calendar/CalendarStore.h"
#include "ui/panel/Localizer.h"
#include "ui/settings/Choices.h"

#include <QPointer>

namespace kestrant {

CalendarEditViewModel::CalendarEditViewModel(CalendarStore& store, const Clock& clock,
                                             const CurrentTimeZone& currentZone, Localizer& localizer,
                                             QObject* parent)
    : FormViewModel(localizer, parent)
    , store_(store)
    , localizer_(localizer)
    , times_(clock, currentZone, localizer) {
    connect(&times_, &EventTimes::edited, this, &CalendarEditViewModel::edited);
}

int CalendarEditViewModel::begin(const QVariant& row) {
    beginForm();
    row_ = row.value<CalendarEventItem>();
    loaded_.reset();
    isRestored_ = false;
    isReadOnly_ = false;
    title_ = row_.title;
    calendarID_.clear();
    calendarTitle_ = row_.calendarTitle;
    calendarColor_ = toQColor(row_.calendarColor);
    location_ = row_.location.value_or(QString());
    notes_ = row_.notes.value_or(QString());
    times_.show({row_.startDate, row_.endDate, row_.isAllDay});
    Q_EMIT changed();
    store_.loadEditDetails(row_, [self = QPointer(this), form = form()](
                                     const tl::expected<CalendarEventEditDetails, CalendarError>& details) {
        if (!self || form != self->form())
            return;
        if (details)
            self->show(*details);
        else
            self->fail(details.error().message());
    });
    return form();
}

QString CalendarEditViewModel::lockReason() const {
    if (!isReadOnly_)
        return {};
    return localizer_(isAnswering_
                          ? text("This calendar is read-only.", "Ce calendrier est en lecture seule.")
                          : text("This calendar does not answer at the moment.",
                                 "Ce calendrier ne répond pas pour le moment."));
}

void CalendarEditViewModel::keep(int form) {
    if (form != this->form() || !loaded_ || isReadOnly_)
        return;
    const EventTimes::Span before{loaded_->startDate, loaded_->endDate, loaded_->isAllDay};
    draft_.keep(row_.id, *loaded_, details(times_.span().value_or(before)));
}

void CalendarEditViewModel::discard() {
    draft_.discard();
    end(form());
}

void CalendarEditViewModel::show(const CalendarEventEditDetails& present) {
    loaded_ = present;
    const auto written = draft_.writtenOver(row_.id, present);
    isRestored_ = written.has_value();
    const CalendarEventEditDetails details = written.value_or(present);
    title_ = details.title;
    location_ = details.location;
    notes_ = details.notes;
    calendarID_ = present.calendarID;
    const auto calendar = store_.calendar(present.calendarID);
    isReadOnly_ = !calendar || !calendar->allowsContentModifications;
    isAnswering_ = !calendar || calendar->isAnswering;
    times_.show({details.startDate, details.endDate, details.isAllDay});
    if (details.calendarID != present.calendarID)
        setCalendarId(details.calendarID);
    Q_EMIT changed();
}

void CalendarEditViewModel::setCalendarId(const QString& id) {
    const std::vector<EKCalendar> calendars = store_.writableCalendars();
    const EKCalendar* calendar = find(calendars, id);
    if (!calendar)
        return;
    calendarID_ = id;
    calendarTitle_ = calendar->title;
    calendarColor_ = eventColor(*calendar);
    edited();
}

void CalendarEditViewModel::save() {
    if (!canSave())
        return;
    const auto span = times_.span();
    if (!span)
        return fail(span.error());
    const CalendarEventEditDetails written = details(*span);
    if (written == *loaded_) {
        draft_.discard();
        Q_EMIT saved();
        return;
    }
    startSaving();
    store_.updateEvent(
        row_, written,
        [self = QPointer(this), form = form(), written](const tl::expected<void, CalendarError>& result) {
            if (self)
                self->finishSaving(form, written, result);
        });
}

CalendarEventEditDetails CalendarEditViewModel::details(const EventTimes::Span& span) const {
    return {.title = title_,
            .startDate = span.start,
            .endDate = span.end,
            .isAllDay = span.isAllDay,
            .calendarID = calendarID_,
            .location = location_,
            .notes = notes_};
}

void CalendarEditViewModel::finishSaving(int form, const CalendarEventEditDetails& written,
                                         const tl::expected<void, CalendarError>& result) {
    if (!FormViewModel::finishSaving(form, result))
        return;
    draft_.discard();
    loaded_ = written;
    Q_EMIT changed();
    Q_EMIT saved();
}

void CalendarEditViewModel::remove(const QVariant& row) {
    store_.deleteItem(row.value<CalendarEventItem>(),
                      [self = QPointer(this)](const tl::expected<void, CalendarError>& result) {
                          if (self)
                              self->finishRemoval(result);
                      });
}

void CalendarEditViewModel::detach(const QVariant& row) {
    store_.removeReminderFromCalendar(
        row.value<CalendarEventItem>(),
        [self = QPointer(this)](const tl::expected<void, CalendarError>& result) {
            if (self)
                self->finishRemoval(result);
        });
}

void CalendarEditViewModel::finishRemoval(const tl::expected<void, CalendarError>& result) {
    if (result)
        Q_EMIT removed();
    else
        Q_EMIT removalFailed(localizer_(result.error().message()));
}

bool CalendarEditViewModel::isReminder(const QVariant& row) const {
    return row.value<CalendarEventItem>().isReminder;
}

QString CalendarEditViewModel::reminderId(const QVariant& row) const {
    return row.value<CalendarEventItem>().itemIdentifier;
}

QString CalendarEditViewModel::titleOf(const QVariant& row) const {
    return row.value<CalendarEventItem>().title;
}

bool CalendarEditViewModel::isWritable(const QVariant& row) const {
    return store_.isWritable(row.value<CalendarEventItem>());
}

bool CalendarEditViewModel::isRecurring(const QVariant& row) const {
    return row.value<CalendarEventItem>().isRecurring;
}

QString CalendarEditViewModel::calendarTitleOf(const QVariant& row) const {
    return row.value<CalendarEventItem>().calendarTitle;
}

QVariantList CalendarEditViewModel::calendars() const {
    return choices(store_.writableCalendars());
}

}  // namespace kestrant
