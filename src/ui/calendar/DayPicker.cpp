#include "ui/calendar/DayPicker.h"

#include "ui/calendar/Capitalized.h"
#include "ui/panel/Localizer.h"

namespace kestrant {
namespace {

constexpr int daysShown = 42;

QString iso(QDate day) {
    return day.isValid() ? day.toString(Qt::ISODate) : QString();
}

}  // namespace

DayPicker::DayPicker(const Clock& clock, const CurrentTimeZone& currentZone, const Localizer& localizer,
                     QObject* parent)
    : QObject(parent)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer) {
    showMonthOfDay();
    connect(&localizer, &Localizer::languageChanged, this, &DayPicker::refresh);
}

QDate DayPicker::currentDay() const {
    return currentZone_.zone().dayOf(clock_.now());
}

void DayPicker::refresh() {
    Q_EMIT monthChanged();
    Q_EMIT textChanged();
}

void DayPicker::setDay(QDate day) {
    if (day.isValid())
        showMonthOf(day);
    if (day == day_)
        return;
    day_ = day;
    Q_EMIT dayChanged();
    Q_EMIT textChanged();
}

void DayPicker::showMonthOfDay() {
    showMonthOf(day_.isValid() ? day_ : currentDay());
}

void DayPicker::showMonthOf(QDate day) {
    const QDate first = day.addDays(1 - day.day());
    if (first == firstOfMonth_)
        return;
    firstOfMonth_ = first;
    Q_EMIT monthChanged();
}

void DayPicker::showMonth(int monthsLater) {
    showMonthOf(firstOfMonth_.addMonths(monthsLater));
}

void DayPicker::moveDay(int days, int months) {
    setDay((day_.isValid() ? day_ : currentDay()).addMonths(months).addDays(days));
}

QString DayPicker::isoDay() const {
    return iso(day_);
}

void DayPicker::setIsoDay(const QString& text) {
    setDay(QDate::fromString(text, Qt::ISODate));
}

QString DayPicker::text() const {
    if (!day_.isValid())
        return {};
    return capitalized(localizer_.locale().toString(day_, day_.year() == currentDay().year()
                                                              ? QStringLiteral("ddd d MMM")
                                                              : QStringLiteral("ddd d MMM yyyy")));
}

QString DayPicker::monthTitle() const {
    return capitalized(localizer_.locale().toString(firstOfMonth_, QStringLiteral("MMMM yyyy")));
}

QVariantList DayPicker::weekdays() const {
    const QLocale locale = localizer_.locale();
    QVariantList names;
    for (int offset = 0; offset < 7; ++offset) {
        const int day = (locale.firstDayOfWeek() - 1 + offset) % 7 + 1;
        names.append(QVariantMap{
            {QStringLiteral("narrow"), locale.standaloneDayName(day, QLocale::NarrowFormat).toUpper()},
            {QStringLiteral("full"), locale.standaloneDayName(day, QLocale::LongFormat)}});
    }
    return names;
}

QVariantList DayPicker::days() const {
    const QLocale locale = localizer_.locale();
    const QDate now = currentDay();
    const int leading = (firstOfMonth_.dayOfWeek() - locale.firstDayOfWeek() + 7) % 7;
    QVariantList days;
    for (int index = 0; index < daysShown; ++index) {
        const QDate day = firstOfMonth_.addDays(index - leading);
        days.append(QVariantMap{{QStringLiteral("iso"), iso(day)},
                                {QStringLiteral("day"), day.day()},
                                {QStringLiteral("isInMonth"), day.month() == firstOfMonth_.month()},
                                {QStringLiteral("isToday"), day == now},
                                {QStringLiteral("spoken"), locale.toString(day, QLocale::LongFormat)}});
    }
    return days;
}

QString DayPicker::today() const {
    return iso(currentDay());
}

QString DayPicker::tomorrow() const {
    return iso(currentDay().addDays(1));
}

QString DayPicker::weekend() const {
    const QDate now = currentDay();
    const int days = Qt::Saturday - now.dayOfWeek();
    return iso(now.addDays(days > 0 ? days : days + 7));
}

QString DayPicker::nextWeek() const {
    const QDate now = currentDay();
    return iso(now.addDays(8 - now.dayOfWeek()));
}

}  // namespace kestrant
