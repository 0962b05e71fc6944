#pragma once

#include "calendar/CalendarItems.h"
#include "eventkit/model/EKEvent.h"

#include <QColor>
#include <QLocale>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <QVariantList>

#include <functional>

namespace kestrant {

class CalendarStore;
class Clock;
class CurrentTimeZone;
class Localizer;

/// Everything that an event says, to read: what its row shows at once, the rest on a later turn. Opens its
/// links. Thread: main.
class EventDetailsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QColor color READ color NOTIFY changed)
    Q_PROPERTY(QString calendarTitle READ calendarTitle NOTIFY changed)
    /// "Today 14:00 – 15:00", "Sat 21 – Mon 23 Nov".
    Q_PROPERTY(QString timeText READ timeText NOTIFY changed)
    /// "30 min left", "in 12 min"; else empty.
    Q_PROPERTY(QString remainingText READ remainingText NOTIFY presentChanged)
    Q_PROPERTY(QString place READ place NOTIFY changed)
    Q_PROPERTY(QString notes READ notes NOTIFY changed)
    /// The addresses in it, each once: {address, text} each, the text as it is shown.
    Q_PROPERTY(QVariantList links READ links NOTIFY changed)
    /// Of the meeting; empty for none, and while it is no use.
    Q_PROPERTY(QString joinLink READ joinLink NOTIFY presentChanged)
    Q_PROPERTY(QString repeatText READ repeatText NOTIFY changed)
    Q_PROPERTY(QString alertText READ alertText NOTIFY changed)
    Q_PROPERTY(bool isWritable READ isWritable NOTIFY changed)
    /// Why the event could not be read; empty when it was.
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)

  public:
    /// Everything must outlive the view model. `personalLocale` says whether the day has 12 or 24 hours.
    EventDetailsViewModel(CalendarStore& store, const Clock& clock, const CurrentTimeZone& currentZone,
                          Localizer& localizer, std::function<QLocale()> personalLocale,
                          QObject* parent = nullptr);

    /// Shows the event behind a row, a QVariant that holds a CalendarEventItem.
    Q_INVOKABLE void show(const QVariant& row);
    /// Updates what depends on the minute.
    Q_INVOKABLE void refreshPresent() { Q_EMIT presentChanged(); }
    /// Opens one of the links, or the meeting of a row. What is no link is not opened.
    Q_INVOKABLE void open(const QString& address);
    Q_INVOKABLE void join(const QVariant& row);
    Q_INVOKABLE void copy(const QString& address);

    [[nodiscard]] QString title() const { return row_.title; }
    [[nodiscard]] QColor color() const;
    [[nodiscard]] QString calendarTitle() const { return row_.calendarTitle; }
    [[nodiscard]] QString timeText() const;
    [[nodiscard]] QString remainingText() const;
    [[nodiscard]] QString place() const;
    [[nodiscard]] QString notes() const;
    [[nodiscard]] QVariantList links() const;
    [[nodiscard]] QString joinLink() const;
    [[nodiscard]] QString repeatText() const;
    [[nodiscard]] QString alertText() const;
    [[nodiscard]] bool isWritable() const;
    [[nodiscard]] const QString& errorText() const { return errorText_; }

  Q_SIGNALS:
    void changed();
    void presentChanged();
    /// The person wants to follow a link; the application opens it with the desktop's program for it.
    void linkRequested(const QUrl& link);

  private:
    CalendarStore& store_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    Localizer& localizer_;
    std::function<QLocale()> personalLocale_;
    CalendarEventItem row_;
    EKEventData event_;
    QString errorText_;
    int generation_ = 0;
};

}  // namespace kestrant
