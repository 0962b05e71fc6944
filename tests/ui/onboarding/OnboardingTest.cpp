#include "ui/PanelProgram.h"
#include "ui/onboarding/OnboardingTrial.h"
#include "ui/onboarding/OnboardingViewModel.h"
#include "ui/onboarding/OnboardingWindowController.h"

#include <QAccessible>
#include <QSet>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

using Page = OnboardingViewModel::Page;
using Exercise = OnboardingViewModel::Exercise;

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
    void type(const char* text) {
        for (const QChar letter : QString::fromUtf8(text)) {
            QKeyEvent down(QEvent::KeyPress, letter.toUpper().unicode(), Qt::NoModifier, letter);
            QCoreApplication::sendEvent(&window(), &down);
        }
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
                                           .localizer = localizer,
                                           .appearance = appearance,
                                           .preferences = preferences,
                                           .settings = choices,
                                           .scheduler = time,
                                           .clock = time,
                                           .currentZone = currentZone,
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
         {"Reminders", "Calendar", "Reminders in the calendar", "First", "Share", "Material", "Back",
          "Continue", "Close"}},
        {Page::habits,
         {"Notch to try out", "Opens", "Sounds", "Reminders and events are kept", "Back", "Continue",
          "Close"}},
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

TEST(Onboarding, KeepsThePageUntilTheFolderThatWasAskedForIsGiven) {
    Introduction program;
    program.show();
    program.goTo(Page::habits);
    DataStoreViewModel& store = *program.choices.dataStore();
    const auto proceed = [&] {
        program.item("onboarding.forward").forceActiveFocus();
        program.key(Qt::Key_Return);
    };
    store.setKind(QStringLiteral("folder"));
    proceed();
    EXPECT_EQ(program.model().page(), Page::habits);
    EXPECT_TRUE(program.reads("Write which folder, or choose another place."));
    EXPECT_EQ(program.focusedName(), QStringLiteral("Folder of reminders and events"));
    program.type("calendars");
    proceed();
    EXPECT_EQ(program.model().page(), Page::habits);
    EXPECT_TRUE(program.reads("Write the whole path, from / or ~ on."));
    EXPECT_TRUE(program.reads("calendars")) << "what was written stays to be mended";
    store.setKind(QStringLiteral("default"));
    store.setKind(QStringLiteral("folder"));
    program.item("onboarding.forward").forceActiveFocus();
    store.chooseFolder(program.folder.filePath(QStringLiteral("elsewhere")));
    proceed();
    EXPECT_EQ(program.model().page(), Page::ready);
    EXPECT_EQ(store.kind(), QStringLiteral("folder"));
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

    program.preferences.completedInitialOnboarding.set(true);
    program.show(OnboardingWindowController::Page::tutorial);
    EXPECT_EQ(program.model().page(), Page::tutorial);
    program.key(Qt::Key_Escape);
    EXPECT_FALSE(program.controller.isVisible());
    EXPECT_EQ(program.opened, 0);
}

/// The page on which things are tried out, its panel open and filled.
struct Trying : Introduction {
    Trying() {
        show(OnboardingWindowController::Page::tutorial);
        time.advance(std::chrono::seconds(1));
        // Where the pointer rests when the window comes was not chosen.
        point(onPage);
        point(onNotch);
        settleWindow();
    }
    void point(QPoint at) {
        QTest::mouseMove(&window(), at);
        QCoreApplication::processEvents();
    }
    void click(QPoint at, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(&window(), button, {}, at);
        settleWindow();
    }
    void pass(Duration duration) {
        time.advance(duration);
        settleWindow();
    }
    [[nodiscard]] OnboardingTrial& trial() { return *controller.trial(); }
    [[nodiscard]] QStringList titles() {
        QStringList titles;
        for (const ReminderTask& task : trial().reminders()->cards()->tasks())
            titles.append(task.title);
        return titles;
    }
    [[nodiscard]] bool hasTried(Exercise exercise) { return (model().tried() >> int(exercise)) & 1; }

    static constexpr QPoint onNotch{360, 8};
    static constexpr QPoint onPage{360, 400};
    /// In the picture: the first card, its circle, a day while a card is carried.
    static constexpr QPoint firstCard{160, 55};
    static constexpr QPoint firstCircle{83, 41};
    static constexpr QPoint aDay{620, 130};
};

