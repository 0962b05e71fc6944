#include "app/Lifecycle.h"

#include "notch/NotchInteractionModel.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"
#include "services/AppUpdater.h"
#include "services/LaunchAtLoginManager.h"

#include <utility>

namespace kestrant {

namespace {

constexpr Duration activationReloadDelay = std::chrono::milliseconds(100);

}  // namespace

Lifecycle::Lifecycle(const Services& services, Actions actions)
    : services_(services)
    , actions_(std::move(actions)) {}

void Lifecycle::start() {
    Preferences& preferences = services_.preferences;
    NotchInteractionModel& model = services_.interactionModel;

    preferences.migrateHoverExpandDelay();
    const bool completed = preferences.completedInitialOnboarding();
    model.setExpansionEnabled(completed);
    if (!completed && model.phase() != NotchPhase::idle)
        model.collapse(false);
    if (completed && preferences.startedInitialYearReveal() && !preferences.completedInitialYearReveal())
        model.setInitialYearRevealIsArmed(true);

    actions_.createPanel();
    actions_.createOnboarding();

    if (completed) {
        actions_.presentPanel();
        requestReminderAccess();
        requestCalendarAccess();
    } else {
        actions_.showOnboarding(OnboardingPage::welcome);
    }

    subscriptions_.push_back(services_.notifications.observe(
        notifications::showTutorial, [this] { actions_.showOnboarding(OnboardingPage::tutorial); }));
    // A calendar that is shown later is asked for then.
    subscriptions_.push_back(preferences.observeChanges([this](const QString& key) {
        if (key == preferenceKeys::showCalendar.name && services_.preferences.completedInitialOnboarding())
            requestCalendarAccess();
    }));
    deferred_ = services_.scheduler.after(Duration::zero(), [this] { finishStart(); });
}

void Lifecycle::finishStart() {
    actions_.prepareSounds();
    services_.launchAtLogin.refresh();
    services_.updater.start();
    actions_.finishStart();
}

void Lifecycle::onboardingCompleted() {
    Preferences& preferences = services_.preferences;
    if (!preferences.completedInitialOnboarding()) {
        preferences.completedInitialOnboarding.set(true);
        preferences.initialCommandNTipPending.set(true);
        services_.interactionModel.setExpansionEnabled(true);
        if (!preferences.startedInitialYearReveal()) {
            preferences.startedInitialYearReveal.set(true);
            services_.interactionModel.setInitialYearRevealIsArmed(true);
        }
    }
    actions_.presentPanel();
    requestReminderAccess();
    requestCalendarAccess();
}

void Lifecycle::onboardingDismissed() {
    if (!services_.preferences.completedInitialOnboarding())
        actions_.presentPanel();
}

void Lifecycle::becameActive() {
    actions_.reloadReminders(activationReloadDelay);
    actions_.checkForDueReport();
}

void Lifecycle::wokeUp() {
    actions_.checkForDueReport();
}

void Lifecycle::requestReminderAccess() {
    if (!std::exchange(didRequestReminderAccess_, true))
        actions_.requestReminderAccess();
}

void Lifecycle::requestCalendarAccess() {
    if (services_.preferences.showCalendar() && !std::exchange(didRequestCalendarAccess_, true))
        actions_.requestCalendarAccess();
}

}  // namespace kestrant
