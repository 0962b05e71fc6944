#include "ui/calendar/EventDetailsViewModel.h"

#include "calendar/CalendarRows.h"
#include "calendar/CalendarStore.h"
#include "calendar/EventLinks.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "reminders/model/ReminderAlerts.h"
#include "reminders/model/ReminderRepeat.h"
#include "ui/calendar/CalendarRowTexts.h"
#include "ui/calendar/Capitalized.h"
#include "ui/panel/Localizer.h"
#include "ui/settings/Choices.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>
#include <QVariantMap>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace kestrant {
namespace {

/// How long before an event its time is counted in minutes.
constexpr Duration countedBefore = std::chrono::hours(1);

/// When an alarm rings, counted from the start: "15 min before".
QString alertWords(Duration before, const Localizer& localizer) {
    if (before == Duration::zero())
        return localizer(text("At the start", "Au début"));
    const double seconds = std::chrono::duration<double>(-before).count();
    return localizer(label(RelativeToDueTime{seconds}));
}

}  // namespace

EventDetailsViewModel::EventDetailsViewModel(CalendarStore& store, const Clock& clock,
                                             const CurrentTimeZone& currentZone, Localizer& localizer,
                                             std::function<QLocale()> personalLocale, QObject* parent)
    : QObject(parent)
    , store_(store)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer)
    , personalLocale_(std::move(personalLocale)) {
    connect(&localizer, &Localizer::languageChanged, this, &EventDetailsViewModel::changed);
    connect(this, &EventDetailsViewModel::changed, this, &EventDetailsViewModel::presentChanged);
}

void EventDetailsViewModel::show(const QVariant& row) {
    row_ = row.value<CalendarEventItem>();
    event_ = {};
    event_.location = row_.location;
    event_.notes = row_.notes;
    errorText_.clear();
    Q_EMIT changed();
    store_.loadEvent(row_, [self = QPointer(this), generation = ++generation_](
                               const tl::expected<EKEventData, CalendarError>& event) {
        if (!self || generation != self->generation_)
            return;
        if (event)
            self->event_ = *event;
        else
            self->errorText_ = self->localizer_(event.error().message());
        Q_EMIT self->changed();
    });
}

void EventDetailsViewModel::open(const QString& address) {
    if (isLink(address))
        Q_EMIT linkRequested(QUrl(address));
}

void EventDetailsViewModel::join(const QVariant& row) {
    open(row.value<CalendarEventItem>().meetingLink);
}

void EventDetailsViewModel::copy(const QString& address) {
    QGuiApplication::clipboard()->setText(address);
}

QColor EventDetailsViewModel::color() const {
    return toQColor(row_.calendarColor);
}

QString EventDetailsViewModel::timeText() const {
    const TimeStyle style =
        timeStyle(currentZone_.zone(), localizer_.language(), localizer_.locale(), personalLocale_());
    const QDate today = style.zone.dayOf(clock_.now());
    const auto dayText = [&](QDate day) {
        switch (today.daysTo(day)) {
        case -1:
            return localizer_(text("Yesterday", "Hier"));
        case 0:
            return localizer_(text("Today", "Aujourd’hui"));
        case 1:
            return localizer_(text("Tomorrow", "Demain"));
        default:
            return capitalized(style.dates.toString(day, day.year() == today.year()
                                                             ? QStringLiteral("ddd d MMM")
                                                             : QStringLiteral("ddd d MMM yyyy")));
        }
    };
    const QDate first = style.zone.dayOf(row_.startDate);
    const QDate last = style.zone.dayOf(std::max(row_.startDate, row_.endDate - Duration(1)));
    if (first == last)
        return dayText(first) + (row_.isAllDay ? QStringLiteral(", ") : QStringLiteral(" ")) +
               rowTimeTexts(row_, first, style).span;
    const auto edge = [&](QDate day, Instant instant) {
        return dayText(day) + (row_.isAllDay ? QString() : u' ' + kestrant::timeText(instant, style));
    };
    return edge(first, row_.startDate) + QStringLiteral(" – ") +
           edge(row_.isAllDay ? last : style.zone.dayOf(row_.endDate), row_.endDate);
}

QString EventDetailsViewModel::remainingText() const {
    const Instant now = clock_.now();
    if (row_.isAllDay || now >= row_.endDate || now < row_.startDate - countedBefore)
        return {};
    const auto minutes = [](Duration length) {
        return std::chrono::ceil<std::chrono::minutes>(length).count();
    };
    return now < row_.startDate
               ? localizer_(text("in %1 min", "dans %1 min")).arg(minutes(row_.startDate - now))
               : localizer_(text("%1 min left", "encore %1 min")).arg(minutes(row_.endDate - now));
}

QString EventDetailsViewModel::place() const {
    return event_.location ? event_.location->trimmed() : QString();
}

QString EventDetailsViewModel::notes() const {
    return event_.notes ? event_.notes->trimmed() : QString();
}

QVariantList EventDetailsViewModel::links() const {
    QStringList addresses;
    if (event_.url)
        addresses += linksIn(*event_.url);
    addresses += linksIn(place());
    addresses += linksIn(notes());
    if (!row_.meetingLink.isEmpty())
        addresses.prepend(row_.meetingLink);
    addresses.removeDuplicates();
    QVariantList links;
    for (const QString& address : std::as_const(addresses)) {
        QString shown = address;
        for (const char* scheme : {"https://", "http://", "mailto:", "tel:"}) {
            if (shown.startsWith(QLatin1String(scheme), Qt::CaseInsensitive))
                shown = shown.sliced(qsizetype(qstrlen(scheme)));
        }
        links.append(QVariantMap{{QStringLiteral("address"), address}, {QStringLiteral("text"), shown}});
    }
    return links;
}

QString EventDetailsViewModel::joinLink() const {
    return canBeJoined(row_, clock_.now()) ? row_.meetingLink : QString();
}

QString EventDetailsViewModel::repeatText() const {
    return event_.recurrenceRules.empty()
               ? QString()
               : capitalized(repeatInWords(event_.recurrenceRules, localizer_.language()));
}

QString EventDetailsViewModel::alertText() const {
    QStringList words;
    for (const EKAlarm& alarm : event_.alarms) {
        std::optional<Instant> rings = alarm.absoluteDate;
        if (!rings && alarm.relativeOffset)
            rings = (alarm.followsStart ? event_.startDate : event_.endDate) + *alarm.relativeOffset;
        if (rings && alarm.snoozedAlarm.isEmpty())
            words.append(alertWords(event_.startDate - *rings, localizer_));
    }
    words.removeDuplicates();
    return words.join(QStringLiteral(" · "));
}

bool EventDetailsViewModel::isWritable() const {
    return store_.isWritable(row_);
}

}  // namespace kestrant
