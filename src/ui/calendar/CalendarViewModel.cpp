#include "ui/calendar/CalendarViewModel.h"

#include "calendar/CalendarRows.h"
#include "calendar/CalendarStore.h"
#include "ui/calendar/Capitalized.h"
#include "ui/panel/Localizer.h"
#include "ui/panel/PanelViewModel.h"
#include "ui/settings/Choices.h"

#include <algorithm>
#include <chrono>
#include <optional>

namespace kestrant {
namespace {

/// Up to then a time of day can be no other day's.
constexpr Duration unmistakable = std::chrono::hours(12);
/// How long before its start an event is worth a sign on the resting notch.
constexpr Duration soon = std::chrono::minutes(15);
constexpr int mostColorsOfADay = 4;

QColor colorOf(const CalendarEventItem& item) {
    return {item.calendarColor.red, item.calendarColor.green, item.calendarColor.blue};
}

/// Where the present lies between the timed rows of today: before the first that has not begun, or after the
/// last (-1 for neither). Nothing is marked before the first row of the day.
struct NowLine {
    int above = -1;
    int below = -1;
};

NowLine nowLineOf(const QList<CalendarEventItem>& rows, Instant now) {
    NowLine line;
    int lastBegun = -1;
    for (int index = 0; index < int(rows.size()); ++index) {
        const CalendarEventItem& row = rows.at(index);
        if (row.isAllDay)
            continue;
        if (row.startDate <= now) {
            lastBegun = index;
        } else {
            if (lastBegun >= 0)
                line.above = index;
            return line;
        }
    }
    line.below = lastBegun;
    return line;
}

/// "Today", "Tomorrow", "Monday".
QString dayName(QDate day, QDate today, const Localizer& localizer) {
    const Language language = localizer.language();
    if (day == today)
        return text("Today", "Aujourd’hui").in(language);
    if (day == today.addDays(1))
        return text("Tomorrow", "Demain").in(language);
    return capitalized(localizer.locale().toString(day, QStringLiteral("dddd")));
}

}  // namespace

CalendarViewModel::CalendarViewModel(CalendarStore& store, const Clock& clock,
                                     const CurrentTimeZone& currentZone, Localizer& localizer,
                                     PanelViewModel& panel, std::function<QLocale()> personalLocale,
                                     QObject* parent)
    : QObject(parent)
    , store_(store)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer)
    , panel_(panel)
    , personalLocale_(std::move(personalLocale))
    , rows_([this](const CalendarDayGroup& group, int event) { return presented(group, event); })
    , shownZone_(currentZone.zone()) {
    connect(&store, &CalendarStore::dayGroupsChanged, this, &CalendarViewModel::groupsChanged);
    connect(&store, &CalendarStore::accessStateChanged, this, &CalendarViewModel::updateContent);
    for (const auto signal : {&CalendarStore::isLoadingChanged, &CalendarStore::isLoadingMoreEventsChanged})
        connect(&store, signal, this, [this] {
            updateContent();
            Q_EMIT isLoadingChanged();
        });
    connect(&store, &CalendarStore::showsAllEventsChanged, this, &CalendarViewModel::showsAllEventsChanged);
    connect(&store, &CalendarStore::needsManualLoadChanged, this, &CalendarViewModel::needsManualLoadChanged);
    connect(&store, &CalendarStore::shortageChanged, this, &CalendarViewModel::shortageChanged);
    connect(&localizer, &Localizer::languageChanged, this, [this] {
        Q_EMIT shortageChanged();
        rows_.refreshTexts();
        updateNextEvent();
        Q_EMIT weekChanged();
        Q_EMIT contentChanged();
    });
    for (const auto signal : {&PanelViewModel::phaseChanged, &PanelViewModel::modulesChanged})
        connect(&panel, signal, this, &CalendarViewModel::updateNextEvent);
    groupsChanged();
}

void CalendarViewModel::groupsChanged() {
    const bool zoneDiffers = !(currentZone_.zone() == shownZone_);
    shownZone_ = currentZone_.zone();
    rows_.setGroups(store_.dayGroups());
    if (zoneDiffers)
        rows_.refreshTexts();
    updateContent();
    updateNextEvent();
    Q_EMIT weekChanged();
}