TEST(OnboardingTrial, TicksOffWhatIsDoneOnItsPanelAndChangesNothingElse) {
    Trying program;
    EXPECT_TRUE(program.model().notch()->isExpanded());
    EXPECT_TRUE(program.hasTried(Exercise::open));
    const QStringList before = program.titles();
    ASSERT_GT(before.size(), 6);

    program.click(Trying::firstCircle);
    EXPECT_FALSE(program.hasTried(Exercise::complete));
    program.pass(std::chrono::seconds(2));
    EXPECT_TRUE(program.hasTried(Exercise::complete));
    EXPECT_EQ(program.titles(), before.mid(1));

    QTest::mousePress(&program.window(), Qt::LeftButton, {}, Trying::firstCard);
    for (int step = 1; step <= 4; ++step)
        program.point(Trying::firstCard + (Trying::aDay - Trying::firstCard) * step / 4);
    EXPECT_TRUE(program.trial().isCarrying());
    QTest::mouseRelease(&program.window(), Qt::LeftButton, {}, Trying::aDay);
    program.pass(std::chrono::seconds(1));
    EXPECT_TRUE(program.hasTried(Exercise::drag));

    program.click(Trying::firstCard, Qt::RightButton);
    EXPECT_TRUE(program.hasTried(Exercise::menu));
    EXPECT_TRUE(program.reads("Complete"));
    program.key(Qt::Key_Escape);

    program.key(Qt::Key_N, Qt::ControlModifier);
    program.type("paint");
    program.key(Qt::Key_Return);
    program.pass(std::chrono::seconds(1));
    EXPECT_TRUE(program.hasTried(Exercise::add));
    EXPECT_TRUE(program.titles().contains(QStringLiteral("paint")));

    EXPECT_EQ(program.model().current(), int(Exercise::undo));
    program.key(Qt::Key_Z, Qt::ControlModifier);
    program.pass(std::chrono::seconds(1));
    EXPECT_FALSE(program.titles().contains(QStringLiteral("paint")));
    EXPECT_EQ(program.model().current(), OnboardingViewModel::exerciseCount);
    EXPECT_TRUE(program.reads("That is all there is to it"));

    EXPECT_TRUE(program.reminderStore.tasks().empty());
    EXPECT_TRUE(program.database.reminders().empty());
    EXPECT_TRUE(program.ledger.sortedRecords().empty());
    EXPECT_FALSE(program.actions.canUndo());
}

TEST(OnboardingTrial, FoldsWhenThePointerLeavesAndBeginsAnewWithTheWindow) {
    Trying program;
    const QStringList before = program.titles();
    program.point(Trying::onPage);
    program.pass(std::chrono::seconds(1));
    EXPECT_EQ(program.model().notch()->phase(), NotchPhase::idle);
    program.model().clickNotch();
    program.click(Trying::firstCircle);
    program.pass(std::chrono::seconds(2));
    EXPECT_NE(program.titles(), before);
    program.window().close();
    program.show(OnboardingWindowController::Page::tutorial);
    program.pass(std::chrono::seconds(1));
    EXPECT_EQ(program.titles(), before);
    EXPECT_EQ(program.model().tried(), 0);
    program.preferences.setLanguage(Language::french);
    program.pass(std::chrono::seconds(1));
    EXPECT_TRUE(program.titles().contains(QStringLiteral("Arroser les plantes")));
}

TEST(Onboarding, OnlyGrowsUnderThePointerWhenAClickIsAskedFor) {
    Introduction program;
    program.preferences.requiresClickOrSwipeToExpand.set(true);
    program.show(OnboardingWindowController::Page::tutorial);
    EXPECT_TRUE(program.reads("Click the notch"));
    program.model().pointAtNotch(true);
    program.time.advance(std::chrono::seconds(5));
    EXPECT_EQ(program.model().notch()->phase(), NotchPhase::hovering);
    QTest::mouseClick(&program.window(), Qt::LeftButton, {}, Trying::onNotch);
    EXPECT_TRUE(program.model().notch()->isExpanded());
}

TEST(Onboarding, ReadsTheDirectionOfASwipeFromTheDevice) {
    struct Case {
        const char* what;
        std::vector<double> angles;
        bool natural;
        bool opens;
        bool closes;
    };
    const Case cases[] = {
        {"a wheel turned towards the person", {-120}, false, false, false},
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
        EXPECT_EQ(program.model().notch()->isExpanded(), one.opens) << one.what;
        program.model().notch()->expand();
        program.time.advance(std::chrono::seconds(1));
        for (const double angle : one.angles)
            program.model().scrollNotch(angle);
        EXPECT_EQ(program.model().notch()->isExpanded(), !one.closes) << one.what;
    }
}

}  // namespace
