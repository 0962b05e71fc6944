#include "ui/calendar/NewEventViewModel.h"

#include "calendar/CalendarStore.h"
#include "ui/panel/Localizer.h"
#include "ui/settings/Choices.h"

#include <QPointer>

namespace kestrant {

NewEventViewModel::NewEventViewModel(CalendarStore& store, const Clock& clock,
                                     const CurrentTimeZone& currentZone, Localizer& localizer,
                                     QObject* parent)
    : FormViewModel(localizer, parent)
    , store_(store)
    , localizer_(localizer)
    , times_(clock, currentZone, localizer) {
    connect(&times_, &EventTimes::edited, this, &NewEventViewModel::edited);
    // Calendars come and go with what is loaded.
    connect(&store, &CalendarStore::isLoadingChanged, this, &NewEventViewModel::changed);
}

void NewEventViewModel::begin() {
    if (title_.trimmed().isEmpty())
        discard();
    else
        Q_EMIT changed();
}

void NewEventViewModel::discard() {
    if (isSaving())
        return;
    clearError();
    title_.clear();
    times_.showNextHalfHour();
    Q_EMIT changed();
}

void NewEventViewModel::submit() {
    if (isSaving())
        return;
    const auto span = times_.span();
    if (!span)
        return fail(span.error());
    NewCalendarEvent event{
        .title = title_, .startDate = span->start, .endDate = span->end, .isAllDay = span->isAllDay};
    if (const auto shown = calendar())
        event.calendarID = shown->calendarIdentifier;
    startSaving();
    store_.createEvent(
        event, [self = QPointer(this), form = form()](const tl::expected<void, CalendarError>& result) {
            if (!self || !self->finishSaving(form, result))
                return;
            self->discard();
            Q_EMIT self->added();
        });
}

std::optional<EKCalendar> NewEventViewModel::calendar() const {
    const std::vector<EKCalendar> calendars = store_.writableCalendars();
    if (const EKCalendar* chosen = find(calendars, chosenCalendarID_))
        return *chosen;
    return store_.defaultCalendar();
}

QString NewEventViewModel::calendarId() const {
    const auto shown = calendar();
    return shown ? shown->calendarIdentifier : QString();
}

void NewEventViewModel::setCalendarId(const QString& id) {
    chosenCalendarID_ = id;
    edited();
}

QString NewEventViewModel::calendarTitle() const {
    const auto shown = calendar();
    return shown ? shown->title : localizer_(text("New calendar", "Nouveau calendrier"));
}

QColor NewEventViewModel::calendarColor() const {
    const auto shown = calendar();
    return shown ? eventColor(*shown) : QColor(Qt::transparent);
}

QVariantList NewEventViewModel::calendars() const {
    return choices(store_.writableCalendars());
}

bool NewEventViewModel::canSubmit() const {
    return !isSaving() && !title_.trimmed().isEmpty();
}

}  // namespace kestrant
