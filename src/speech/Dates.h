#pragma once

#include <QDate>

namespace kestrant::speech {

/// The next date with these parts from `from` on; 0 for what is open.
[[nodiscard]] QDate nextDate(QDate from, int month, int monthDay, int weekday = 0);
/// The next such day of the week behind a day.
[[nodiscard]] inline QDate nextWeekday(QDate day, int weekday) {
    return day.addDays((weekday - day.dayOfWeek() + 6) % 7 + 1);
}
/// Which of the weekdays of a span of days; -1 the last one. Invalid where there is none.
[[nodiscard]] QDate nthWeekday(QDate first, QDate last, int weekday, int nth);
/// Whether a feast is on the same date every year.
[[nodiscard]] bool isFixedFeast(int number);
/// Feasts by the numbers of the language files, in a year.
[[nodiscard]] QDate feast(int number, int year);

}  // namespace kestrant::speech
