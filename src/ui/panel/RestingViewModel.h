#pragma once

#include "foundation/Instant.h"
#include "foundation/Subscription.h"

#include <QColor>
#include <QObject>
#include <QQmlEngine>
#include <QString>

#include <optional>

namespace kestrant {

class Preferences;
class ReminderStore;
struct CalendarEventItem;

/// An event that is worth a sign on the resting notch.
struct RestingEvent {
    QString title;
    QColor color;
    /// Whole minutes until the event begins, rounded up; for one that has begun, until it ends.
    int minutes = 0;
    bool hasBegun = false;

    bool operator==(const RestingEvent&) const = default;
};

/// The content of the resting notch: one thing, the most urgent, or nothing, as the settings want it. Thread:
/// main.
class RestingViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to the panel")
    /// "silent", "ringing", "event", "overdue", "count" or "done": the most urgent thing there is to say.
    Q_PROPERTY(QString kind READ kind NOTIFY changed)
    /// Open reminders of today, and those that are overdue.
    Q_PROPERTY(int count READ count NOTIFY changed)
    Q_PROPERTY(int overdue READ overdue NOTIFY changed)
    // Of "ringing" and "event".
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QColor color READ color NOTIFY changed)
    Q_PROPERTY(int minutes READ minutes NOTIFY changed)
    Q_PROPERTY(bool hasBegun READ hasBegun NOTIFY changed)
    /// Waves go out from the notch while it rings.
    Q_PROPERTY(bool pulses READ pulses NOTIFY changed)
    /// Updates what depends on the time.
    Q_PROPERTY(bool followsTime READ followsTime NOTIFY changed)

  public:
    /// Everything must outlive the view model.
    RestingViewModel(ReminderStore& reminders, Preferences& preferences, QObject* parent = nullptr);

    [[nodiscard]] QString kind() const;
    [[nodiscard]] int count() const;
    [[nodiscard]] int overdue() const;
    [[nodiscard]] QString title() const;
    [[nodiscard]] QColor color() const { return event_ ? event_->color : QColor(); }
    [[nodiscard]] int minutes() const { return event_ ? event_->minutes : 0; }
    [[nodiscard]] bool hasBegun() const { return event_ && event_->hasBegun; }
    [[nodiscard]] bool pulses() const;
    [[nodiscard]] bool followsTime() const;

    void setEvent(const std::optional<RestingEvent>& event);
    /// An alert of this reminder rings. It is over once the reminder is no longer open.
    void ring(const QString& reminderID);
    /// The person has looked: what rang and what was done is known.
    void acknowledge();
    /// The joy over the last reminder of the day has lasted long enough.
    Q_INVOKABLE void finishDone();

  Q_SIGNALS:
    void changed();

  private:
    [[nodiscard]] bool saysWhatComes() const;
    [[nodiscard]] bool saysAll() const;
    void countsChanged();
    void remindersChanged();

    ReminderStore& reminders_;
    Preferences& preferences_;
    std::optional<RestingEvent> event_;
    QString ringingID_;
    int shownCount_ = 0;
    bool isDone_ = false;
    Subscription subscription_;
};

}  // namespace kestrant