TimeStyle CalendarViewModel::style() const {
    return timeStyle(currentZone_.zone(), localizer_.language(), localizer_.locale(), personalLocale_());
}

CalendarRow CalendarViewModel::presented(const CalendarDayGroup& group, int event) const {
    CalendarRow row;
    row.day = group.day.toString(Qt::ISODate);
    row.isToday = group.isToday;
    const QString longDay = localizer_.locale().toString(group.day, QLocale::LongFormat);
    if (event < 0) {
        row.isHeading = true;
        row.title = group.headerTitle;
        if (store_.showsAllEvents())
            row.monthText = capitalized(localizer_.locale().toString(group.day, QStringLiteral("MMMM yyyy")));
        row.spokenText = longDay;
        return row;
    }

    const CalendarEventItem& item = group.events.at(event);
    const Instant now = clock_.now();
    const TimeStyle times = style();
    const RowTimeTexts texts = rowTimeTexts(item, group.day, times);
    const bool hasPassed = item.isAllDay     ? group.day < times.zone.dayOf(now)
                           : item.isReminder ? item.startDate < now
                                             : item.endDate <= now;
    row.id = item.id;
    row.title = item.title.simplified();
    row.spanText = texts.span;
    row.briefTimeText = texts.brief;
    row.place = item.location.value_or(QString()).simplified();
    row.calendarTitle = item.calendarTitle;
    row.color = colorOf(item);
    row.isAllDay = item.isAllDay;
    row.isReminder = item.isReminder;
    row.isOverdue = item.isReminder && hasPassed;
    row.isNow = item.isHappeningNow;
    row.isRecurring = item.isRecurring;
    row.hasNotes = item.notes && !item.notes->trimmed().isEmpty();
    row.isOver = !item.isReminder && hasPassed;
    row.canBeJoined = canBeJoined(item, now);
    if (row.isNow) {
        const auto length = std::chrono::duration<double>(item.endDate - item.startDate);
        row.progress = std::clamp(std::chrono::duration<double>(now - item.startDate) / length, 0.0, 1.0);
    }
    if (group.isToday) {
        const NowLine line = nowLineOf(group.events, now);
        row.nowLine = event == line.above   ? QStringLiteral("above")
                      : event == line.below ? QStringLiteral("below")
                                            : QString();
        if (!row.nowLine.isEmpty())
            row.nowText = timeText(now, times);
    }

    const Language language = localizer_.language();
    QStringList words{row.title};
    const auto say = [&](bool holds, const QString& what) {
        if (holds && !what.isEmpty())
            words.append(what);
    };
    say(row.isReminder, text("reminder", "rappel").in(language));
    say(true, row.spanText);
    say(row.isNow, text("now", "en cours").in(language));
    say(row.isOver, text("over", "terminé").in(language));
    say(row.canBeJoined, text("can be joined", "à rejoindre").in(language));
    say(row.isRecurring, text("repeats", "se répète").in(language));
    say(row.isOverdue, text("overdue", "en retard").in(language));
    say(true, row.place);
    say(true, row.calendarTitle);
    say(true, longDay);
    row.spokenText = words.join(QStringLiteral(", "));
    return row;
}

QString CalendarViewModel::computedContent() const {
    switch (store_.accessState().kind) {
    case CalendarAccessState::Kind::notDetermined:
        return QStringLiteral("loading");
    case CalendarAccessState::Kind::requesting:
        return QStringLiteral("requesting");
    case CalendarAccessState::Kind::denied:
        return QStringLiteral("denied");
    case CalendarAccessState::Kind::restricted:
        return QStringLiteral("restricted");
    case CalendarAccessState::Kind::failed:
        return QStringLiteral("failed");
    case CalendarAccessState::Kind::authorized:
        break;
    }
    if (rows_.count() > 0)
        return QStringLiteral("rows");
    return store_.hasLoaded() ? QStringLiteral("empty") : QStringLiteral("loading");
}

