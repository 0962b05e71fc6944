#include "notch/NotchPanelController.h"

#include "ScriptedPorts.h"
#include "preferences/Preferences.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"

#include <gtest/gtest.h>

#include <memory>

namespace kestrant {
namespace {

const Screen screen = plainScreen({0, 0, 1600, 900});
const Screen wide = plainScreen({0, 0, 2560, 1440});

constexpr QPointF onNotch{800, 895};
constexpr QPointF besideNotch{660, 895};
constexpr QPointF inPanel{500, 700};
constexpr QPointF farAway{50, 50};

class NotchPanelControllerTest : public ::testing::Test {
  protected:
    NotchPanelControllerTest() {
        model.setExpansionEnabled(true);
        pointer.at = farAway;
        controller = std::make_unique<NotchPanelController>(
            NotchPanelController::Environment{window, screens, pointer, scheduler, notifications}, model,
            geometry);
    }
    void tick() { scheduler.advance(seconds(1.0 / 60)); }
    void moveTo(std::optional<QPointF> location) {
        pointer.at = location;
        tick();
    }
    void presentExpanded() {
        controller->present();
        moveTo(onNotch);
        ASSERT_EQ(model.phase(), NotchPhase::expanded);
    }
    /// A click at a global location.
    bool click(QPointF location) { return window.handler->leftMouseDown(location - window.frame.topLeft()); }
    bool swipe(double deltaY) {
        ScrollEvent event;
        event.deltaY = deltaY;
        event.hasPreciseDeltas = true;
        event.phase = ScrollEvent::Phase::began;
        return window.handler->scrollWheel(event);
    }

    ManualScheduler scheduler{Instant{}};
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English); }};
    RecordingFeedback feedback;
    SensoryFeedback gate{preferences, feedback, feedback};
    NotchInteractionModel model{scheduler, preferences, gate};
    ScriptedWindow window;
    ScriptedScreens screens{{screen}};
    ScriptedPointer pointer;
    NotificationCenter notifications;
    NotchGeometry geometry{screen};
    std::unique_ptr<NotchPanelController> controller;
};

TEST_F(NotchPanelControllerTest, CreatingItShowsNothingAndPresentingPlacesTheWindow) {
    moveTo(onNotch);
    EXPECT_FALSE(window.visible);
    EXPECT_TRUE(window.ignores);
    EXPECT_EQ(model.phase(), NotchPhase::idle) << "the pointer is not watched before";

    pointer.at = farAway;
    controller->present();
    EXPECT_TRUE(window.visible);
    EXPECT_TRUE(window.atPanelLevel);
    EXPECT_FALSE(window.isKey);
    EXPECT_EQ(window.frame, QRectF(330, 608, 940, 292));
    EXPECT_EQ(window.restingArea, QSizeF(205.0, 32.75));
    EXPECT_EQ(window.shape, geometry.shape(NotchPhase::idle));
    controller->present();
    EXPECT_EQ(scheduler.pendingCount(), 1u) << "one timer, however often it is presented";
}

TEST_F(NotchPanelControllerTest, PresentingLooksForThePointerAtOnce) {
    pointer.at = onNotch;
    controller->present();
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
}

TEST_F(NotchPanelControllerTest, TheWindowFollowsThePhase) {
    defaults.set("hoverExpandDelay", 0.5);
    controller->present();
    const int front = window.orderedFront;
    moveTo(onNotch);
    EXPECT_EQ(window.shape, geometry.shape(NotchPhase::hovering));
    EXPECT_FALSE(window.ignores);
    EXPECT_FALSE(window.isKey);

    scheduler.advance(seconds(0.5));
    EXPECT_EQ(window.shape, geometry.shape(NotchPhase::expanded));
    EXPECT_TRUE(window.isKey);
    EXPECT_EQ(window.orderedFront, front + 2);

    moveTo(farAway);
    EXPECT_FALSE(window.ignores) << "an expanded panel takes every click inside";
    scheduler.advance(seconds(0.3));
    EXPECT_EQ(window.shape, geometry.shape(NotchPhase::idle));
    EXPECT_FALSE(window.isKey);
    EXPECT_TRUE(window.ignores);
    EXPECT_EQ(window.frame, geometry.panelFrame()) << "its size never changes";
}

