#pragma once

#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "foundation/Text.h"
#include "reminders/alerts/UserNotifier.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <map>
#include <optional>

namespace kestrant {

class Localization;
class ReminderStore;
class UserDefaults;

/// The surroundings of a DueAlertRinger. Everything here must outlive it.
struct DueAlertServices {
    EKEventStore& eventStore;
    /// Those of the same database.
    OpenReminders& openReminders;
    /// Completes what the person ticks off in a notification.
    ReminderStore& reminders;
    UserNotifier& notifier;
    Scheduler& scheduler;
    const Clock& clock;
    CurrentTimeZone& currentZone;
    UserDefaults& defaults;
    Localization& localization;
};

/// Rings the alerts of open reminders: shows a notification at the alarm's instant, or as soon as it can be
/// shown when the machine slept, the program was not running or there was no notification service. A reminder
/// of which several alarms have fallen due meanwhile rings once.
///
/// No alert rings twice. Alerts that have rung are kept in the preferences; that the person has dealt with
/// it, and that it is to ring again later, is written to the reminder where other programs see it. What fell
/// due before the first start, or more than thirty days ago, stays silent.
///
/// Thread: main.
class DueAlertRinger : public QObject {
    Q_OBJECT

  public:
    /// Rings from here on, as soon as the database can be read.
    explicit DueAlertRinger(const DueAlertServices& services, QObject* parent = nullptr);
    /// Withdraws what is on show.
    ~DueAlertRinger() override;

    /// To be called when the machine has woken up: timers stand still while it sleeps.
    void systemDidWake() { refresh(); }

  Q_SIGNALS:
    /// The person wants to see a reminder.
    void openRequested(const QString& reminderID);
    /// An alert of a reminder has begun to ring.
    void rang(const QString& reminderID);

  private:
    using Answered = std::function<void(const std::optional<TextPair>& failure)>;

    void restoreMemory();
    void rememberRung(const QString& id, Instant instant);
    [[nodiscard]] Instant rungUntil(const QString& id) const;

    void refresh();
    void apply(const EKReminders& reminders);
    void withdrawWhatIsOver(const QHash<QString, const EKReminderData*>& open);
    void ring(const EKReminderData& reminder, Instant instant);
    void answer(const QString& id, AlertAnswer answer);
    /// Writes what `edit` makes of the reminder's alarms.
    void write(const QString& id, const std::function<void(EKReminderData&)>& edit, Answered answered);
    [[nodiscard]] UserNotification notificationFor(const EKReminderData& reminder) const;
    /// Brings a notification back whose answer could not be carried out.
    void showFailure(UserNotification notification, const TextPair& failure);

    DueAlertServices services_;
    /// Alerts due up to this moment do not ring.
    Instant since_;
    /// Up to which moment each reminder has rung.
    std::map<QString, Instant> rung_;
    /// The moments of the alerts on show.
    std::map<QString, Instant> showing_;
    /// The last moment of each reminder that was told of.
    std::map<QString, Instant> announced_;
    int generation_ = 0;
    ScheduledTask refreshTask_;
    ScheduledTask alarmTask_;
    ScheduledTask retryTask_;
    Subscription storeObserver_;
    Subscription zoneObserver_;
    Subscription answerObserver_;
};

}  // namespace kestrant
