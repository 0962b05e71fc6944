#include "ui/PanelProgram.h"
#include "ui/recap/AnnouncementViewModel.h"
#include "ui/recap/CelebrationViewModel.h"

#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;
using namespace std::chrono_literals;

namespace {

struct BusyProgram : PanelProgram {
    BusyProgram() {
        first = add(QStringLiteral("Call Ilse"), 0);
        second = add(QStringLiteral("Return the books"), 0, QTime(18, 0));
        add(QStringLiteral("Pay the rent"), 3);
        expand();
    }
    /// Completes by a click on the circle, and waits until whatever follows has come.
    void complete(const QString& id) {
        reminderStore.toggleCompletion(id);
        time.advance(1300ms);
        QCoreApplication::processEvents();
    }

    QString first;
    QString second;
};

TEST(CelebrationOnThePanel, FollowsTheLastReminderOfTodayOnceAndEndsByItself) {
    BusyProgram program;
    program.complete(program.first);
    EXPECT_FALSE(program.celebration.isShowing());
    program.cues.heard.clear();
    program.complete(program.second);
    ASSERT_TRUE(program.celebration.isShowing());
    EXPECT_TRUE(program.shows("All done for today"));
    EXPECT_TRUE(program.shows("2 completed"));
    EXPECT_EQ(program.cues.heard, std::vector{Cue::drop});
    program.time.advance(1500ms);
    EXPECT_FALSE(program.celebration.isShowing());

    program.complete(program.add(QStringLiteral("One more"), 0));
    EXPECT_FALSE(program.celebration.isShowing()) << "once a day";
}

TEST(CelebrationOnThePanel, IsNotInTheWayOfTheNextClick) {
    BusyProgram program;
    program.complete(program.first);
    program.complete(program.second);
    ASSERT_TRUE(program.celebration.isShowing());
    program.view.grabWindow();
    program.click("Settings");
    EXPECT_TRUE(program.isOpen("settings"));
    program.press(Qt::Key_Escape);
    program.celebration.show({});
    QCoreApplication::processEvents();
    program.view.grabWindow();
    program.click({60, 70});
    EXPECT_FALSE(program.celebration.isShowing());
    EXPECT_FALSE(program.reminderStore.pendingCompletionIDs().isEmpty()) << "the circle beneath was reached";
}

TEST(CelebrationOnThePanel, DoesNotHappen) {
    const std::pair<const char*, void (*)(BusyProgram&)> cases[]{
        {"when switched off", [](BusyProgram& program) { program.preferences.celebrates.set(false); }},
        {"on a folded panel", [](BusyProgram& program) { program.interaction.collapse(false); }},
        {"while another list holds something of today",
         [](BusyProgram& program) {
             EKReminderData other;
             other.title = QStringLiteral("Elsewhere");
             other.calendarIdentifier = program.work;
             other.dueDateComponents = DateComponents::fromDate(QDate(2026, 11, 21));
             program.database.putReminder(other);
             program.reminderStore.setSelectedListID(program.home);
             program.settle();
         }},
    };
    for (const auto& [name, prepare] : cases) {
        BusyProgram program;
        program.complete(program.first);
        prepare(program);
        program.complete(program.second);
        EXPECT_FALSE(program.celebration.isShowing()) << name;
    }
    BusyProgram program;
    for (const EKReminderData& reminder : program.database.reminders()) {
        EKReminderData completed = reminder;
        completed.isCompleted = true;
        completed.completionDate = program.time.now();
        program.database.putReminder(completed);
    }
    program.settle();
    program.time.advance(2s);
    EXPECT_FALSE(program.celebration.isShowing()) << "what was completed elsewhere";
}

TEST(AnnouncementOnThePanel, TellsOfTheRecapAndLeadsToIt) {
    PanelProgram program;
    program.preferences.completedInitialOnboarding.set(true);
    program.announcement.noteStart();
    program.time.advance(72h);
    program.expand();
    program.time.advance(1s);
    QCoreApplication::processEvents();
    EXPECT_TRUE(program.shows("New: your recap"));
    program.click("Close");
    EXPECT_FALSE(program.announcement.isShowing());
    EXPECT_EQ(program.preferences.announcementPresentedCount(), 3) << "seen";

    program.preferences.announcementPresentedCount.set(1);
    program.interaction.collapse(false);
    program.time.advance(48h);
    program.interaction.expand();
    program.time.advance(1s);
    ASSERT_TRUE(program.announcement.isShowing());
    program.announcement.showRecap();
    EXPECT_TRUE(program.recap.isOpen());
    EXPECT_FALSE(program.announcement.isShowing());
}

}  // namespace
