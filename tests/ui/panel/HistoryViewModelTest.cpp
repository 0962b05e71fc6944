#include "ui/WithCalendars.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <vector>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

struct ThreeTasks : Program {
    ThreeTasks() {
        for (const char* title : {"a", "b", "c"})
            ids.append(add(QString::fromUtf8(title)));
        reminderStore.setSortMode(ReminderSortMode::title);
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
    EXPECT_EQ(recorded[0][0].toString(), QStringLiteral("“b” deleted"));
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

TEST(HistoryViewModel, SaysWhatHasHappened) {
    struct Case {
        std::function<void(Program&, const QString& id)> act;
        const char* english;
        const char* french;
    };
    const auto done = [](const auto&) {};
    const std::vector<Case> cases{
        {[&](Program& p, const QString& id) { p.reminderStore.completeNow(id, done); }, "“Plants” completed",
         "« Plants » terminé"},
        {[&](Program& p, const QString& id) { p.reminderStore.rename(id, QStringLiteral("%2"), done); },
         "“%2” changed", "« %2 » modifié"},
        {[](Program& p, const QString& id) { p.reminders.moveToDay(id, QStringLiteral("2026-11-24")); },
         "“Plants” moved to Tue 24 Nov 17:00", "« Plants » déplacé au mar. 24 nov. 17:00"},
        {[](Program& p, const QString& id) { p.reminders.clearDueDate(id); },
         "“Plants” has no due date any more", "« Plants » n’a plus d’échéance"},
        {[](Program& p, const QString& id) { p.reminders.moveToList(id, p.work); }, "“Plants” moved to Work",
         "« Plants » déplacé vers « Work »"},
        {[](Program& p, const QString& id) { p.reminders.toggleFlag(id); }, "“Plants” flagged",
         "« Plants » marqué"},
        {[](Program& p, const QString& id) { p.reminders.placeAt(id, 1); },
         "“Plants” moved · now in manual order", "« Plants » déplacé · ordre manuel désormais"},
        {[](Program& p, const QString& id) { p.reminders.remove(id); }, "“Plants” deleted",
         "« Plants » supprimé"},
        {[](Program& p, const QString&) { p.reminders.setSortMode(QStringLiteral("title")); },
         "Sorted: Title", "Tri : Titre"},
    };
    for (const Language language : {Language::english, Language::french}) {
        for (const Case& each : cases) {
            Program program;
            program.preferences.setLanguage(language);
            const QString id = program.add(QStringLiteral("Plants"), 0, QTime(17, 0));
            program.add(QStringLiteral("Rent"), 3);
            program.load();
            QSignalSpy recorded(&program.history, &HistoryViewModel::recorded);
            each.act(program, id);
            program.settle();
            const QString expected =
                QString::fromUtf8(language == Language::french ? each.french : each.english);
            EXPECT_EQ(recorded.empty() ? QString() : recorded.last().front().toString(), expected);
        }
    }
}

TEST(HistoryViewModel, TellsTheNextDateOfARepeatingReminderOnceItIsKnown) {
    Program program;
    EKReminderData data;
    data.title = QStringLiteral("Plants");
    data.calendarIdentifier = program.home;
    data.dueDateComponents = DateComponents::fromDate(QDate(2026, 11, 21));
    data.recurrenceRules = {EKRecurrenceRule::parse(QStringLiteral("FREQ=DAILY"))};
    const QString id = program.database.putReminder(data);
    program.load();
    QSignalSpy recorded(&program.history, &HistoryViewModel::recorded);
    program.reminders.toggleCompletion(id);
    program.time.advance(std::chrono::seconds(2));
    ASSERT_EQ(recorded.count(), 2);
    EXPECT_EQ(recorded[0][0].toString(), QStringLiteral("“Plants” completed"));
    EXPECT_EQ(recorded[1][0].toString(), QStringLiteral("“Plants” completed · next on Sun 22 Nov"));
    EXPECT_EQ(recorded[0][1], recorded[1][1]);

    QSignalSpy takenBack(&program.history, &HistoryViewModel::takenBack);
    program.history.undoOffered(recorded[1][1].toUuid());
    program.settle();
    ASSERT_EQ(takenBack.count(), 1);
    EXPECT_EQ(takenBack[0][0].toString(), QStringLiteral("“Plants” is open again"));
}

TEST(HistoryViewModel, AnOfferThatIsGoneTakesNothingElseBack) {
    ThreeTasks program;
    program.reminders.remove(program.ids[0]);
    program.settle();
    QSignalSpy recorded(&program.history, &HistoryViewModel::recorded);
    QSignalSpy withdrawn(&program.history, &HistoryViewModel::withdrawn);
    program.reminders.toggleCompletion(program.ids[1]);
    ASSERT_EQ(recorded.count(), 1);
    program.reminders.toggleCompletion(program.ids[1]);
    EXPECT_EQ(withdrawn.count(), 1);
    program.history.undoOffered(recorded[0][1].toUuid());
    program.settle();
    EXPECT_THAT(program.titles(), ElementsAre("b", "c"));
}

struct WithLesson : WithCalendars<Program> {
    WithLesson() {
        putEvent("Piano", QTime(15, 0), QTime(16, 0));
        id = add(QStringLiteral("Plants"));
        load();
    }
    [[nodiscard]] QStringList events() const {
        QStringList titles;
        for (const EKEventData& event : database.allEvents())
            titles.append(event.title);
        titles.sort();
        return titles;
    }
    QString id;
};

TEST(HistoryViewModel, TakesBackChangesOfEventsAndOfRemindersInTurn) {
    WithLesson test;
    QSignalSpy recorded(&test.history, &HistoryViewModel::recorded);
    test.reminders.remove(test.id);
    test.settle();
    test.newEvent.begin();
    test.newEvent.setTitle(QStringLiteral("Lunch"));
    test.newEvent.submit();
    test.settle();
    test.calendarEdit.begin(test.shown("Piano"));
    test.settle();
    test.calendarEdit.setTitle(QStringLiteral("Lesson"));
    test.calendarEdit.save();
    test.settle();
    test.calendarEdit.remove(test.shown("Lesson"));
    test.settle();
    QStringList told;
    for (const auto& offer : recorded)
        told.append(offer.front().toString());
    EXPECT_THAT(told,
                ElementsAre("“Plants” deleted", "“Lunch” added", "“Lesson” changed", "“Lesson” deleted"));
    EXPECT_EQ(test.history.undoText(), QStringLiteral("Undo: Delete event"));
    EXPECT_THAT(test.events(), ElementsAre("Lunch"));

    const std::vector<QStringList> steps{{"Lesson", "Lunch"}, {"Lunch", "Piano"}, {"Piano"}, {"Piano"}};
    for (const QStringList& expected : steps) {
        test.history.undo();
        test.settle();
        EXPECT_EQ(test.events(), expected);
    }
    EXPECT_THAT(test.titles(), ElementsAre("Plants"));
    for (int i = 0; i < 4; ++i) {
        test.history.redo();
        test.settle();
    }
    EXPECT_THAT(test.events(), ElementsAre("Lunch"));
    EXPECT_THAT(test.titles(), testing::IsEmpty());
}

TEST(HistoryViewModel, SaysThatOnlyOneOfASeriesWasDeleted) {
    WithLesson test;
    EKEventData meeting = test.onlyEvent();
    meeting.calendarItemIdentifier = QStringLiteral("series");
    meeting.title = QStringLiteral("Standup");
    meeting.recurrenceRules = {EKRecurrenceRule::parse(QStringLiteral("FREQ=DAILY;COUNT=2"))};
    test.database.putEvent(meeting);
    test.load();
    QSignalSpy recorded(&test.history, &HistoryViewModel::recorded);
    test.calendarEdit.remove(test.shown("Standup"));
    test.settle();
    ASSERT_EQ(recorded.count(), 1);
    EXPECT_EQ(recorded[0][0].toString(), QStringLiteral("“Standup” deleted, only this one of its series"));
    EXPECT_THAT(test.events(), ElementsAre("Piano", "Standup"));
    test.history.undo();
    test.settle();
    EXPECT_THAT(test.events(), ElementsAre("Piano", "Standup", "Standup"));
}

TEST(HistoryViewModel, SaysSoWhenSomebodyElseHasChangedTheSame) {
    ThreeTasks program;
    QSignalSpy failed(&program.history, &HistoryViewModel::failed);
    program.reminderStore.rename(program.ids[0], QStringLiteral("aa"), {});
    program.settle();
    const EKReminderRef elsewhere = program.database.calendarItem(program.ids[0]);
    elsewhere->data.title = QStringLiteral("theirs");
    program.database.save(elsewhere, [](const auto&) {});
    program.settle();
    program.history.undo();
    program.settle();
    ASSERT_EQ(failed.count(), 1);
    EXPECT_EQ(failed[0][0].toString(), QStringLiteral("Action could not be completed"));
    EXPECT_EQ(failed[0][1].toString(), ReminderActionHistory::failureText().english);
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
