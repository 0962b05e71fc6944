#pragma once

#include "calendar/SpokenEvent.h"
#include "ui/calendar/EventTimes.h"
#include "ui/controls/FormViewModel.h"

#include <QColor>
#include <QLocale>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <optional>

namespace kestrant {

class CalendarStore;
class Localizer;
struct EKCalendar;

/// The new event being written. Thread: main.
class NewEventViewModel : public kestrant::FormViewModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    /// The line as typed. What it says of time, place, calendar, repetition and alert is understood and is no
    /// part of the event's title; times and calendar that are chosen by hand afterwards win.
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY changed)
    /// The words that were understood, {kind, start, length} each, counted in UTF-16 units.
    Q_PROPERTY(QVariantList pieces READ pieces NOTIFY changed)
    /// What was understood and has no field of its own, {kind, title} each: "zone", "place", "repeat",
    /// "alert", "link" and "notes".
    Q_PROPERTY(QVariantList facts READ facts NOTIFY changed)
    /// Weekdays that may be meant every week, {kind, words, title} each.
    Q_PROPERTY(QVariantList offers READ offers NOTIFY changed)
    /// What Tab adds to the end of the line: the rest of a calendar's name, or of a title that is known;
    /// empty for nothing.
    Q_PROPERTY(QString completion READ completion NOTIFY changed)
    Q_PROPERTY(kestrant::EventTimes* times READ times CONSTANT)
    /// The calendar chosen last, else the database's default; empty when one is yet to be made.
    Q_PROPERTY(QString calendarId READ calendarId WRITE setCalendarId NOTIFY changed)
    Q_PROPERTY(QString calendarTitle READ calendarTitle NOTIFY changed)
    Q_PROPERTY(QColor calendarColor READ calendarColor NOTIFY changed)
    Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY changed)

  public:
    /// Everything must outlive the view model.
    NewEventViewModel(CalendarStore& store, const Clock& clock, const CurrentTimeZone& currentZone,
                      Localizer& localizer, std::function<QLocale()> locale, QObject* parent = nullptr);

    /// Shows what was written and neither added nor discarded, or else an empty event at the next half hour.
    Q_INVOKABLE void begin();
    /// Gives up what was written.
    Q_INVOKABLE void discard();
    /// Saves; ends with `added`, or with errorText set and everything left as it was written.
    Q_INVOKABLE void submit();
    /// Words that say a fact mean nothing but themselves from now on.
    Q_INVOKABLE void takeBack(const QString& kind);
    /// Takes the words of an offer for what they may say.
    Q_INVOKABLE void accept(const QString& words);
    /// The calendars that take events, {id, title, color} each.
    Q_INVOKABLE [[nodiscard]] QVariantList calendars() const;

    [[nodiscard]] const QString& title() const { return title_; }
    void setTitle(const QString& title);
    [[nodiscard]] QVariantList pieces() const;
    [[nodiscard]] QVariantList facts() const;
    [[nodiscard]] QVariantList offers() const;
    [[nodiscard]] QString completion() const;
    [[nodiscard]] EventTimes* times() { return &times_; }
    [[nodiscard]] QString calendarId() const;
    void setCalendarId(const QString& id);
    [[nodiscard]] QString calendarTitle() const;
    [[nodiscard]] QColor calendarColor() const;
    [[nodiscard]] bool canSubmit() const;

  Q_SIGNALS:
    void added();

  private:
    [[nodiscard]] std::optional<EKCalendar> calendar() const;
    /// Reads the line, and takes over what it says now and did not say before.
    void understand();

    CalendarStore& store_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    Localizer& localizer_;
    /// The person's own, for the order of numeric dates.
    std::function<QLocale()> locale_;
    EventTimes times_;
    QString title_;
    SpokenEvent spoken_;
    /// Words that were refused.
    QStringList refused_;
    QStringList accepted_;
    QString chosenCalendarID_;
};

}  // namespace kestrant
