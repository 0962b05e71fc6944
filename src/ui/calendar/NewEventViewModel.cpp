#include "ui/calendar/NewEventViewModel.h"

#include "calendar/CalendarStore.h"
#include "reminders/model/ReminderAlerts.h"
#include "reminders/quickadd/QuickAddParser.h"
#include "ui/panel/Localizer.h"
#include "ui/reminders/RepeatChoices.h"
#include "ui/reminders/SpokenWords.h"
#include "ui/settings/Choices.h"

#include <QPointer>

#include <chrono>
#include <utility>
#include <vector>

namespace kestrant {
namespace {

using PieceKind = speech::Piece::Kind;

}  // namespace

NewEventViewModel::NewEventViewModel(CalendarStore& store, const Clock& clock,
                                     const CurrentTimeZone& currentZone, Localizer& localizer,
                                     std::function<QLocale()> locale, QObject* parent)
    : FormViewModel(localizer, parent)
    , store_(store)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer)
    , locale_(std::move(locale))
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
    if (!leaveForm())
        return;
    clearError();
    title_.clear();
    spoken_ = {};
    refused_.clear();
    accepted_.clear();
    times_.showNextHalfHour();
    Q_EMIT changed();
}

void NewEventViewModel::setTitle(const QString& title) {
    if (title == title_)
        return;
    title_ = title;
    // Words typed anew may be meant otherwise.
    for (QStringList* words : {&refused_, &accepted_})
        words->removeIf([this](const QString& each) { return !title_.contains(each); });
    understand();
    edited();
}

void NewEventViewModel::understand() {
    const std::vector<EKCalendar> calendars = store_.writableCalendars();
    const speech::Present present = presentFor({.now = clock_.now(),
                                                .zone = currentZone_.zone(),
                                                .language = localizer_.language(),
                                                .lists = {},
                                                .locale = locale_()});
    const SpokenEvent before =
        std::exchange(spoken_, readEvent(title_, present, calendars, rangesOf(refused_, title_),
                                         rangesOf(accepted_, title_)));
    const auto spanOf = [](const SpokenEvent& spoken) {
        return spoken.event ? std::optional(EventTimes::Span{spoken.event->startDate, spoken.event->endDate,
                                                             spoken.event->isAllDay})
                            : std::nullopt;
    };
    const auto span = spanOf(spoken_);
    if (span != spanOf(before)) {
        if (span)
            times_.show(*span);
        else
            times_.showNextHalfHour();
    }
    const auto calendarOf = [](const SpokenEvent& spoken) {
        return spoken.event ? spoken.event->calendarID.value_or(QString()) : QString();
    };
    if (calendarOf(spoken_) != calendarOf(before))
        chosenCalendarID_ = calendarOf(spoken_);
}

QVariantList NewEventViewModel::pieces() const {
    // A line that is not an event yet is a title.
    return spoken_.event ? coloredWords(title_, spoken_.line.pieces) : QVariantList();
}

QVariantList NewEventViewModel::offers() const {
    QVariantList result;
    for (const auto& offer : spoken_.line.offers)
        if (!offer.rule.isEmpty())
            result.append(QVariantMap{
                {QStringLiteral("kind"), kindOf(PieceKind::repeat)},
                {QStringLiteral("words"), title_.mid(offer.range.start, offer.range.length)},
                {QStringLiteral("title"), repeatTitle({EKRecurrenceRule::parse(offer.rule)}, localizer_)}});
    return result;
}

void NewEventViewModel::accept(const QString& words) {
    accepted_.append(words);
    understand();
    edited();
}

QString NewEventViewModel::completion() const {
    if (const QString begun = begunTitle(title_, spoken_.line.pieces); !begun.isEmpty()) {
        for (const CalendarDayGroup& day : store_.dayGroups())
            for (const CalendarEventItem& item : day.events)
                if (QString rest = restOf(item.title, begun); !rest.isEmpty())
                    return rest;
    }
    const QString begun = begunList(title_);
    for (const EKCalendar& calendar : store_.writableCalendars())
        if (QString rest = restOf(calendar.title, begun); !rest.isEmpty())
            return rest;
    return {};
}

QVariantList NewEventViewModel::facts() const {
    QVariantList result;
    if (!spoken_.event)
        return result;
    const NewCalendarEvent& event = *spoken_.event;
    const auto add = [&](PieceKind kind, const QString& title) {
        if (!title.isEmpty())
            result.append(
                QVariantMap{{QStringLiteral("kind"), kindOf(kind)}, {QStringLiteral("title"), title}});
    };
    add(PieceKind::zone, zoneText(spoken_.line.timeInZone, spoken_.line.zone, localizer_));
    add(PieceKind::place, event.location);
    if (event.rule)
        add(PieceKind::repeat, repeatTitle({*event.rule}, localizer_));
    if (event.alert) {
        const RelativeToDueTime before{-std::chrono::duration<double>(*event.alert).count()};
        add(PieceKind::alert, localizer_(label(before, localizer_.clockHours())));
    }
    add(PieceKind::link, event.url);
    add(PieceKind::note, event.notes);
    return result;
}

void NewEventViewModel::takeBack(const QString& kind) {
    for (const speech::Piece& piece : spoken_.line.pieces)
        if (kindOf(piece.kind) == kind)
            refused_.append(title_.mid(piece.range.start, piece.range.length));
    understand();
    edited();
}

void NewEventViewModel::submit() {
    if (isSaving())
        return;
    const auto span = times_.span();
    if (!span)
        return fail(span.error());
    NewCalendarEvent event = spoken_.event.value_or(NewCalendarEvent{.title = title_});
    event.startDate = span->start;
    event.endDate = span->end;
    event.isAllDay = span->isAllDay;
    if (const auto shown = calendar())
        event.calendarID = shown->calendarIdentifier;
    startSaving();
    const auto end = [self = QPointer(this), form = form(),
                      line = title_](const tl::expected<void, CalendarError>& result) {
        if (!self)
            return;
        if (self->finishCreation(form, result)) {
            self->discard();
            Q_EMIT self->added();
        } else if (!result && !isUnknown(result) && self->title_.isEmpty()) {
            // The form was given up before this was known.
            self->setTitle(line);
            self->fail(result.error().message());
        }
    };
    store_.createEvent(event, end, end);
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
