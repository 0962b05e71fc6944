#pragma once

#include "foundation/NotificationCenter.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"

#include <functional>
#include <vector>

namespace kestrant {

class AppUpdater;
class LaunchAtLoginManager;
class NotchInteractionModel;
class Preferences;

namespace notifications {
/// Asks for the introduction, open at its tutorial.
inline const QString showTutorial = QStringLiteral("kestrant.show-tutorial");
}  // namespace notifications

/// What happens when to the program as a whole: the order of the start, the first start with its
/// introduction, and what follows when the program becomes active or the machine wakes up. Access to the
/// database is requested once in a process at most, and never before the introduction was completed. Thread:
/// main.
class Lifecycle {
  public:
    enum class OnboardingPage { welcome, tutorial };

    /// The steps of the start. Each is called on the main thread and never after the lifecycle is
    /// gone.
    struct Actions {
        /// Chooses the screen and builds the stores, then the panel, which is not shown yet.
        std::function<void()> createPanel;
        /// Readies the window of the introduction, which is not shown yet.
        std::function<void()> createOnboarding;
        std::function<void()> presentPanel;
        std::function<void(OnboardingPage)> showOnboarding;
        std::function<void()> requestReminderAccess;
        std::function<void()> requestCalendarAccess;
        /// Reads lists and reminders again after this time.
        std::function<void(Duration)> reloadReminders;
        std::function<void()> checkForDueReport;
        std::function<void()> prepareSounds;
        /// The work that may wait until the panel is shown.
        std::function<void()> finishStart;
    };

    /// All must outlive this object.
    struct Services {
        Preferences& preferences;
        NotchInteractionModel& interactionModel;
        NotificationCenter& notifications;
        Scheduler& scheduler;
        LaunchAtLoginManager& launchAtLogin;
        AppUpdater& updater;
    };

    Lifecycle(const Services& services, Actions actions);

    /// The start, once: what must be there for the panel or the introduction to be seen, and the rest on a
    /// later turn.
    void start();

    /// The person has been through the introduction. Later times only bring the panel up again.
    void onboardingCompleted();

    /// The person has closed the introduction before its end, any number of times: the notch rests where it
    /// is, not to be opened yet, as the way back to it.
    void onboardingDismissed();

    /// One of the program's surfaces got the keyboard focus.
    void becameActive();
    /// The machine has woken up.
    void wokeUp();

  private:
    void requestReminderAccess();
    void requestCalendarAccess();
    void finishStart();

    Services services_;
    Actions actions_;
    bool didRequestReminderAccess_ = false;
    bool didRequestCalendarAccess_ = false;
    std::vector<Subscription> subscriptions_;
    ScheduledTask deferred_;
};

}  // namespace kestrant
