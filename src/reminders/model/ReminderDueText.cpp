#include "reminders/model/ReminderDueText.h"

#include <QLocale>

namespace kestrant {
namespace {

QString dayInWords(QDate day, QDate today, Language language) {
    const qint64 days = today.daysTo(day);
    if (days == 0)
        return text("Today", "Aujourd’hui").in(language);
    if (days == 1)
        return text("Tomorrow", "Demain").in(language);
    if (days == -1)
        return text("Yesterday", "Hier").in(language);
    QString words = dateInWords(day, today, language);
    words[0] = words[0].toUpper();
    return words;
}

}  // namespace

QString dateInWords(QDate day, QDate today, Language language) {
    const QLocale locale = language == Language::french ? QLocale(QLocale::French, QLocale::France)
                                                        : QLocale(QLocale::English, QLocale::UnitedStates);
    const bool thisYear = day.year() == today.year();
    return locale.toString(day, thisYear ? QStringLiteral("ddd d MMM") : QStringLiteral("ddd d MMM yyyy"));
}

QString reminderDueText(Instant dueDate, bool includesTime, Instant now, const TimeZone& zone,
                        Language language, ClockHours hours) {
    QString day = dayInWords(zone.dayOf(dueDate), zone.dayOf(now), language);
    if (!includesTime)
        return day;
    return day + QLatin1Char(' ') + clockText(zone.timeOf(dueDate), hours);
}

}  // namespace kestrant
