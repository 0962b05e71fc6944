#include "ui/Program.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

struct ThreeTasks : Program {
    ThreeTasks() {
        for (const char* title : {"a", "b", "c"})
            ids.append(add(QString::fromUtf8(title)));
        store.setSortMode(ReminderSortMode::title);
        load();
    }
    QStringList ids;
};

TEST(HistoryViewModel, OffersAnActionOnceAndFollowsTheCommands) {
    ThreeTasks program;
    QSignalSpy recorded(&program.history, &HistoryViewModel::recorded);
    program.reminders.remove(program.ids[1]);
    program.settle();
    ASSERT_EQ(recorded.count(), 1);
    EXPECT_EQ(recorded[0][0].toString(), QStringLiteral("Delete reminder"));
    EXPECT_EQ(program.history.undoText(), QStringLiteral("Undo: Delete reminder"));
    EXPECT_THAT(program.titles(), ElementsAre("a", "c"));

    program.notifications.post(QStringLiteral("kestrant.undoReminderAction"));
    program.settle();
    EXPECT_THAT(program.titles(), ElementsAre("a", "b", "c"));
    EXPECT_TRUE(program.history.canRedo());
    program.notifications.post(QStringLiteral("kestrant.redoReminderAction"));
    program.settle();
    EXPECT_THAT(program.titles(), ElementsAre("a", "c"));
    EXPECT_EQ(recorded.count(), 1) << "what is made again is not offered again";
}

TEST(HistoryViewModel, SaysSoWhenSomebodyElseHasChangedTheSame) {
    ThreeTasks program;
    QSignalSpy failed(&program.history, &HistoryViewModel::failed);
    program.store.rename(program.ids[0], QStringLiteral("aa"), {});
    program.settle();
    const EKReminderRef elsewhere = program.database.calendarItem(program.ids[0]);
    elsewhere->data.title = QStringLiteral("theirs");
    program.database.save(elsewhere, [](const auto&) {});
    program.settle();
    program.history.undo();
    program.settle();
    ASSERT_EQ(failed.count(), 1);
    EXPECT_EQ(failed[0][0].toString(), QStringLiteral("Action could not be completed"));
    EXPECT_EQ(failed[0][1].toString(), QStringLiteral("The Reminders app rejected the change."));
    EXPECT_THAT(program.titles(), ElementsAre("b", "c", "theirs"));
}

TEST(RemindersViewModel, PlacesACardByHandAndTakesThatBackTogetherWithTheOrder) {
    ThreeTasks program;
    program.reminders.placeAt(program.ids[2], 0);
    program.settle();
    EXPECT_THAT(program.titles(), ElementsAre("c", "a", "b"));
    EXPECT_EQ(program.reminders.sortMode(), QStringLiteral("manual"));
    for (const int nowhere : {-1, 3}) {
        program.reminders.placeAt(program.ids[2], nowhere);
        EXPECT_THAT(program.titles(), ElementsAre("c", "a", "b"));
    }
    program.history.undo();
    program.settle();
    EXPECT_THAT(program.titles(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(program.reminders.sortMode(), QStringLiteral("title"));
}

}  // namespace