void CalendarViewModel::updateContent() {
    const QString content = computedContent();
    if (content == content_ && content != QLatin1String("failed"))
        return;
    content_ = content;
    Q_EMIT contentChanged();
}

void CalendarViewModel::updateNextEvent() {
    const auto next = store_.nextEvent();
    const bool isSoon = next && next->startDate - clock_.now() < unmistakable;
    panel_.setNextEventText(isSoon && panel_.showCalendar() ? timeText(next->startDate, style()) : QString());
    panel_.resting()->setEvent(panel_.showCalendar() ? restingEvent() : std::nullopt);
}

std::optional<RestingEvent> CalendarViewModel::restingEvent() const {
    const Instant now = clock_.now();
    const auto minutes = [](Duration span) {
        return int(std::chrono::ceil<std::chrono::minutes>(span).count());
    };
    const auto sign = [](const CalendarEventItem& event, int minutesLeft, bool hasBegun) {
        return RestingEvent{event.title, toQColor(event.calendarColor), minutesLeft, hasBegun};
    };
    if (const auto next = store_.nextEvent(); next && next->startDate - now <= soon)
        return sign(*next, minutes(next->startDate - now), false);
    for (const CalendarDayGroup& group : store_.dayGroups())
        for (const CalendarEventItem& event : group.events)
            if (event.isHappeningNow && event.endDate - now < unmistakable)
                return sign(event, minutes(event.endDate - now), true);
    return std::nullopt;
}

QString CalendarViewModel::failureText() const {
    return localizer_(store_.accessState().message);
}

QString CalendarViewModel::today() const {
    return currentZone_.zone().dayOf(clock_.now()).toString(Qt::ISODate);
}

QVariantList CalendarViewModel::week() const {
    const TimeZone zone = currentZone_.zone();
    const CalendarPresent present{clock_.now(), zone, localizer_.language(), {}};
    const DayRange days = compactDays(present);
    const QList<CalendarDayGroup>& groups = store_.dayGroups();
    QVariantList week;
    for (QDate day = days.first; day < days.end; day = day.addDays(1)) {
        const auto group =
            std::lower_bound(groups.begin(), groups.end(), day,
                             [](const CalendarDayGroup& each, QDate date) { return each.day < date; });
        QVariantList colors;
        if (group != groups.end() && group->day == day) {
            for (const CalendarEventItem& item : group->events.mid(0, mostColorsOfADay))
                colors.append(colorOf(item));
        }
        week.append(QVariantMap{{QStringLiteral("day"), day.toString(Qt::ISODate)},
                                {QStringLiteral("name"), dayName(day, days.first, localizer_)},
                                {QStringLiteral("number"), QString::number(day.day())},
                                {QStringLiteral("isToday"), day == days.first},
                                {QStringLiteral("colors"), colors}});
    }
    return week;
}

bool CalendarViewModel::showsAllEvents() const {
    return store_.showsAllEvents();
}

void CalendarViewModel::setShowsAllEvents(bool all) {
    store_.setShowsAllEvents(all);
}

bool CalendarViewModel::isLoading() const {
    return store_.isLoading() || store_.isLoadingMoreEvents();
}

bool CalendarViewModel::needsManualLoadEarlier() const {
    return store_.needsManualLoadEarlier();
}

bool CalendarViewModel::needsManualLoadLater() const {
    return store_.needsManualLoadLater();
}

QString CalendarViewModel::shortageText() const {
    const auto shortage = store_.shortage();
    return shortage ? localizer_(*shortage) : QString();
}

QVariant CalendarViewModel::row(int index) const {
    const CalendarEventItem* item = rows_.item(index);
    return item ? QVariant::fromValue(*item) : QVariant();
}

void CalendarViewModel::loadMore(bool earlier) {
    store_.loadMore(earlier);
}

void CalendarViewModel::refreshPresent() {
    rows_.refreshToday();
    updateNextEvent();
}

void CalendarViewModel::retry() {
    store_.requestAccess();
}

}  // namespace kestrant
