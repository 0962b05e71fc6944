#include "notch/NotchPanelController.h"
#include "ui/PanelProgram.h"

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

struct ThreeCards : PanelProgram {
    ThreeCards() {
        for (const char* title : {"a", "b", "c"})
            ids.append(add(QString::fromUtf8(title)));
        expand();
    }
    QStringList ids;
};

TEST(Views, ChangeTheirLanguageAtOnce) {
    ThreeCards program;
    EXPECT_TRUE(program.shows("All lists"));
    program.preferences.setLanguage(Language::french);
    EXPECT_TRUE(program.shows("Toutes les listes"));
    program.call("openSort");
    EXPECT_TRUE(program.shows("Trier par"));
}

TEST(Views, CompleteAndTakeBackByTheSpaceBar) {
    ThreeCards program;
    program.press(Qt::Key_Right);
    program.press(Qt::Key_Space, QStringLiteral(" "));
    EXPECT_EQ(program.reminderStore.pendingCompletionIDs(), QSet<QString>{program.ids[1]});
    program.press(Qt::Key_Space, QStringLiteral(" "));
    EXPECT_TRUE(program.reminderStore.pendingCompletionIDs().isEmpty());
}

TEST(Views, CompleteByAClickOnTheCircleAndTakeBackByAClickOnTheCard) {
    ThreeCards program;
    const double left = 26.0;
    const double top = 44.0;
    program.click({left + 20, top + 19});
    EXPECT_EQ(program.reminderStore.pendingCompletionIDs(), QSet<QString>{program.ids[0]});
    program.click({left + 120, top + 40});
    EXPECT_TRUE(program.reminderStore.pendingCompletionIDs().isEmpty());
    program.click({left + 120, top + 40});
    EXPECT_TRUE(program.reminderStore.pendingCompletionIDs().isEmpty());
}

TEST(Views, DeleteTheCardThatTheKeyboardIsOn) {
    ThreeCards program;
    program.press(Qt::Key_End);
    program.press(Qt::Key_Delete);
    program.settle();
    EXPECT_THAT(program.titles(), ElementsAre(QStringLiteral("a"), QStringLiteral("b")));
    program.press(Qt::Key_Delete);
    program.settle();
    EXPECT_THAT(program.titles(), ElementsAre(QStringLiteral("a")));
}

TEST(Views, LeaveRemindersOfAReadOnlyListAlone) {
    PanelProgram program;
    program.add(QStringLiteral("fixed"));
    program.database.putCalendar({.calendarIdentifier = program.home,
                                  .title = QStringLiteral("Home"),
                                  .allowsContentModifications = false});
    program.expand();
    program.press(Qt::Key_Space, QStringLiteral(" "));
    program.press(Qt::Key_Delete);
    program.settle();
    EXPECT_TRUE(program.reminderStore.pendingCompletionIDs().isEmpty());
    EXPECT_THAT(program.titles(), ElementsAre(QStringLiteral("fixed")));
}

TEST(Views, SearchWhileTypingAndLeaveTheSearchStepByStep) {
    ThreeCards program;
    program.call("openSort");
    program.notifications.post(notifications::findReminder);
    QCoreApplication::processEvents();
    EXPECT_FALSE(program.isOpen("sort"));
    EXPECT_TRUE(program.interaction.searchIsFocused());
    program.press(Qt::Key_B, QStringLiteral("b"));
    EXPECT_THAT(program.titles(), ElementsAre(QStringLiteral("b")));
    program.press(Qt::Key_Escape);
    EXPECT_EQ(program.titles().size(), 3);
    EXPECT_TRUE(program.interaction.searchIsFocused());
    program.press(Qt::Key_Escape);
    EXPECT_FALSE(program.interaction.searchIsFocused());
    EXPECT_TRUE(program.panel.isExpanded());
    program.press(Qt::Key_Escape);
    EXPECT_FALSE(program.panel.isExpanded());
}

TEST(Views, GoFromTheSearchToTheFirstThatWasFound) {
    PanelProgram program;
    for (const char* title : {"a", "b1", "b2", "b3"})
        program.add(QString::fromUtf8(title));
    program.reminderStore.setSortMode(ReminderSortMode::title);
    program.expand();
    for (const bool beginsLower : {false, true}) {
        for (int presses = 0; beginsLower && presses < 3; ++presses)
            program.press(Qt::Key_Right);
        program.call("openSearch");
        program.press(Qt::Key_B, QStringLiteral("b"));
        QCoreApplication::processEvents();
        program.press(Qt::Key_Down);
        program.press(Qt::Key_Space, QStringLiteral(" "));
        const QString first = program.reminderStore.visibleTasks().begin()->id;
        EXPECT_EQ(program.reminderStore.pendingCompletionIDs(), QSet<QString>{first});
        program.press(Qt::Key_Space, QStringLiteral(" "));
        program.reminders.setSearchQuery({});
        QCoreApplication::processEvents();
    }
}

TEST(Views, LeaveTheSearchAloneWhileThereAreNoReminders) {
    ThreeCards program;
    program.preferences.showReminders.set(false);
    program.settle();
    program.notifications.post(notifications::findReminder);
    QCoreApplication::processEvents();
    EXPECT_FALSE(program.interaction.searchIsFocused());
    program.press(Qt::Key_B, QStringLiteral("b"));
    EXPECT_EQ(program.reminders.searchQuery(), QString());
}

