#include "speech/Dates.h"

namespace kestrant::speech {
namespace {

/// The Sunday of Easter (Meeus, Jones, Butcher).
QDate easter(int year) {
    const int a = year % 19, b = year / 100, c = year % 100;
    const int d = b / 4, e = b % 4, f = (b + 8) / 25, g = (b - f + 1) / 3;
    const int h = (19 * a + b - d - g + 15) % 30, i = c / 4, k = c % 4;
    const int l = (32 + 2 * e + 2 * i - h - k) % 7, m = (a + 11 * h + 22 * l) / 451;
    const int n = h + l - 7 * m + 114;
    return {year, n / 31, n % 31 + 1};
}

}  // namespace

QDate nextDate(QDate from, int month, int monthDay, int weekday) {
    const int months = weekday != 0 ? 12 * 28 : 12 * 8;
    for (int ahead = 0; ahead <= months; ++ahead) {
        const QDate first = QDate(from.year(), from.month(), 1).addMonths(ahead);
        const QDate date(first.year(), first.month(), monthDay);
        if (date.isValid() && date >= from && (month == 0 || first.month() == month) &&
            (weekday == 0 || date.dayOfWeek() == weekday))
            return date;
    }
    return {};
}

QDate nthWeekday(QDate first, QDate last, int weekday, int nth) {
    const QDate earliest = first.addDays((weekday - first.dayOfWeek() + 7) % 7);
    const QDate latest = last.addDays(-((last.dayOfWeek() - weekday + 7) % 7));
    const QDate day = nth > 0 ? earliest.addDays(7 * (nth - 1)) : latest.addDays(7 * (nth + 1));
    return day >= first && day <= last ? day : QDate();
}

bool isFixedFeast(int number) {
    return feast(number, 2026).addYears(1) == feast(number, 2027) &&
           feast(number, 2027).addYears(1) == feast(number, 2028);
}

QDate feast(int number, int year) {
    switch (number) {
    case 1:
        return {year, 12, 24};
    case 2:
        return {year, 12, 25};
    case 3:
        return {year, 12, 26};
    case 4:
        return {year, 12, 31};
    case 5:
        return {year, 1, 1};
    case 6:
        return {year, 10, 31};
    case 7:
        return {year, 2, 14};
    case 8:
        return easter(year);
    case 9:
        return easter(year).addDays(1);
    case 10:
        return {year, 3, 17};
    case 11:
        return nthWeekday({year, 11, 1}, {year, 11, 30}, Qt::Thursday, 4);
    case 12:
        return easter(year).addDays(39);
    case 13:
        return easter(year).addDays(50);
    case 14:
        return easter(year).addDays(49);
    case 15:
        return {year, 11, 1};
    case 16:
        return {year, 11, 11};
    default:
        return {};
    }
}

}  // namespace kestrant::speech
