#pragma once

#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"

#include <QDate>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

namespace kestrant {

class Localizer;

/// A day that is being chosen, with the month shown to pick it from. Days are "2026-11-21" to QML. Thread:
/// main.
class DayPicker : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a form")

    /// Empty without one.
    Q_PROPERTY(QString day READ isoDay WRITE setIsoDay NOTIFY dayChanged)
    /// "Sat 21 Nov", with the year where that is not the present one; empty without a day.
    Q_PROPERTY(QString text READ text NOTIFY textChanged)
    /// "November 2026"
    Q_PROPERTY(QString monthTitle READ monthTitle NOTIFY monthChanged)
    /// {narrow, full} each, from the language's first day of the week on.
    Q_PROPERTY(QVariantList weekdays READ weekdays NOTIFY monthChanged)
    /// Six weeks, {iso, day, isInMonth, isToday, spoken} each.
    Q_PROPERTY(QVariantList days READ days NOTIFY monthChanged)
    Q_PROPERTY(QString today READ today NOTIFY monthChanged)
    Q_PROPERTY(QString tomorrow READ tomorrow NOTIFY monthChanged)
    /// The Saturday to come.
    Q_PROPERTY(QString weekend READ weekend NOTIFY monthChanged)
    /// The first day of the coming week.
    Q_PROPERTY(QString nextWeek READ nextWeek NOTIFY monthChanged)

  public:
    /// Everything must outlive the picker.
    DayPicker(const Clock& clock, const CurrentTimeZone& currentZone, const Localizer& localizer,
              QObject* parent = nullptr);

    [[nodiscard]] QDate day() const { return day_; }
    /// Also shows its month; an invalid day is none.
    void setDay(QDate day);
    /// Shows the month of the day, or of today.
    Q_INVOKABLE void showMonthOfDay();
    /// Shows the month that lies so many months after the one shown.
    Q_INVOKABLE void showMonth(int monthsLater);
    /// Moves the day, from today when there is none, and shows its month.
    Q_INVOKABLE void moveDay(int days, int months);
    /// To be called when another day has begun.
    void refresh();

    [[nodiscard]] QString isoDay() const;
    void setIsoDay(const QString& iso);
    [[nodiscard]] QString text() const;
    [[nodiscard]] QString monthTitle() const;
    [[nodiscard]] QVariantList weekdays() const;
    [[nodiscard]] QVariantList days() const;
    [[nodiscard]] QString today() const;
    [[nodiscard]] QString tomorrow() const;
    [[nodiscard]] QString weekend() const;
    [[nodiscard]] QString nextWeek() const;

  Q_SIGNALS:
    void dayChanged();
    void textChanged();
    void monthChanged();

  private:
    void showMonthOf(QDate day);
    [[nodiscard]] QDate currentDay() const;

    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    const Localizer& localizer_;
    QDate day_;
    QDate firstOfMonth_;
};

}  // namespace kestrant
