#include "ui/OnboardingViewModel.h"
#include "ui/OnboardingWindowController.h"
#include "ui/PanelProgram.h"

#include <QAccessible>
#include <QSet>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

using Page = OnboardingViewModel::Page;
using Gesture = OnboardingViewModel::Gesture;

/// The program with its introduction, shown or not.
struct Introduction : PanelProgram {
    void show(OnboardingWindowController::Page page = OnboardingWindowController::Page::welcome) {
        controller.show(page);
        QCoreApplication::processEvents();
    }
    void goTo(Page page) {
        model().setPage(page);
        settleWindow();
    }
    /// Drawing is what makes views lay out their items.
    void settleWindow() {
        window().grabWindow();
        QCoreApplication::processEvents();
    }
    [[nodiscard]] QQuickView& window() { return *controller.window(); }
    [[nodiscard]] OnboardingViewModel& model() { return *controller.model(); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&window(), key, modifiers);
        QCoreApplication::processEvents();
    }
    [[nodiscard]] QQuickItem& item(const char* name) {
        return *window().rootObject()->findChild<QQuickItem*>(QString::fromUtf8(name));
    }
    [[nodiscard]] bool reads(const char* text) {
        return findText(window().contentItem(), QString::fromUtf8(text)) != nullptr;
    }
    /// What has the keyboard focus, as a screen reader names it.
    [[nodiscard]] QString focusedName() {
        QQuickItem* item = window().activeFocusItem();
        QAccessibleInterface* spoken = item ? QAccessible::queryAccessibleInterface(item) : nullptr;
        return spoken ? spoken->text(QAccessible::Name) : QString();
    }

    int opened = 0;
    bool naturalTouchpad = false;
    SettingsViewModel choices{
        preferences, localizer, feedbackForm, {.dataStore = {.defaultFolder = folder.path()}}};
    OnboardingWindowController controller{{.engine = *view.engine(),
                                           .appearance = appearance,
                                           .preferences = preferences,
                                           .settings = choices,
                                           .scheduler = time,
                                           .feedback = feedback,
                                           .touchpadsScrollNaturally = [this] { return naturalTouchpad; }},
                                          [this] { ++opened; }};
};

TEST(Onboarding, BuildsNothingBeforeItIsShown) {
    Introduction program;
    EXPECT_EQ(program.controller.window(), nullptr);
    EXPECT_FALSE(program.controller.isVisible());
    program.controller.orderOut();
    program.show();
    EXPECT_TRUE(program.controller.isVisible());
    EXPECT_TRUE(program.reads("Welcome to Kestrant"));
}

TEST(Onboarding, IsWalkedThroughByKeyboardAlone) {
    Introduction program;
    program.show();
    for (int page = 0; page < OnboardingViewModel::pageCount() - 1; ++page) {
        EXPECT_EQ(int(program.model().page()), page);
        EXPECT_EQ(program.focusedName(), QStringLiteral("Continue"));
        program.key(Qt::Key_Return);
    }
    EXPECT_EQ(program.focusedName(), QStringLiteral("Start"));
    program.key(Qt::Key_Backtab);
    EXPECT_EQ(program.focusedName(), QStringLiteral("Back"));
    program.key(Qt::Key_Space);
    EXPECT_EQ(program.model().page(), Page::habits);
    program.key(Qt::Key_Return);
    EXPECT_EQ(program.opened, 0);
    program.key(Qt::Key_Return);
    EXPECT_EQ(program.opened, 1);
    EXPECT_FALSE(program.controller.isVisible());
}

TEST(Onboarding, NamesEveryControlThatTabReaches) {
    struct Case {
        Page page;
        QStringList expected;
    };
    const Case cases[] = {
        {Page::welcome, {"Language", "Continue", "Close"}},
        {Page::tutorial, {"Notch to try out", "Back", "Continue", "Close"}},
        {Page::panel,
         {"Reminders", "Calendar", "Reminders in the calendar", "Order", "Share", "Material", "Back",
          "Continue", "Close"}},
        {Page::habits,
         {"Notch to try out", "Opens", "Sounds", "Reminders and events", "Back", "Continue", "Close"}},
        {Page::ready, {"Back", "Start", "Close"}},
    };
    Introduction program;
    program.show();
    for (const Case& one : cases) {
        program.goTo(one.page);
        QStringList names;
        QSet<QQuickItem*> visited;
        while (!visited.contains(program.window().activeFocusItem())) {
            visited.insert(program.window().activeFocusItem());
            names.append(program.focusedName());
            program.key(Qt::Key_Tab);
        }
        EXPECT_TRUE(program.appearance.showsFocus());
        names.sort();
        QStringList expected = one.expected;
        expected.sort();
        EXPECT_EQ(names, expected) << int(one.page) << qPrintable(names.join(u'|'));
    }
}