TEST_F(NotchPanelControllerTest, ThePointerIsPolledSixtyTimesASecondAndTheFlagWrittenOnlyWhenItDiffers) {
    defaults.set("requiresClickOrSwipeToExpand", true);
    controller->present();
    const int writes = window.ignoresWrites;
    scheduler.advance(seconds(1.0));
    EXPECT_EQ(window.ignoresWrites, writes);
    pointer.at = onNotch;
    scheduler.advance(seconds(1.0 / 60));
    EXPECT_EQ(model.phase(), NotchPhase::hovering);
    scheduler.advance(seconds(1.0));
    EXPECT_EQ(window.ignoresWrites, writes + 1);
    moveTo(std::nullopt);
    EXPECT_EQ(model.phase(), NotchPhase::idle) << "a pointer nobody knows of is outside";
    EXPECT_EQ(window.ignoresWrites, writes + 2);
}

TEST_F(NotchPanelControllerTest, AHoveringNotchIsWiderThanARestingOne) {
    defaults.set("requiresClickOrSwipeToExpand", true);
    controller->present();
    const QPointF edge(675, 895);
    moveTo(edge);
    EXPECT_EQ(model.phase(), NotchPhase::idle);
    moveTo(onNotch);
    moveTo(edge);
    EXPECT_EQ(model.phase(), NotchPhase::hovering);
    moveTo(besideNotch);
    EXPECT_EQ(model.phase(), NotchPhase::idle);
}

TEST_F(NotchPanelControllerTest, ScreenChangesMoveThePanelAndALostScreenLeavesItWhereItWas) {
    controller->present();
    screens.change({wide});
    EXPECT_EQ(window.frame, QRectF(810, 1148, 940, 292));
    screens.change({});
    EXPECT_EQ(geometry.screen(), wide);
    moveTo(QPointF(1280, 1435));
    EXPECT_EQ(model.phase(), NotchPhase::idle) << "nobody points at anything then";
    screens.change({wide, notchedScreen(185, 37)});
    EXPECT_EQ(window.restingArea, QSizeF(196.0, 37.5));
    moveTo(QPointF(756, 980));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
}

TEST_F(NotchPanelControllerTest, WithoutAScreenItWaitsForOne) {
    screens.change({});
    NotchGeometry none{Screen()};
    controller = std::make_unique<NotchPanelController>(
        NotchPanelController::Environment{window, screens, pointer, scheduler, notifications}, model, none);
    controller->present();
    EXPECT_TRUE(controller->isPresented());
    EXPECT_FALSE(window.visible);
    screens.change({wide});
    EXPECT_TRUE(window.visible);
    EXPECT_EQ(window.frame, QRectF(810, 1148, 940, 292));
    moveTo(QPointF(1280, 1435));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    controller.reset();
}

TEST_F(NotchPanelControllerTest, AMessageBelowThePanelBelongsToItAndAPopoverDoesNot) {
    using Kind = PanelSurface::Kind;
    struct Case {
        Kind kind;
        bool isOnPanel;
    };
    for (const auto& [kind, isOnPanel] :
         {Case{Kind::toast, true}, Case{Kind::gap, true}, Case{Kind::popover, false}}) {
        presentExpanded();
        controller->setSurfaces({{kind, QRectF(300, 304, 200, 40), 20}});
        EXPECT_EQ(window.surfaces.size(), 1U);
        moveTo(window.frame.topLeft() + QPointF(350, -20));
        scheduler.advance(seconds(1));
        EXPECT_EQ(model.isExpanded(), isOnPanel);
        controller->setSurfaces({});
        moveTo(farAway);
        scheduler.advance(seconds(1));
        EXPECT_EQ(model.phase(), NotchPhase::idle);
    }
}

TEST_F(NotchPanelControllerTest, AMessageShownWhileThePointerIsAwayKeepsThePanelOpen) {
    controller->present();
    model.expand();
    model.presentRoute(NotchInteractionModel::toastRoute);
    scheduler.advance(seconds(3));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    moveTo(inPanel);
    moveTo(farAway);
    scheduler.advance(seconds(1));
    EXPECT_EQ(model.phase(), NotchPhase::idle) << "whoever has been there has seen it";

    model.expand();
    model.presentRoute(NotchInteractionModel::toastRoute);
    controller->applicationResignedActive();
    EXPECT_EQ(model.phase(), NotchPhase::idle);
}

TEST_F(NotchPanelControllerTest, ClicksOpenAndTheCameraStripCloses) {
    defaults.set("requiresClickOrSwipeToExpand", true);
    controller->present();
    moveTo(onNotch);
    EXPECT_TRUE(click(onNotch));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);

    EXPECT_FALSE(click(inPanel)) << "the content's own";
    EXPECT_FALSE(click(besideNotch)) << "the toolbar's own";
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    EXPECT_TRUE(click(onNotch)) << "the second press of a double click";
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    scheduler.advance(seconds(0.5));
    model.presentOverlay("settings");
    EXPECT_TRUE(click(onNotch));
    EXPECT_EQ(model.phase(), NotchPhase::hovering);
    EXPECT_TRUE(model.presentedOverlayIDs().isEmpty()) << "nothing stays open on a folded panel";
    EXPECT_TRUE(click(onNotch)) << "the second press of a double click";
    EXPECT_EQ(model.phase(), NotchPhase::hovering);
    scheduler.advance(seconds(0.5));
    EXPECT_TRUE(click(onNotch));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
}

