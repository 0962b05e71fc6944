#include "app/Lifecycle.h"

#include "cues/SensoryFeedback.h"
#include "notch/NotchInteractionModel.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"
#include "services/AppUpdater.h"
#include "services/LaunchAtLoginManager.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace kestrant {
namespace {

class RecordedParts : public LoginItem, public UpdaterController {
  public:
    [[nodiscard]] bool isEnabled() const override {
        *log << QStringLiteral("read the login item");
        return false;
    }
    [[nodiscard]] tl::expected<void, TextPair> setEnabled(bool) override { return {}; }
    void startUpdater() override { *log << QStringLiteral("start the updater"); }

    QStringList* log = nullptr;
};

class LifecycleTest : public testing::Test {
  protected:
    LifecycleTest() { parts.log = &log; }

    [[nodiscard]] Lifecycle lifecycle() {
        const auto record = [this](const char* what) {
            return [this, what] { log << QString::fromLatin1(what); };
        };
        return {{preferences, model, notifications, scheduler, login, updater},
                {.createPanel = record("create the panel"),
                 .createOnboarding = record("create the introduction"),
                 .presentPanel = record("present"),
                 .showOnboarding =
                     [this](Lifecycle::OnboardingPage page) {
                         log << (page == Lifecycle::OnboardingPage::welcome ? QStringLiteral("welcome")
                                                                            : QStringLiteral("tutorial"));
                     },
                 .requestReminderAccess = record("request reminders"),
                 .requestCalendarAccess = record("request calendar"),
                 .reloadReminders =
                     [this](Duration delay) {
                         log << QStringLiteral("reload after %1 ms")
                                    .arg(
                                        std::chrono::duration_cast<std::chrono::milliseconds>(delay).count());
                     },
                 .checkForDueReport = record("check the report"),
                 .prepareSounds = record("prepare sounds"),
                 .finishStart = record("finish")}};
    }
    void set(const PreferenceKey& key, const QJsonValue& value) { defaults.set(key, value); }
    [[nodiscard]] QStringList taken() { return std::exchange(log, {}); }
    [[nodiscard]] QJsonValue stored(const PreferenceKey& key) const { return defaults.object(key); }

    QStringList log;
    ManualScheduler scheduler{Instant{}};
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English); }};
    SilentCuePlayer cues;
    SilentHapticPerformer haptics;
    SensoryFeedback feedback{preferences, cues, haptics};
    NotchInteractionModel model{scheduler, preferences, feedback};
    NotificationCenter notifications;
    RecordedParts parts;
    LaunchAtLoginManager login{parts, defaults};
    AppUpdater updater{parts};
};

TEST_F(LifecycleTest, AFirstStartShowsTheIntroductionAndAsksForNothing) {
    Lifecycle lifecycle = this->lifecycle();
    lifecycle.start();
    EXPECT_EQ(taken(), (QStringList{"create the panel", "create the introduction", "welcome"}));
    EXPECT_FALSE(model.expansionEnabled());
    scheduler.advance(Duration::zero());
    EXPECT_EQ(taken(), (QStringList{"prepare sounds", "read the login item", "start the updater", "finish"}));
    EXPECT_EQ(defaults.values(), QJsonObject());
}

TEST_F(LifecycleTest, ClosingTheIntroductionLeavesALockedNotch) {
    Lifecycle lifecycle = this->lifecycle();
    lifecycle.start();
    log.clear();
    lifecycle.onboardingDismissed();
    EXPECT_EQ(taken(), QStringList{"present"});
    EXPECT_FALSE(model.expansionEnabled());
    lifecycle.onboardingCompleted();
    log.clear();
    lifecycle.onboardingDismissed();
    EXPECT_EQ(taken(), QStringList{});
}

