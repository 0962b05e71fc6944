#include "ui/CalendarRowTexts.h"

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

/// The time of day alone, and the half of the day where there are halves.
QString clockText(QTime time, const TimeStyle& style) {
    if (!style.twelveHours)
        return time.toString(QStringLiteral("HH:mm"));
    const int hour = time.hour() % 12;
    return QString::number(hour == 0 ? 12 : hour) + time.toString(QStringLiteral(":mm"));
}

QString halfText(QTime time, const TimeStyle& style) {
    if (!style.twelveHours)
        return {};
    return QChar(QChar::Nbsp) + (time.hour() < 12 ? QStringLiteral("AM") : QStringLiteral("PM"));
}

QString timeText(QTime time, const TimeStyle& style) {
    return clockText(time, style) + halfText(time, style);
}

QString dash(const QString& start, const QString& end) {
    return start + QStringLiteral(" – ") + end;
}

}  // namespace

TimeStyle timeStyle(const ZoneCalendar& calendar, Language language, const QLocale& dates,
                    const QLocale& personal) {
    const bool hasHalves =
        personal.timeFormat(QLocale::ShortFormat).contains(QLatin1String("ap"), Qt::CaseInsensitive);
    return {calendar, language, dates, language == Language::english && hasHalves};
}

QString timeText(Instant instant, const TimeStyle& style) {
    return timeText(style.calendar.timeOf(instant), style);
}

RowTimeTexts rowTimeTexts(const CalendarEventItem& row, QDate day, const TimeStyle& style) {
    // The end is excluded, and an event without length has its start.
    const Instant lastInstant = std::max(row.startDate, row.endDate - Duration(1));
    const QDate first = style.calendar.dayOf(row.startDate);
    const QDate last = style.calendar.dayOf(lastInstant);
    if (row.isAllDay) {
        if (row.isReminder || day >= last)
            return {text("all day", "toute la journée").in(style.language), {}};
        const QString words = until(dayText(last, day, style), style);
        return {words, words};
    }
    const QTime start = style.calendar.timeOf(row.startDate);
    const QTime end = style.calendar.timeOf(row.endDate);
    if (first == last) {
        if (row.endDate <= row.startDate)
            return {timeText(start, style), timeText(start, style)};
        const bool sameHalf = halfText(start, style) == halfText(end, style);
        return {dash(sameHalf ? clockText(start, style) : timeText(start, style), timeText(end, style)),
                timeText(start, style)};
    }
    if (day <= first)
        return {dash(timeText(start, style),
                     dayText(style.calendar.dayOf(row.endDate), day, style) + u' ' + timeText(end, style)),
                timeText(start, style)};
    const QString words = until(day < last ? dayText(last, day, style) : timeText(end, style), style);
    return {words, words};
}

}  // namespace kestrant
