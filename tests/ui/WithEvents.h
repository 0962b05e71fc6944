#pragma once

#include "support/EventBuilders.h"
#include "ui/Program.h"

#include <chrono>

namespace kestrant::test {

/// A program, with or without its window, whose calendar a test fills. Days count from Saturday 21 November
/// 2026; times are those of Paris.
template <typename Base>
struct WithEvents : Base {
    static QDate day(int fromToday) { return QDate(2026, 11, 21).addDays(fromToday); }
    static QString isoDay(int fromToday) { return day(fromToday).toString(Qt::ISODate); }

    EventBuilder event(const char* title, int fromToday = 0) {
        const QString id = QString::fromUtf8(title) + QString::number(fromToday);
        return anEvent(qPrintable(id)).titled(QString::fromUtf8(title)).in(qPrintable(Base::home));
    }
    QString add(const char* title, int fromToday, QTime start, int minutes) {
        return Base::database.putEvent(
            event(title, fromToday)
                .lasting(at("Europe/Paris", day(fromToday), start), std::chrono::minutes(minutes)));
    }
    QString addAllDay(const char* title, int fromToday, int length = 1) {
        return Base::database.putEvent(
            event(title, fromToday).allDay(day(fromToday), day(fromToday + length)));
    }
    using Base::add;

    /// The lines of the calendar as "# heading" or "time title".
    QStringList lines() {
        QStringList lines;
        for (int row = 0; row < Base::days.rows()->count(); ++row) {
            const CalendarRow shown = Base::days.rows()->rowAt(row);
            lines.append(shown.isHeading ? QStringLiteral("# ") + shown.title
                                         : shown.spanText + u' ' + shown.title);
        }
        return lines;
    }
    CalendarRow row(const char* title) {
        for (int row = 0; row < Base::days.rows()->count(); ++row) {
            const CalendarRow shown = Base::days.rows()->rowAt(row);
            if (shown.title == QString::fromUtf8(title))
                return shown;
        }
        return {};
    }
};

}  // namespace kestrant::test
