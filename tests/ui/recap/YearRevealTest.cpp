#include "foundation/TimeZone.h"
#include "notch/NotchPanelController.h"
#include "ui/PanelProgram.h"
#include "ui/recap/YearRevealViewModel.h"

#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

/// A program whose next expansion shows the year.
struct ArmedProgram : PanelProgram {
    ArmedProgram() { interaction.setInitialYearRevealIsArmed(true); }

    void complete(const QString& id, const char* when) {
        ASSERT_TRUE(ledger.reconcile(
            {{id, ReminderCompletionState::completed(parseIso8601(QString::fromUtf8(when)))}}, {},
            time.now()));
    }
};

TEST(YearReveal, IsShownOnceAndThenThePanelIsAsItWas) {
    ArmedProgram program;
    program.complete(QStringLiteral("a"), "2026-02-03T10:00:00Z");
    program.complete(QStringLiteral("b"), "2026-11-20T10:00:00Z");
    program.complete(QStringLiteral("c"), "2025-11-20T10:00:00Z");
    program.expand();
    EXPECT_TRUE(program.shows("2026 so far"));
    EXPECT_TRUE(program.shows("reminders completed"));
    EXPECT_EQ(program.yearReveal.summary(), QStringLiteral("2026 so far: 2 reminders completed"));
    // It holds the panel open, as an open popover would.
    program.interaction.pointerExited();
    program.settle();
    EXPECT_TRUE(program.panel.isExpanded());

    program.press(Qt::Key_Escape);
    EXPECT_TRUE(program.panel.isExpanded());
    EXPECT_FALSE(program.shows("2026 so far"));
    EXPECT_TRUE(program.preferences.completedInitialYearReveal());
    program.interaction.collapse(false);
    program.interaction.expand();
    QCoreApplication::processEvents();
    EXPECT_FALSE(program.yearReveal.isShowing());
}

TEST(YearReveal, IsSkippedByAClick) {
    ArmedProgram program;
    program.add(QStringLiteral("untouched"));
    program.expand();
    EXPECT_TRUE(program.shows("Your year starts here")) << "without completions it greets";
    program.click({120, 80});
    EXPECT_FALSE(program.yearReveal.isShowing());
    EXPECT_TRUE(program.reminderStore.pendingCompletionIDs().isEmpty())
        << "the click reaches nothing beneath";
}

TEST(YearReveal, IsShownAgainOnlyWhenThePanelFoldedOverItBeforeItsEnd) {
    for (const bool seen : {false, true}) {
        ArmedProgram program;
        program.appearance.setReducedMotion(false);
        program.expand();
        EXPECT_FALSE(program.preferences.completedInitialYearReveal()) << "it has only begun";
        if (seen)
            program.yearReveal.noteSeen();
        program.interaction.collapse(false);
        EXPECT_EQ(program.preferences.completedInitialYearReveal(), seen);
        program.interaction.expand();
        EXPECT_EQ(program.yearReveal.isShowing(), !seen);
    }
}

TEST(YearReveal, MakesWayForANewReminder) {
    ArmedProgram program;
    program.expand();
    program.notifications.post(notifications::newReminder);
    QCoreApplication::processEvents();
    EXPECT_FALSE(program.yearReveal.isShowing());
    EXPECT_TRUE(program.isOpen("quickAdd"));
}

TEST(YearReveal, TakesCompletionsInThatArriveWhileItIsShown) {
    ArmedProgram program;
    program.expand();
    EXPECT_EQ(program.yearReveal.total(), 0);
    program.complete(QStringLiteral("late"), "2026-11-01T10:00:00Z");
    EXPECT_EQ(program.yearReveal.total(), 1);
    EXPECT_TRUE(program.shows("reminder completed"));
}

}  // namespace
