#include "foundation/TimeZone.h"
#include "notch/NotchPanelController.h"
#include "ui/PanelProgram.h"
#include "ui/onboarding/YearRevealViewModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

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

TEST(YearReveal, CountsEachMonthOfTheYearInTheCalendarsZone) {
    const auto record = [](const char* when) {
        return CompletionRecord{.completedAt = *parseIso8601(QString::fromUtf8(when))};
    };
    const std::vector records{record("2025-12-31T22:59:59Z"), record("2025-12-31T23:00:00Z"),
                              record("2026-01-15T12:00:00Z"), record("2026-03-31T21:59:59Z"),
                              record("2026-03-31T22:00:00Z"), record("2026-12-31T23:00:00Z")};
    EXPECT_THAT(completionsByMonth(records, 2026, *TimeZone::named("Europe/Paris")),
                ElementsAre(2, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0));
}

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
    EXPECT_FALSE(program.preferences.completedInitialYearReveal());

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
    EXPECT_TRUE(program.shows("Welcome")) << "without completions it greets";
    program.click({120, 80});
    EXPECT_FALSE(program.yearReveal.isShowing());
    EXPECT_TRUE(program.reminderStore.pendingCompletionIDs().isEmpty())
        << "the click reaches nothing beneath";
}

TEST(YearReveal, IsShownAgainWhenThePanelFoldedOverIt) {
    ArmedProgram program;
    program.expand();
    program.interaction.collapse(false);
    EXPECT_FALSE(program.preferences.completedInitialYearReveal());
    program.interaction.expand();
    QCoreApplication::processEvents();
    EXPECT_TRUE(program.shows("Welcome"));
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
