#include "notch/NotchInteractionModel.h"

#include "ScriptedPorts.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"

#include <gtest/gtest.h>

#include <memory>

namespace kestrant {

static void PrintTo(NotchPhase phase, std::ostream* out) {
    static const char* const names[] = {"idle", "hovering", "expanded"};
    *out << names[static_cast<int>(phase)];
}

namespace {

class NotchInteractionModelTest : public ::testing::Test {
  protected:
    NotchInteractionModelTest() { model->setExpansionEnabled(true); }

    void advance(double time) { scheduler.advance(seconds(time)); }
    void set(const char* key, const QJsonValue& value) { defaults.set(QString::fromLatin1(key), value); }
    /// Expanded with the pointer inside, and nothing heard so far.
    void open() {
        model->pointerEntered();
        ASSERT_EQ(model->phase(), NotchPhase::expanded);
        feedback.log.clear();
    }

    ManualScheduler scheduler{Instant{}};
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English); }};
    RecordingFeedback feedback;
    SensoryFeedback gate{preferences, feedback, feedback};
    std::unique_ptr<NotchInteractionModel> model =
        std::make_unique<NotchInteractionModel>(scheduler, preferences, gate);
};

TEST_F(NotchInteractionModelTest, WithoutADelayThePointerOpensTheNotchInTheSameTick) {
    std::vector<NotchPhase> phases;
    QObject::connect(model.get(), &NotchInteractionModel::phaseChanged,
                     [&] { phases.push_back(model->phase()); });
    model->pointerEntered();
    EXPECT_EQ(phases, (std::vector{NotchPhase::hovering, NotchPhase::expanded}));
    EXPECT_EQ(feedback.take(), QStringList({"alignment", "dragStart", "generic", "expand"}));
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST_F(NotchInteractionModelTest, WithADelayOnlyARestingPointerOpensIt) {
    set("hoverExpandDelay", 0.5);
    model->pointerEntered();
    advance(0.3);
    model->pointerExited();
    EXPECT_EQ(model->phase(), NotchPhase::idle);
    model->pointerExited();
    EXPECT_EQ(feedback.take(), QStringList({"alignment", "dragStart", "alignment", "drop"}));
    advance(1.0);
    EXPECT_EQ(model->phase(), NotchPhase::idle);

    model->pointerEntered();
    advance(0.4);
    model->pointerEntered();
    advance(0.1);
    EXPECT_EQ(model->phase(), NotchPhase::expanded);
}

TEST_F(NotchInteractionModelTest, WhereAClickOrSwipeIsRequiredItKeepsHovering) {
    set("requiresClickOrSwipeToExpand", true);
    model->pointerEntered();
    advance(60.0);
    EXPECT_EQ(model->phase(), NotchPhase::hovering);
    model->expand();
    EXPECT_EQ(model->phase(), NotchPhase::expanded);
}

TEST_F(NotchInteractionModelTest, UntilExpansionIsEnabledItOnlyHovers) {
    model->setExpansionEnabled(false);
    model->pointerEntered();
    model->expand();
    EXPECT_EQ(model->phase(), NotchPhase::hovering);
}

TEST_F(NotchInteractionModelTest, LeavingFoldsThePanelAfterTheDelayUnlessThePointerReturns) {
    open();
    model->pointerExited();
    advance(0.15);
    model->pointerExited();
    model->pointerEntered();
    advance(1.0);
    EXPECT_EQ(model->phase(), NotchPhase::expanded);

    model->pointerExited();
    advance(0.1);
    model->pointerExited();
    advance(0.1);
    EXPECT_EQ(model->phase(), NotchPhase::idle) << "ticks while it waits do not put it off";
    EXPECT_EQ(feedback.take(), QStringList({"levelChange", "collapse"}));

    set("autoCloseDelay", 1.5);
    open();
    model->pointerExited();
    advance(1.4);
    EXPECT_EQ(model->phase(), NotchPhase::expanded);
    advance(0.1);
    EXPECT_EQ(model->phase(), NotchPhase::idle);
}

TEST_F(NotchInteractionModelTest, WhatIsOpenKeepsThePanelOpen) {
    struct Holder {
        const char* what;
        std::function<void()> hold, release;
    };
    const Holder holders[] = {
        {"overlay", [&] { model->presentOverlay("a"); }, [&] { model->dismissOverlay("a"); }},
        {"route", [&] { model->presentRoute("a"); }, [&] { model->dismissRoute("a"); }},
        {"search", [&] { model->setSearchIsFocused(true); }, [&] { model->setSearchIsFocused(false); }},
        {"drag", [&] { model->beginReminderDrag("a"); }, [&] { model->endReminderDrag("a"); }},
    };
    for (const bool whileCollapsing : {false, true}) {
        for (const Holder& holder : holders) {
            open();
            if (whileCollapsing)
                model->pointerExited();
            holder.hold();
            model->pointerExited();
            advance(5.0);
            EXPECT_EQ(model->phase(), NotchPhase::expanded) << holder.what << whileCollapsing;
            holder.release();
            model->pointerExited();
            advance(0.2);
            EXPECT_EQ(model->phase(), NotchPhase::idle) << holder.what << whileCollapsing;
        }
    }
}

TEST_F(NotchInteractionModelTest, ACollapseUnderThePointerHoversSilentlyUntilItLeaves) {
    open();
    model->collapse(true);
    EXPECT_EQ(model->phase(), NotchPhase::hovering);
    EXPECT_EQ(feedback.take(), QStringList({"levelChange", "collapse"}));
    model->pointerEntered();
    advance(1.0);
    EXPECT_EQ(model->phase(), NotchPhase::hovering);
    model->pointerExited();
    EXPECT_EQ(feedback.take(), QStringList({"alignment"})) << "its closing has been heard";

    set("requiresClickOrSwipeToExpand", true);
    model->pointerEntered();
    model->pointerExited();
    EXPECT_EQ(feedback.take(), QStringList({"alignment", "dragStart", "alignment", "drop"}));
}

TEST_F(NotchInteractionModelTest, TheProfilesDecideWhatIsHeardAndFelt) {
    struct Case {
        int sound, haptic;
        QStringList opening, closing;
    };
    const Case cases[] = {
        {1, 2, {"alignment", "dragStart", "generic", "expand"}, {"levelChange", "collapse"}},
        {2, 1, {"alignment", "dragStart", "generic", "dragStart"}, {"levelChange", "drop"}},
        {0, 2, {"alignment", "generic"}, {"levelChange"}},
        {1, 0, {"dragStart", "expand"}, {"collapse"}},
        {0, 0, {}, {}},
    };
    for (const Case& c : cases) {
        set("soundEffectsProfile", c.sound);
        set("hapticFeedbackProfile", c.haptic);
        model->pointerEntered();
        EXPECT_EQ(feedback.take(), c.opening) << c.sound << c.haptic;
        model->collapse(false);
        EXPECT_EQ(feedback.take(), c.closing) << c.sound << c.haptic;
    }
}

TEST_F(NotchInteractionModelTest, AnArmedYearRevealStartsWithTheFirstExpansionOnly) {
    model->setInitialYearRevealIsArmed(true);
    open();
    EXPECT_TRUE(model->isShowingInitialYearReveal());
    EXPECT_FALSE(model->initialYearRevealIsArmed());
    EXPECT_TRUE(model->presentedRouteIDs().contains("onboarding.initial-year-reveal"));
    model->pointerExited();
    advance(5.0);
    EXPECT_EQ(model->phase(), NotchPhase::expanded);

    model->collapse(false);
    EXPECT_TRUE(model->presentedRouteIDs().isEmpty());
    model->expand();
    EXPECT_TRUE(model->presentedRouteIDs().contains("onboarding.initial-year-reveal"))
        << "it is not over yet";
    model->setIsShowingInitialYearReveal(false);
    model->dismissRoute(NotchInteractionModel::initialYearRevealRoute);
    model->collapse(false);
    model->expand();
    EXPECT_TRUE(model->presentedRouteIDs().isEmpty());
}

TEST_F(NotchInteractionModelTest, AfterSavingInAPopoverThePointerHasTimeToComeBack) {
    open();
    model->popoverClosedAfterSaving();
    model->pointerExited();
    advance(0.349);
    model->pointerExited();
    advance(0.2);
    EXPECT_EQ(model->phase(), NotchPhase::expanded) << "nothing was scheduled during the grace";
    model->pointerExited();
    advance(0.2);
    EXPECT_EQ(model->phase(), NotchPhase::idle);

    open();
    model->popoverClosedAfterSaving();
    model->pointerExited();
    model->pointerEntered();
    model->pointerExited();
    advance(0.2);
    EXPECT_EQ(model->phase(), NotchPhase::idle) << "the pointer's return ends the grace";
}

TEST_F(NotchInteractionModelTest, DismissingOverlaysLooksForThePointerTwice) {
    bool inside = false;
    int dismissals = 0;
    model->setPointerPresenceProvider([&] { return inside; });
    model->setOverlayDismissalHandler([&] { ++dismissals; });
    const auto openWithPopover = [&] {
        open();
        model->presentOverlay("settings");
        model->setSearchIsFocused(true);
        model->pointerExited();
    };

    openWithPopover();
    model->dismissOverlays();
    EXPECT_EQ(dismissals, 1);
    EXPECT_TRUE(model->presentedOverlayIDs().isEmpty());
    EXPECT_FALSE(model->searchIsFocused());
    advance(0.2);
    EXPECT_EQ(model->phase(), NotchPhase::idle);

    inside = true;
    openWithPopover();
    model->dismissOverlays();
    EXPECT_TRUE(model->pointerIsInside());
    inside = false;
    advance(0.05);
    advance(0.2);
    EXPECT_EQ(model->phase(), NotchPhase::idle) << "it had left by the second look";

    inside = true;
    openWithPopover();
    model->dismissOverlays();
    advance(5.0);
    EXPECT_EQ(model->phase(), NotchPhase::expanded);
}

TEST_F(NotchInteractionModelTest, TheCalendarWindowIsFoundFromPointsWhoseYRunsDown) {
    EXPECT_FALSE(model->pointInCalendarWindow(0.0, 900.0, 900.0)) << "there is no window";
    model->setCalendarWindowFrame({100, 600, 200, 100});
    EXPECT_TRUE(model->pointInCalendarWindow(150.0, 250.0, 900.0));
    EXPECT_FALSE(model->pointInCalendarWindow(150.0, 650.0, 900.0));
}

TEST_F(NotchInteractionModelTest, DelayedWorkDiesWithTheModel) {
    set("hoverExpandDelay", 0.5);
    model->pointerEntered();
    model.reset();
    EXPECT_EQ(scheduler.pendingCount(), 0u);
    advance(1.0);
}

}  // namespace
}  // namespace kestrant