TEST(Views, ForgetTheSearchWhenThePanelFolds) {
    ThreeCards program;
    program.call("openSearch");
    program.press(Qt::Key_B, QStringLiteral("b"));
    program.interaction.collapse(false);
    EXPECT_EQ(program.reminders.searchQuery(), QString());
    EXPECT_FALSE(program.interaction.searchIsFocused());
}

TEST(Views, AddAReminderByKeyboardAlone) {
    PanelProgram program;
    program.expand();
    program.notifications.post(notifications::newReminder);
    QCoreApplication::processEvents();
    ASSERT_TRUE(program.isOpen("quickAdd"));
    program.press(Qt::Key_Return);
    EXPECT_TRUE(program.isOpen("quickAdd"));
    for (const QChar letter : QStringLiteral("tea"))
        program.press(letter.toUpper().unicode(), letter);
    program.press(Qt::Key_Return, {}, Qt::ControlModifier);
    program.settle();
    ASSERT_TRUE(program.isOpen("quickAdd"));
    EXPECT_EQ(program.quickAdd.title(), QString());
    for (const QChar letter : QStringLiteral("oil"))
        program.press(letter.toUpper().unicode(), letter);
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_FALSE(program.isOpen("quickAdd"));
    EXPECT_THAT(program.titles(),
                testing::UnorderedElementsAre(QStringLiteral("tea"), QStringLiteral("oil")));
}

TEST(Views, SayWhatIsChosenForANewReminderAndItsSubjectOnce) {
    PanelProgram program;
    program.expand();
    program.call("openQuickAdd");
    program.quickAdd.dueDay()->setIsoDay(QStringLiteral("2026-11-23"));
    for (const char* spoken : {"List, Home", "Alert, No alert", "Repeat, Never"})
        EXPECT_NE(findText(&program.keyItem(), QString::fromUtf8(spoken), "spokenName"), nullptr) << spoken;
}

TEST(Views, ExpandForANewReminderFromTheRestingNotch) {
    PanelProgram program;
    program.load();
    program.view.show();
    QCoreApplication::processEvents();
    program.notifications.post(notifications::newReminder);
    EXPECT_TRUE(program.panel.isExpanded());
    EXPECT_TRUE(program.isOpen("quickAdd"));
}

TEST(Views, TakeClicksAlsoWhenTheirContentWasStillToBeLoaded) {
    PanelProgram program(PanelView::Loading::inBackground);
    program.load();
    program.view.show();
    program.interaction.expand();
    program.click("New reminder");
    EXPECT_TRUE(program.isOpen("quickAdd"));
}

TEST(Views, ChooseFromMenusByKeyboard) {
    ThreeCards program;
    program.call("openSort");
    program.press(Qt::Key_Down);
    program.press(Qt::Key_Down);
    program.press(Qt::Key_Return);
    EXPECT_EQ(program.reminderStore.sortMode(), ReminderSortMode::priority);
    program.call("openSort");
    program.press(Qt::Key_T, QStringLiteral("t"));
    program.press(Qt::Key_Return);
    EXPECT_EQ(program.reminderStore.sortMode(), ReminderSortMode::title);
}

TEST(Views, ReachEveryControlOfTheToolbarByTab) {
    ThreeCards program;
    QSet<QQuickItem*> visited;
    QStringList names;
    for (int presses = 0; presses < 20; ++presses) {
        program.press(Qt::Key_Tab);
        QQuickItem* focused = program.view.activeFocusItem();
        ASSERT_NE(focused, nullptr);
        if (visited.contains(focused))
            break;
        visited.insert(focused);
        names.append(focused->property("spokenName").toString());
    }
    for (const char* name :
         {"List: All lists", "Today", "Overdue", "Flagged", "Search", "Sort", "New reminder", "Settings"})
        EXPECT_TRUE(names.contains(QString::fromUtf8(name))) << name;
}

TEST(Views, LookAfterTheirArrivalAsTheyDidWithoutIt) {
    ThreeCards program;
    QQuickItem* grid = findText(program.view.contentItem(), QStringLiteral("360"), "sinceOpening");
    ASSERT_NE(grid, nullptr);
    const QImage still = program.view.grabWindow();
    // The second so near to the end that the renderer takes the rest for nothing.
    for (const double moment : {250.0, 298.5, 360.0}) {
        grid->setProperty("sinceOpening", moment);
        EXPECT_EQ(program.view.grabWindow() == still, moment > 250.0) << moment;
    }
}

TEST(Views, ScrollByKeyboardAndSayWhetherMoreLiesBelow) {
    PanelProgram program;
    for (int number = 0; number < 40; ++number)
        program.add(QString::number(number));
    program.expand();
    const QPointF overCards(470, 100);
    EXPECT_TRUE(program.view.contentScrollsUp(overCards));
    EXPECT_FALSE(program.view.contentScrollsUp({470, 285}));
    program.press(Qt::Key_End);
    EXPECT_FALSE(program.view.contentScrollsUp(overCards));
}

}  // namespace