TEST_F(NotchPanelControllerTest, AClickOnANotchThatOpenedUnderThePointerMeanwhileDoesNotCloseIt) {
    for (const double hoverDelay : {0.0, 0.3}) {
        defaults.set("hoverExpandDelay", hoverDelay);
        controller->present();
        // Also right after another window took the keyboard.
        for (const bool resigns : {false, true}) {
            moveTo(onNotch);
            scheduler.advance(seconds(hoverDelay));
            if (resigns) {
                controller->applicationResignedActive();
                moveTo(farAway);
                moveTo(onNotch);
                scheduler.advance(seconds(hoverDelay));
            }
            EXPECT_TRUE(click(onNotch));
            EXPECT_EQ(model.phase(), NotchPhase::expanded) << hoverDelay << resigns;
            EXPECT_TRUE(window.isKey);
            // Folded by itself it opens at once.
            moveTo(farAway);
            scheduler.advance(seconds(0.3));
            ASSERT_EQ(model.phase(), NotchPhase::idle);
        }
    }
    model.expand();
    moveTo(farAway);
    model.collapse(false);
    EXPECT_TRUE(click(onNotch));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
}

TEST_F(NotchPanelControllerTest, AClickOrSwipeOnALockedNotchIsHandedOn) {
    int asked = 0;
    controller->setLockedHandler([&] { ++asked; });
    model.setExpansionEnabled(false);
    controller->present();
    moveTo(onNotch);
    scheduler.advance(seconds(5));
    EXPECT_EQ(asked, 0) << "pointing at it asks for nothing";
    EXPECT_TRUE(click(onNotch));
    EXPECT_TRUE(swipe(-9.0));
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(model.phase(), NotchPhase::hovering);
    model.setExpansionEnabled(true);
    EXPECT_TRUE(click(onNotch));
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
}

TEST_F(NotchPanelControllerTest, SwipesOpenAndCloseExceptWhereContentScrolls) {
    defaults.set("requiresClickOrSwipeToExpand", true);
    controller->present();
    moveTo(onNotch);
    EXPECT_FALSE(swipe(9.0)) << "nothing to close";
    EXPECT_TRUE(swipe(-9.0));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    EXPECT_FALSE(swipe(-9.0)) << "open already: the content's own";

    QPointF asked;
    controller->setContentScrollsUpQuery([&](QPointF location) {
        asked = location;
        return location.y() < 200;
    });
    moveTo(inPanel);
    EXPECT_FALSE(swipe(9.0));
    EXPECT_EQ(asked, QPointF(170, 92));
    moveTo(onNotch);
    EXPECT_TRUE(swipe(9.0));
    EXPECT_EQ(model.phase(), NotchPhase::hovering);
}

TEST_F(NotchPanelControllerTest, KeyboardCommandsArePostedAsNotifications) {
    QStringList posted;
    std::vector<Subscription> subscriptions;
    for (const char* name : {"kestrant.newReminder", "kestrant.findReminder", "kestrant.undoReminderAction",
                             "kestrant.redoReminderAction"})
        subscriptions.push_back(notifications.observe(name, [&posted, name] { posted << name; }));
    for (const bool popoverIsOpen : {false, true}) {
        if (popoverIsOpen)
            model.presentOverlay("edit");
        posted.clear();
        for (const char* command : {"n", "f", "z", "redo"})
            EXPECT_TRUE(controller->panel().onKeyboardCommand(command));
        EXPECT_FALSE(controller->panel().onKeyboardCommand("x"));
        EXPECT_EQ(posted, QStringList({"kestrant.newReminder", "kestrant.findReminder",
                                       "kestrant.undoReminderAction", "kestrant.redoReminderAction"}));
    }
}

TEST_F(NotchPanelControllerTest, ResigningFoldsThePanelUnlessSomethingIsOpen) {
    presentExpanded();
    model.presentOverlay("settings");
    controller->applicationResignedActive();
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    model.setIsShowingInitialYearReveal(true);
    controller->applicationResignedActive();
    EXPECT_EQ(model.phase(), NotchPhase::idle) << "the year reveal gives way";

    model.setIsShowingInitialYearReveal(false);
    model.dismissOverlay("settings");
    moveTo(farAway);
    presentExpanded();
    controller->applicationResignedActive();
    EXPECT_EQ(model.phase(), NotchPhase::idle);
}

