#pragma once

#include "ui/calendar/EventTimes.h"
#include "ui/controls/FormViewModel.h"

#include <QColor>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

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

    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY changed)
    Q_PROPERTY(kestrant::EventTimes* times READ times CONSTANT)
    /// The calendar chosen last, else the database's default; empty when one is yet to be made.
    Q_PROPERTY(QString calendarId READ calendarId WRITE setCalendarId NOTIFY changed)
    Q_PROPERTY(QString calendarTitle READ calendarTitle NOTIFY changed)
    Q_PROPERTY(QColor calendarColor READ calendarColor NOTIFY changed)
    Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY changed)

  public:
    /// Everything must outlive the view model.
    NewEventViewModel(CalendarStore& store, const Clock& clock, const CurrentTimeZone& currentZone,
                      Localizer& localizer, QObject* parent = nullptr);

    /// Shows what was written and neither added nor discarded, or else an empty event at the next half hour.
    Q_INVOKABLE void begin();
    /// Gives up what was written.
    Q_INVOKABLE void discard();
    /// Saves; ends with `added`, or with errorText set and everything left as it was written.
    Q_INVOKABLE void submit();
    /// The calendars that take events, {id, title, color} each.
    Q_INVOKABLE [[nodiscard]] QVariantList calendars() const;

    [[nodiscard]] const QString& title() const { return title_; }
    void setTitle(const QString& title) { set(title_, title); }
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

    CalendarStore& store_;
    Localizer& localizer_;
    EventTimes times_;
    QString title_;
    QString chosenCalendarID_;
};

}  // namespace kestrant