TEST_F(LifecycleTest, CompletingTheIntroductionOpensTheWayOnce) {
    Lifecycle lifecycle = this->lifecycle();
    lifecycle.start();
    log.clear();

    lifecycle.onboardingCompleted();
    EXPECT_EQ(taken(), (QStringList{"present", "request reminders", "request calendar"}));
    EXPECT_TRUE(model.expansionEnabled());
    EXPECT_TRUE(model.initialYearRevealIsArmed());
    EXPECT_EQ(stored(preferenceKeys::completedInitialOnboarding), true);
    EXPECT_EQ(stored(preferenceKeys::startedInitialYearReveal), true);
    EXPECT_EQ(stored(preferenceKeys::initialCommandNTipPending), true);

    model.setInitialYearRevealIsArmed(false);
    preferences.initialCommandNTipPending.set(false);
    lifecycle.onboardingCompleted();
    EXPECT_EQ(taken(), QStringList{"present"});
    EXPECT_FALSE(model.initialYearRevealIsArmed());
    EXPECT_FALSE(preferences.initialCommandNTipPending());
}

TEST_F(LifecycleTest, ALaterStartPresentsThePanelAndAsksForAccess) {
    set(preferenceKeys::completedInitialOnboarding, true);
    Lifecycle lifecycle = this->lifecycle();
    lifecycle.start();
    EXPECT_EQ(taken(), (QStringList{"create the panel", "create the introduction", "present",
                                    "request reminders", "request calendar"}));
    EXPECT_TRUE(model.expansionEnabled());
    EXPECT_FALSE(model.initialYearRevealIsArmed());
    scheduler.advance(Duration::zero());
    EXPECT_EQ(taken(), (QStringList{"prepare sounds", "read the login item", "start the updater", "finish"}));

    notifications.post(notifications::showTutorial);
    EXPECT_EQ(taken(), QStringList{"tutorial"});
    for (int time = 0; time < 2; ++time) {
        lifecycle.becameActive();
        EXPECT_EQ(taken(), (QStringList{"reload after 100 ms", "check the report"}));
    }
    lifecycle.wokeUp();
    EXPECT_EQ(taken(), QStringList{"check the report"});
}

TEST_F(LifecycleTest, TheYearIsRevealedAgainOnlyWhenItWasCutShort) {
    const struct {
        bool started, completed, armed;
    } cases[] = {{false, false, false}, {true, false, true}, {true, true, false}, {false, true, false}};
    for (const auto& [started, completed, armed] : cases) {
        set(preferenceKeys::completedInitialOnboarding, true);
        set(preferenceKeys::startedInitialYearReveal, started);
        set(preferenceKeys::completedInitialYearReveal, completed);
        model.setInitialYearRevealIsArmed(false);
        Lifecycle lifecycle = this->lifecycle();
        lifecycle.start();
        EXPECT_EQ(model.initialYearRevealIsArmed(), armed) << started << completed;
    }
}

TEST_F(LifecycleTest, ACalendarThatIsNotShownIsAskedForWhenItIsShownLater) {
    set(preferenceKeys::showCalendar, false);
    Lifecycle lifecycle = this->lifecycle();
    lifecycle.start();
    log.clear();
    set(preferenceKeys::showCalendar, true);
    EXPECT_EQ(taken(), QStringList()) << "before the introduction was completed";
    set(preferenceKeys::showCalendar, false);

    lifecycle.onboardingCompleted();
    EXPECT_EQ(taken(), (QStringList{"present", "request reminders"}));
    set(preferenceKeys::showCalendar, true);
    set(preferenceKeys::showCalendar, false);
    set(preferenceKeys::showCalendar, true);
    EXPECT_EQ(taken(), QStringList{"request calendar"});
}

TEST_F(LifecycleTest, TheOldMarkForNeverOpeningOnHoverIsTakenOver) {
    for (const double delay : {-1.0, -0.5, 0.0, 0.5}) {
        set(preferenceKeys::hoverExpandDelay, delay);
        set(preferenceKeys::requiresClickOrSwipeToExpand, QJsonValue(QJsonValue::Undefined));
        Lifecycle lifecycle = this->lifecycle();
        lifecycle.start();
        EXPECT_EQ(preferences.requiresClickOrSwipeToExpand(), delay == -1.0) << delay;
        EXPECT_EQ(preferences.hoverExpandDelay(), delay == -1.0 ? 0.3 : delay);
    }
}

TEST_F(LifecycleTest, WhatWasPutOffEndsWithTheProgram) {
    {
        Lifecycle lifecycle = this->lifecycle();
        lifecycle.start();
    }
    log.clear();
    scheduler.advance(seconds(1));
    notifications.post(notifications::showTutorial);
    EXPECT_EQ(taken(), QStringList());
}

}  // namespace
}  // namespace kestrant
