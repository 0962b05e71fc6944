#pragma once

#include "foundation/Scheduler.h"
#include "recap/Celebration.h"

#include <QLocale>
#include <QObject>
#include <QQmlEngine>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>

namespace kestrant {

class Clock;
class CurrentTimeZone;
class EKEventStore;
class Localizer;
class NotchInteractionModel;
class Preferences;
class ReminderStore;
class SensoryFeedback;

/// A short moment of joy on the open panel after something was completed here. It takes neither clicks nor
/// keys, and ends by itself. Thread: main.
class CelebrationViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isShowing READ isShowing NOTIFY changed)
    /// What is celebrated, and a line below it.
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString detail READ detail NOTIFY changed)
    /// How long it lasts, in milliseconds.
    Q_PROPERTY(int duration READ duration CONSTANT)

  public:
    struct Services {
        EKEventStore& eventStore;
        ReminderStore& reminders;
        Preferences& preferences;
        Scheduler& scheduler;
        const Clock& clock;
        CurrentTimeZone& currentZone;
        Localizer& localizer;
        NotchInteractionModel& interaction;
        const SensoryFeedback& feedback;
        /// Says on which day weeks begin.
        std::function<QLocale()> locale;
    };
    /// Everything must outlive the view model.
    explicit CelebrationViewModel(const Services& services, QObject* parent = nullptr);

    [[nodiscard]] bool isShowing() const { return celebration_.has_value(); }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString detail() const;
    [[nodiscard]] static int duration();

    /// To be called when so many reminders were completed here.
    void noteCompleted(int count);
    /// Ends what is shown.
    Q_INVOKABLE void dismiss();
    void show(const Celebration& celebration);

  Q_SIGNALS:
    void changed();

  private:
    void notePending();
    void look();
    void decide(bool anythingOfTodayIsOpen);

    Services services_;
    int completedHere_ = 0;
    /// Reminders of today that were to be completed here.
    QSet<QString> ofToday_;
    std::optional<Celebration> celebration_;
    ScheduledTask looking_;
    ScheduledTask ending_;
};

}  // namespace kestrant
