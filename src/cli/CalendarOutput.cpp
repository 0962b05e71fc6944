#include "cli/CalendarOutput.h"

#include "foundation/ClockText.h"
#include "foundation/ControlCharacters.h"
#include "reminders/model/ReminderAlerts.h"
#include "reminders/model/ReminderDueText.h"
#include "reminders/model/ReminderRepeat.h"

#include <QJsonObject>

#include <chrono>

namespace kestrant {

namespace {

const QString indent = QStringLiteral("  ");

QJsonObject rowAsJson(const CalendarEventItem& row) {
    return {{QStringLiteral("id"), row.id},
            {QStringLiteral("itemIdentifier"), row.itemIdentifier},
            {QStringLiteral("title"), row.title},
            {QStringLiteral("startDate"), toIso8601(row.startDate)},
            {QStringLiteral("endDate"), toIso8601(row.endDate)},
            {QStringLiteral("isAllDay"), row.isAllDay},
            {QStringLiteral("calendarTitle"), row.calendarTitle},
            {QStringLiteral("location"), textAsJson(row.location)},
            {QStringLiteral("notes"), textAsJson(row.notes)},
            {QStringLiteral("isHappeningNow"), row.isHappeningNow},
            {QStringLiteral("isReminder"), row.isReminder}};
}

QString timeText(const CalendarEventItem& row, const CalendarDayGroup& day, const OutputContext& context) {
    if (row.isAllDay)
        return text("All day", "Journée").in(context.language);
    const auto clock = [&](Instant instant) {
        return clockText(context.zone.timeOf(instant), context.hours);
    };
    if (row.isReminder || row.endDate == row.startDate)
        return clock(row.startDate);
    const bool beganEarlier = row.startDate < day.date;
    const bool endsLater = row.endDate > context.zone.startOfDay(day.day.addDays(1));
    if (beganEarlier && endsLater)
        return QStringLiteral("…");
    return beganEarlier
               ? QStringLiteral("…–") + clock(row.endDate)
               : clock(row.startDate) + u'–' + (endsLater ? QStringLiteral("…") : clock(row.endDate));
}

QString mark(const CalendarEventItem& row) {
    if (row.isReminder)
        return QStringLiteral("○");
    return row.isHappeningNow ? QStringLiteral("▸") : QString();
}

}  // namespace

QJsonArray dayGroupsAsJson(const QList<CalendarDayGroup>& groups) {
    QJsonArray result;
    for (const CalendarDayGroup& group : groups) {
        QJsonArray rows;
        for (const CalendarEventItem& row : group.events)
            rows.append(rowAsJson(row));
        result.append(QJsonObject{{QStringLiteral("date"), toIso8601(group.date)},
                                  {QStringLiteral("headerTitle"), group.headerTitle},
                                  {QStringLiteral("isToday"), group.isToday},
                                  {QStringLiteral("events"), rows}});
    }
    return result;
}

QString dayGroupsAsText(const QList<CalendarDayGroup>& groups, CalendarMode mode,
                        const OutputContext& context) {
    if (groups.isEmpty())
        return text("No upcoming events.\n", "Aucun événement à venir.\n").in(context.language);
    TextRows rows;
    for (const CalendarDayGroup& group : groups) {
        for (const CalendarEventItem& row : group.events)
            rows.push_back({timeText(row, group, context), mark(row), onOneLine(row.title),
                            onOneLine(row.location.value_or(QString())), onOneLine(row.calendarTitle),
                            onOneLine(row.id)});
    }
    // Title, place and calendar; the lines stand below their day.
    const auto lineWidth =
        context.lineWidth ? std::optional(*context.lineWidth - indent.size()) : std::nullopt;
    const QStringList lines = alignedLines(rows, {2, 3, 4}, lineWidth);
    QString result;
    auto line = lines.begin();
    for (const CalendarDayGroup& group : groups) {
        if (!result.isEmpty())
            result += u'\n';
        result += group.headerTitle;
        if (mode == CalendarMode::full)
            result += QStringLiteral(" · ") + context.dates.toString(group.day, QStringLiteral("MMMM yyyy"));
        result += u'\n';
        for (qsizetype row = 0; row < group.events.size(); ++row)
            result += indent + *line++ + u'\n';
    }
    return result;
}

QString eventAsTable(const NewCalendarEvent& event, const std::vector<EKCalendar>& calendars,
                     const OutputContext& context) {
    TextRows rows;
    const auto add = [&](const char* english, const char* french, const QString& value) {
        if (!value.isEmpty())
            rows.push_back({text(english, french).in(context.language), onOneLine(value)});
    };
    const auto moment = [&](Instant instant) {
        return reminderDueText(instant, !event.isAllDay, context.now, context.zone, context.language,
                               context.hours);
    };
    add("Title", "Titre", event.title);
    add("Start", "Début", moment(event.startDate));
    // The last day of whole days is the one before their end.
    const QDate lastDay = context.zone.dayOf(event.endDate).addDays(-1);
    if (!event.isAllDay)
        add("End", "Fin", moment(event.endDate));
    else if (lastDay != context.zone.dayOf(event.startDate))
        add("Last day", "Dernier jour", moment(context.zone.startOfDay(lastDay)));
    if (event.rule)
        add("Repeats", "Répétition", repeatInWords({*event.rule}, context.language));
    if (event.alert)
        add("Alert", "Alerte",
            label(RelativeToDueTime{-std::chrono::duration<double>(*event.alert).count()}, context.hours)
                .in(context.language));
    add("Location", "Lieu", event.location);
    for (const EKCalendar& calendar : calendars) {
        if (event.calendarID == calendar.calendarIdentifier)
            add("Calendar", "Calendrier", calendar.title);
    }
    add("Link", "Lien", event.url);
    add("Notes", "Notes", event.notes);
    return alignedText(rows);
}

}  // namespace kestrant
