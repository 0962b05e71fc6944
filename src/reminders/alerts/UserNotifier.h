#pragma once

#include "foundation/Subscription.h"

#include <QString>

#include <functional>
#include <vector>

namespace kestrant {

/// A person's answer to an alert.
enum class AlertAnswer {
    /// Ticks the reminder off.
    complete,
    snoozeTenMinutes,
    snoozeOneHour,
    snoozeUntilTomorrow,
    /// Wants to see the reminder.
    open,
    /// Has taken note and closes it.
    dismiss,
};

/// A notification of the desktop, in the person's language.
struct UserNotification {
    struct Action {
        AlertAnswer answer = AlertAnswer::open;
        QString label;

        bool operator==(const Action&) const = default;
    };

    /// The reminder it is about. There is one notification for each; another one takes its place.
    QString id;
    QString title;
    /// Plain text; whoever shows it escapes what the service would take for markup.
    QString body;
    /// In the order in which they are offered. `open` is what a click on the notification itself means and is
    /// not among them; closing it is `dismiss`.
    std::vector<Action> actions;

    bool operator==(const UserNotification&) const = default;
};

/// The desktop's service for notifications. It may be absent, start late, die and come back; none of this is
/// an error of the program. Thread: main.
///
/// A notification may leave the screen at any time. One that goes away without the
/// person's doing, because its time was over or the service died, is answered by nothing at all. At the end
/// of this object every notification still on show is withdrawn, because its actions would lead nowhere.
class UserNotifier {
  public:
    using Shown = std::function<void(bool shown)>;
    using AnswerObserver = std::function<void(const QString& id, AlertAnswer answer)>;

    virtual ~UserNotifier() = default;

    /// Shows a notification, with sound where the desktop gives it one. `shown` is called exactly once, on a
    /// later turn: true when the service has accepted it, false when there is none or it failed. Waits for a
    /// service no longer than a few seconds. Not called when this object goes first.
    virtual void show(const UserNotification& notification, Shown shown) = 0;

    /// Takes a notification away; harmless when there is none. It is not answered any more.
    virtual void withdraw(const QString& id) = 0;

    /// Told when the person has answered, at most once for each notification shown; it is gone by then.
    [[nodiscard]] virtual Subscription observeAnswers(AnswerObserver observer) = 0;
};

}  // namespace kestrant