TEST(Onboarding, TakesEachChoiceOverAtOnce) {
    Introduction program;
    program.show();
    program.item("onboarding.language").forceActiveFocus();
    program.key(Qt::Key_Right);
    EXPECT_TRUE(program.preferences.isFrench());
    EXPECT_TRUE(program.reads("Bienvenue dans Kestrant"));
    EXPECT_EQ(program.controller.window()->activeFocusItem(), &program.item("onboarding.language"));

    program.goTo(Page::panel);
    const auto press = [&](const char* control, Qt::Key key) {
        program.item(control).forceActiveFocus();
        program.key(key);
    };
    press("onboarding.order", Qt::Key_Right);
    press("onboarding.ratio", Qt::Key_Left);
    press("onboarding.material", Qt::Key_Right);
    press("onboarding.showRemindersInCalendar", Qt::Key_Space);
    press("onboarding.showReminders", Qt::Key_Space);
    EXPECT_EQ(program.preferences.moduleOrder(), KestrantModuleOrder::calendarFirst);
    EXPECT_EQ(program.preferences.layoutRatio(), KestrantLayoutRatio::r60_40);
    EXPECT_EQ(program.preferences.notchMaterial(), QStringLiteral("black"));
    EXPECT_FALSE(program.preferences.showRemindersInCalendar());
    EXPECT_FALSE(program.preferences.showReminders());
    EXPECT_FALSE(program.item("onboarding.order").isEnabled());

    program.goTo(Page::habits);
    press("onboarding.opens", Qt::Key_Right);
    press("onboarding.sounds", Qt::Key_Left);
    EXPECT_TRUE(program.preferences.requiresClickOrSwipeToExpand());
    EXPECT_EQ(program.preferences.soundProfile(), SoundProfile::soft);
    press("onboarding.store", Qt::Key_Down);
    EXPECT_EQ(program.choices.dataStore()->kind(), QStringLiteral("folder"));
    program.goTo(Page::ready);
    EXPECT_EQ(program.choices.dataStore()->kind(), QStringLiteral("default")) << "no folder was given";
}

TEST(Onboarding, IsDismissedOnlyByClosingItsWindow) {
    Introduction program;
    QSignalSpy dismissed(&program.controller, &OnboardingWindowController::dismissed);
    program.show();
    program.key(Qt::Key_Escape);
    EXPECT_TRUE(program.controller.isVisible()) << "there is nothing behind the first introduction";
    program.window().close();
    EXPECT_FALSE(program.controller.isVisible());
    EXPECT_EQ(dismissed.count(), 1);
    EXPECT_EQ(program.opened, 0);

    program.preferences.setCompletedInitialOnboarding(true);
    program.show(OnboardingWindowController::Page::tutorial);
    EXPECT_EQ(program.model().page(), Page::tutorial);
    program.key(Qt::Key_Escape);
    EXPECT_FALSE(program.controller.isVisible());
    EXPECT_EQ(program.opened, 0);
}

TEST(Onboarding, TicksOffEachGestureOnTheDrawnNotch) {
    Introduction program;
    program.show(OnboardingWindowController::Page::tutorial);
    const QPoint onNotch(360, 8);
    const QPoint away(360, 400);
    QTest::mouseMove(&program.window(), onNotch);
    QCoreApplication::processEvents();
    EXPECT_TRUE(program.model().hovered());
    EXPECT_TRUE(program.model().notch()->isExpanded());
    QTest::mouseClick(&program.window(), Qt::LeftButton, {}, onNotch);
    EXPECT_TRUE(program.model().clicked());
    EXPECT_FALSE(program.model().notch()->isExpanded());
    QTest::mouseMove(&program.window(), away);
    QCoreApplication::processEvents();
    EXPECT_EQ(program.model().notch()->phase(), NotchPhase::idle);

    program.key(Qt::Key_N, Qt::ControlModifier);
    EXPECT_TRUE(program.model().addedReminder());
    EXPECT_TRUE(program.model().notch()->isExpanded());
    EXPECT_TRUE(program.reads("New reminder"));
    program.key(Qt::Key_F, Qt::ControlModifier);
    program.key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(program.model().searched());
    EXPECT_TRUE(program.model().undone());
    EXPECT_FALSE(program.model().triedAll());
    program.model().scrollNotch(120);
    program.time.advance(std::chrono::seconds(1));
    program.model().scrollNotch(-120);
    EXPECT_TRUE(program.model().triedAll());
    EXPECT_TRUE(program.reads("That is all there is to it"));

    program.show(OnboardingWindowController::Page::tutorial);
    EXPECT_FALSE(program.model().hovered());
    EXPECT_FALSE(program.model().notch()->isExpanded());
}

TEST(Onboarding, OnlyGrowsUnderThePointerWhenAClickIsAskedFor) {
    Introduction program;
    program.preferences.setRequiresClickOrSwipeToExpand(true);
    program.show(OnboardingWindowController::Page::tutorial);
    EXPECT_TRUE(program.reads("Point at it: it grows a little"));
    program.model().pointAtNotch(true);
    program.time.advance(std::chrono::seconds(5));
    EXPECT_EQ(program.model().notch()->phase(), NotchPhase::hovering);
    program.item("onboarding.notch").forceActiveFocus();
    program.model().clickNotch();
    EXPECT_TRUE(program.model().notch()->isExpanded());
}

TEST(Onboarding, ReadsTheDirectionOfASwipeFromTheDevice) {
    struct Case {
        const char* what;
        std::vector<double> angles;
        bool natural;
        bool down;
        bool up;
    };
    const Case cases[] = {
        {"a wheel turned towards the person", {-120}, false, true, false},
        {"a wheel under natural touchpads", {-120}, true, true, false},
        {"fingers downwards", {-9, -14, -20}, false, true, false},
        {"fingers downwards, content with them", {9, 14, 20}, true, true, false},
        {"fingers upwards", {9, 14, 20}, false, false, true},
        {"hardly any movement", {-9, -14}, false, false, false},
        {"one movement that turns back acts once", {-25, -25, 90, 90}, false, true, false},
    };
    for (const Case& one : cases) {
        Introduction program;
        program.naturalTouchpad = one.natural;
        program.show(OnboardingWindowController::Page::tutorial);
        for (const double angle : one.angles)
            program.model().scrollNotch(angle);
        EXPECT_EQ(program.model().swipedDown(), one.down) << one.what;
        EXPECT_EQ(program.model().swipedUp(), one.up) << one.what;
        EXPECT_EQ(program.model().notch()->isExpanded(), one.down) << one.what;
    }
}

}  // namespace