TEST_F(NotchPanelControllerTest, AfterResigningAPointerThatRestsThereDoesNotOpenItAgain) {
    presentExpanded();
    controller->applicationResignedActive();
    EXPECT_EQ(model.phase(), NotchPhase::idle);
    scheduler.advance(seconds(5));
    EXPECT_EQ(model.phase(), NotchPhase::idle);
    EXPECT_FALSE(window.isKey);
    EXPECT_FALSE(window.ignores) << "a click on it still counts";
    EXPECT_TRUE(click(onNotch));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    moveTo(inPanel);
    controller->applicationResignedActive();
    scheduler.advance(seconds(1));
    EXPECT_EQ(model.phase(), NotchPhase::idle);
    moveTo(onNotch);
    EXPECT_EQ(model.phase(), NotchPhase::expanded) << "it was outside the resting notch meanwhile";
    controller->applicationResignedActive();
    moveTo(farAway);
    moveTo(onNotch);
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
}

TEST_F(NotchPanelControllerTest, AfterAPopoverClosedThePointerIsLookedForAgain) {
    presentExpanded();
    model.presentOverlay("quickAdd");
    moveTo(farAway);
    scheduler.advance(seconds(2.0));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    controller->popoverClosed();
    scheduler.advance(seconds(0.2));
    EXPECT_EQ(model.phase(), NotchPhase::idle);

    controller->popoverClosed();
    controller.reset();
    scheduler.runPosted();
}

TEST_F(NotchPanelControllerTest, AToggledPanelStaysOpenUntilThePointerHasVisitedIt) {
    controller->present();
    controller->toggle();
    scheduler.advance(seconds(10.0));
    EXPECT_EQ(model.phase(), NotchPhase::expanded);
    EXPECT_TRUE(window.isKey);
    controller->toggle();
    EXPECT_EQ(model.phase(), NotchPhase::idle);

    controller->toggle();
    moveTo(inPanel);
    moveTo(farAway);
    scheduler.advance(seconds(0.3));
    EXPECT_EQ(model.phase(), NotchPhase::idle);

    controller->toggle();
    controller->applicationResignedActive();
    EXPECT_EQ(model.phase(), NotchPhase::idle);

    model.setExpansionEnabled(false);
    controller->toggle();
    EXPECT_EQ(model.phase(), NotchPhase::idle);
    EXPECT_TRUE(model.presentedRouteIDs().isEmpty());
}

TEST_F(NotchPanelControllerTest, ItIsCarriedAlongTheEdgeAndSnapsToTheMiddle) {
    std::vector<double> moved;
    controller->setMovedHandler([&](double offset) { moved.push_back(offset); });
    controller->present();
    window.handler->dragged(40, false);
    EXPECT_EQ(window.frame.center().x(), 840);
    window.handler->dragged(60, true);
    window.handler->dragged(-55, true);
    EXPECT_EQ(window.frame.center().x(), 800) << "5 points from the middle";
    window.handler->dragged(-5000, true);
    EXPECT_EQ(window.frame.left(), 0) << "no farther than the screen";
    EXPECT_EQ(moved, (std::vector<double>{60, 0, -330}));
}

TEST_F(NotchPanelControllerTest, ItFollowsThePointerToAnotherScreenWhileItIsFolded) {
    const Screen beside = plainScreen({1600, 0, 1600, 900});
    screens.change({screen, beside});
    controller->setPlacement({.followsPointer = true});
    controller->present();
    moveTo(QPointF(2400, 300));
    EXPECT_EQ(window.frame.center().x(), 2400);
    moveTo(std::nullopt);
    EXPECT_EQ(window.frame.center().x(), 2400) << "where the pointer is, is not known";
    moveTo(QPointF(2400, 895));
    ASSERT_EQ(model.phase(), NotchPhase::expanded);
    pointer.at = farAway;
    scheduler.advance(seconds(1.0 / 60));
    EXPECT_EQ(window.frame.center().x(), 2400) << "not while it is open";
    scheduler.advance(seconds(2));
    EXPECT_EQ(window.frame.center().x(), 800);
}

TEST_F(NotchPanelControllerTest, PollingEndsWithTheController) {
    controller->present();
    controller.reset();
    EXPECT_EQ(scheduler.pendingCount(), 0u);
    EXPECT_EQ(window.handler, nullptr);
    model.expand();
    EXPECT_FALSE(window.isKey);
}

}  // namespace
}  // namespace kestrant
