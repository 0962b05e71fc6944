#include "ui/calendar/CalendarRowTexts.h"

#include <algorithm>

namespace kestrant {
namespace {

constexpr int daysOfAWeek = 7;

QString dayText(QDate day, QDate seenFrom, const TimeStyle& style) {
    const bool isNear = seenFrom.daysTo(day) < daysOfAWeek;
    return style.dates.toString(day, isNear ? QStringLiteral("ddd") : QStringLiteral("d MMM"));
}

QString until(const QString& when, const TimeStyle& style) {
    return text("until %1", "jusqu’à %1").in(style.language).arg(when);
}

QString timeText(QTime time, const TimeStyle& style) {
    return clockText(time, style.hours);
}

QString dash(const QString& start, const QString& end) {
    return start + QStringLiteral(" – ") + end;
}

}  // namespace

TimeStyle timeStyle(const TimeZone& zone, Language language, const QLocale& dates, const QLocale& personal) {
    return {zone, language, dates, clockHours(language, personal)};
}

QString timeText(Instant instant, const TimeStyle& style) {
    return timeText(style.zone.timeOf(instant), style);
}

RowTimeTexts rowTimeTexts(const CalendarEventItem& row, QDate day, const TimeStyle& style) {
    // The end is excluded, and an event without length has its start.
    const Instant lastInstant = std::max(row.startDate, row.endDate - Duration(1));
    const QDate first = style.zone.dayOf(row.startDate);
    const QDate last = style.zone.dayOf(lastInstant);
    const QString wholeDay = text("all day", "journée").in(style.language);
    if (row.isAllDay) {
        if (row.isReminder || day >= last)
            return {text("all day", "toute la journée").in(style.language), wholeDay};
        return {until(dayText(last, day, style), style), wholeDay};
    }
    const QTime start = style.zone.timeOf(row.startDate);
    const QTime end = style.zone.timeOf(row.endDate);
    if (first == last) {
        // A reminder is a moment: its length is only for its place among the rows.
        if (row.isReminder || row.endDate <= row.startDate)
            return {timeText(start, style), timeText(start, style)};
        // The half of the day is told once where it is the same.
        const bool isSameHalf = (start.hour() < 12) == (end.hour() < 12);
        const QString begin = timeText(start, style);
        return {dash(isSameHalf ? begin.section(QChar::Nbsp, 0, 0) : begin, timeText(end, style)), begin};
    }
    if (day <= first)
        return {dash(timeText(start, style),
                     dayText(style.zone.dayOf(row.endDate), day, style) + u' ' + timeText(end, style)),
                timeText(start, style)};
    if (day < last)
        return {until(dayText(last, day, style), style), wholeDay};
    return {until(timeText(end, style), style), QStringLiteral("– ") + timeText(end, style)};
}

}  // namespace kestrant
