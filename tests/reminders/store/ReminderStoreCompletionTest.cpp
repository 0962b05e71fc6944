#include "ReminderStoreFixture.h"

#include <QFile>

namespace kestrant {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = ReminderAccessState::Kind;
using Operation = InMemoryEventStore::Operation;

const QString a = QStringLiteral("a");
const QString b = QStringLiteral("b");

class ReminderStoreCompletion : public ReminderStoreTest {
  protected:
    ReminderStoreCompletion() {
        put(aReminder("a"));
        put(aReminder("b"));
    }
    [[nodiscard]] bool isPending(const QString& id) const {
        return store->pendingCompletionIDs().contains(id);
    }
};

TEST_F(ReminderStoreCompletion, ACompletionIsPendingForThreeQuartersOfASecondAndThenWritten) {
    loadedStore().toggleCompletion(a);
    EXPECT_TRUE(isPending(a));
    EXPECT_THAT(visibleIDs(), ElementsAre("a", "b"));
    scheduler.advance(749ms);
    EXPECT_FALSE(stored("a").isCompleted);
    scheduler.advance(1ms);
    EXPECT_EQ(stored("a").completionDate, now() + 1s) << "in whole seconds";
    EXPECT_FALSE(isPending(a));
    EXPECT_THAT(visibleIDs(), ElementsAre("b"));
    EXPECT_EQ(reported, 1);
    EXPECT_THAT(recordIDs(), IsEmpty());
    scheduler.advance(150ms);
    EXPECT_THAT(recordIDs(), ElementsAre("a"));
    scheduler.advance(1s);
    EXPECT_THAT(visibleIDs(), ElementsAre("b"));
    EXPECT_EQ(reported, 1);
}

TEST_F(ReminderStoreCompletion, TakenBackInTimeItNeverReachesTheDatabase) {
    const EKReminderData before = stored("a");
    loadedStore().toggleCompletion(a);
    scheduler.advance(749ms);
    store->toggleCompletion(a);
    EXPECT_FALSE(isPending(a));
    scheduler.advance(2s);
    EXPECT_EQ(stored("a"), before);
    store->toggleCompletion(a);
    scheduler.advance(749ms);
    EXPECT_FALSE(stored("a").isCompleted) << "the wait starts anew";
}

TEST_F(ReminderStoreCompletion, OnceTheWriteIsUnderWayATogglePassesUnnoticed) {
    loadedStore().completeNow(a, nullptr);
    store->toggleCompletion(a);
    EXPECT_TRUE(isPending(a));
    scheduler.advance(2s);
    EXPECT_TRUE(stored("a").isCompleted);
    EXPECT_EQ(reported, 1);
}

TEST_F(ReminderStoreCompletion, AReminderThatIsGoneOrDoneByThenIsLeftAlone) {
    loadedStore().toggleCompletion(a);
    store->toggleCompletion(b);
    database.dropReminder(a);
    put(aReminder("b").completedAt(now() - 1h));
    const EKReminderData doneElsewhere = stored("b");
    scheduler.advance(750ms);
    EXPECT_THAT(store->pendingCompletionIDs(), IsEmpty());
    EXPECT_THAT(visibleIDs(), IsEmpty());
    EXPECT_EQ(stored("b"), doneElsewhere);
    EXPECT_EQ(reported, 0);
    EXPECT_EQ(store->accessState().kind, Kind::authorized);
}

TEST_F(ReminderStoreCompletion, ARefusedWriteBringsTheCardBackAndSaysWhy) {
    database.setFailure(Operation::save, diskFull());
    loadedStore().toggleCompletion(a);
    scheduler.advance(750ms);
    EXPECT_FALSE(isPending(a));
    EXPECT_THAT(visibleIDs(), ElementsAre("a", "b"));
    EXPECT_EQ(store->accessState(), ReminderAccessState::failed(diskFull().message));
    EXPECT_EQ(reported, 0);
    int told = 0;
    QObject::connect(&*store, &ReminderStore::accessStateChanged, &*store, [&] { ++told; });
    store->toggleCompletion(a);
    scheduler.advance(750ms);
    EXPECT_EQ(store->accessState().kind, Kind::failed);
    EXPECT_GT(told, 0) << "the second failure is told like the first";

    database.setFailure(Operation::save, std::nullopt);
    put(aReminder("c"));
    scheduler.advance(300ms);
    EXPECT_EQ(store->accessState().kind, Kind::authorized);
    EXPECT_THAT(visibleIDs(), ElementsAre("a", "b", "c"));
}

TEST_F(ReminderStoreCompletion, ARecurringReminderComesBackWithItsNextDateAndItsCopyIsRecorded) {
    put(aReminder("a").due({2026, 3, 27}).repeating(QStringLiteral("FREQ=DAILY")));
    loadedStore().toggleCompletion(a);
    scheduler.advance(2s);
    const ReminderTask* next = store->task(a);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->dueDate, paris({2026, 3, 28}));
    EXPECT_TRUE(next->isRecurring());
    ASSERT_EQ(store->completionRecords().size(), 1U);
    EXPECT_NE(recordIDs().front(), "a");
}

TEST_F(ReminderStoreCompletion, AnOverdueSeriesComesToTodayWithOneCompletionCounted) {
    put(aReminder("a").due({2026, 3, 13}, {9, 0}).repeating(QStringLiteral("FREQ=DAILY")));
    loadedStore().completeNow(a, nullptr);
    scheduler.advance(2s);
    EXPECT_EQ(store->task(a)->dueDate, paris({2026, 3, 27}, {9, 0}));
    EXPECT_EQ(reported, 1);
    EXPECT_EQ(store->completionRecords().size(), 1U);
    history.undo();
    scheduler.advance(1s);
    EXPECT_EQ(store->task(a)->dueDate, paris({2026, 3, 13}, {9, 0}));
    EXPECT_THAT(store->completionRecords(), IsEmpty());
}

TEST_F(ReminderStoreCompletion, StaysPendingUntilItIsKnownWhatBecameOfTheWrite) {
    for (const bool turnsOutMade : {true, false}) {
        SCOPED_TRACE(turnsOutMade);
        const QString& id = turnsOutMade ? a : b;
        reported = 0;
        Outcome outcome;
        loadedStore().toggleCompletion(id);
        database.setAnswering(false);
        store->completeNow(id, outcome.completion());
        scheduler.advance(1min);
        EXPECT_EQ(outcome.calls, 1);
        EXPECT_TRUE(outcome.error) << "whoever asked is told at once";
        EXPECT_TRUE(isPending(id));
        EXPECT_EQ(store->accessState().kind, Kind::authorized);
        store->toggleCompletion(id);
        scheduler.advance(1s);
        EXPECT_TRUE(isPending(id));
        EXPECT_EQ(reported, 0);

        if (!turnsOutMade)
            database.setFailure(Operation::save, diskFull());
        database.setAnswering(true);
        scheduler.advance(1s);
        EXPECT_FALSE(isPending(id));
        EXPECT_EQ(reported, turnsOutMade ? 1 : 0);
        EXPECT_EQ(outcome.calls, 1);
        EXPECT_THAT(recordIDs(), ElementsAre("a"));
        EXPECT_THAT(visibleIDs(), ElementsAre("b"));
        EXPECT_EQ(store->accessState().kind, turnsOutMade ? Kind::authorized : Kind::failed);
    }
    history.undo();
    database.setFailure(Operation::save, std::nullopt);
    scheduler.advance(1s);
    EXPECT_THAT(recorded(), IsEmpty()) << "the one that was made was taken back, the other never was there";
}

TEST_F(ReminderStoreCompletion, AnUndoWhoseOutcomeIsUnknownIsRecordedOnceItIsKnown) {
    loadedStore().completeNow(a, nullptr);
    scheduler.advance(1s);
    std::vector<bool> told;
    const auto note = [&](const ReminderActionHistory::Result& result) {
        told.push_back(result.has_value());
    };
    for (const bool isRedo : {false, true}) {
        SCOPED_TRACE(isRedo);
        const auto before = recordIDs();
        database.setAnswering(false);
        if (isRedo)
            history.redo(note);
        else
            history.undo(note);
        scheduler.advance(1min);
        EXPECT_THAT(told, ElementsAre(false));
        EXPECT_FALSE(history.canUndo() || history.canRedo() || history.isReplaying());
        EXPECT_EQ(recordIDs(), before);
        database.setAnswering(true);
        scheduler.advance(1s);
        EXPECT_THAT(std::exchange(told, {}), ElementsAre(false, true));
        EXPECT_EQ(history.canUndo(), isRedo);
        EXPECT_EQ(history.canRedo(), !isRedo);
        EXPECT_EQ(recordIDs().empty(), !isRedo);
    }
    // The change itself has no answer yet when it is taken back.
    database.setAnswering(false);
    store->completeNow(b, nullptr);
    scheduler.advance(1min);
    history.undo(note);
    EXPECT_THAT(told, ElementsAre(false));
    database.setAnswering(true);
    scheduler.advance(1s);
    EXPECT_THAT(told, ElementsAre(false, true));
    EXPECT_THAT(recordIDs(), ElementsAre("a"));
    EXPECT_THAT(visibleIDs(), ElementsAre("b"));
}

TEST_F(ReminderStoreCompletion, AFetchThatBeganBeforeTheWriteDoesNotBringTheCardBack) {
    loadedStore();
    std::vector<std::size_t> shown;
    store->completeNow(a, nullptr);
    QObject::connect(&*store, &ReminderStore::tasksChanged, &*store,
                     [&] { shown.push_back(store->tasks().size()); });
    store->reloadTasks();
    scheduler.advance(5s);
    EXPECT_THAT(shown, ElementsAre(1U));
}

TEST_F(ReminderStoreCompletion, CompletingNowAnswersOnceToEverybodyWhoAsked) {
    loadedStore().toggleCompletion(a);
    Outcome first;
    Outcome second;
    Outcome again;
    Outcome missing;
    store->completeNow(a, first.completion());
    store->completeNow(a, second.completion());
    store->completeNow(QStringLiteral("nobody"), missing.completion());
    EXPECT_EQ(first.calls + second.calls + missing.calls, 0);
    scheduler.runPosted();
    EXPECT_TRUE(first.succeeded());
    EXPECT_TRUE(second.succeeded());
    EXPECT_TRUE(missing.failedWith(ReminderStoreError::Code::reminderNotFound));
    store->completeNow(a, again.completion());
    scheduler.advance(2s);
    EXPECT_TRUE(again.succeeded());
    EXPECT_EQ(reported, 1);
    database.setFailure(Operation::save, diskFull());
    Outcome refused;
    store->completeNow(b, refused.completion());
    scheduler.runPosted();
    EXPECT_TRUE(refused.failedWith(ReminderStoreError::Code::database));
    EXPECT_EQ(refused.error->message(), diskFull().message);
}

TEST_F(ReminderStoreCompletion, TheEndOfTheProgramCommitsWhatIsPendingLedgerIncluded) {
    loadedStore().toggleCompletion(a);
    store->toggleCompletion(b);
    int done = 0;
    store->commitPendingCompletions([&] {
        ++done;
        EXPECT_THAT(recordIDs(), testing::UnorderedElementsAre("a", "b"));
    });
    EXPECT_EQ(done, 0);
    scheduler.runPosted();
    EXPECT_EQ(done, 1) << "without waiting for any timer";
    EXPECT_TRUE(stored("a").isCompleted && stored("b").isCompleted);
    EXPECT_EQ(reported, 2);
    scheduler.advance(2s);
    EXPECT_EQ(reported, 2);
}

TEST_F(ReminderStoreCompletion, IdleComesAfterEverythingThatWasBegun) {
    put(aReminder("done").completedAt(now() - 1h));
    makeStore().requestAccess();
    std::vector<std::string> order;
    Outcome renamed;
    store->whenIdle([&] {
        order.emplace_back("idle");
        EXPECT_THAT(visibleIDs(), ElementsAre("a", "b"));
        EXPECT_THAT(recordIDs(), ElementsAre("done"));
    });
    scheduler.runPosted();
    store->rename(a, QStringLiteral("x"), [&](const auto&) { order.emplace_back("renamed"); });
    store->whenIdle([&] { order.emplace_back("idle again"); });
    scheduler.runPosted();
    EXPECT_THAT(order, ElementsAre("idle", "renamed", "idle again"));
}

class ReminderStoreLedger : public ReminderStoreCompletion {
  protected:
    [[nodiscard]] QByteArray ledgerText() const {
        QFile file(ledger.path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

TEST_F(ReminderStoreLedger, TheFirstLoadTakesInThisYearsCompletionsAndWritesThatItDid) {
    put(aReminder("this year").completedAt(paris({2026, 1, 1})));
    put(aReminder("last year").completedAt(paris({2025, 12, 31}, {23, 59})));
    loadedStore();
    EXPECT_THAT(recordIDs(), ElementsAre("this year"));
    EXPECT_TRUE(ledgerText().contains("\"didBackfill\":true"));
}

TEST_F(ReminderStoreLedger, AnEmptyDatabaseIsTakenInToo) {
    loadedStore();
    EXPECT_TRUE(ledgerText().contains("\"didBackfill\":true"));
    EXPECT_TRUE(ledgerText().contains("\"records\":{}"));
}

TEST_F(ReminderStoreLedger, CompletionsMadeElsewhereAreTakenInAndDeletedOnesStay) {
    loadedStore();
    put(aReminder("a").completedAt(now()));
    scheduler.advance(1s);
    EXPECT_THAT(recordIDs(), ElementsAre("a"));
    Outcome removed;
    store->remove(a, removed.completion());
    scheduler.advance(1s);
    EXPECT_TRUE(removed.succeeded());
    EXPECT_THAT(recordIDs(), ElementsAre("a"));
    EXPECT_EQ(reported, 0);
}

TEST_F(ReminderStoreLedger, ALedgerThatCannotBeWrittenSaysSoKeepsTheRecordsAndRecovers) {
    loadedStore();
    ledgerFails = true;
    store->toggleCompletion(a);
    scheduler.advance(2s);
    EXPECT_EQ(store->completionLedgerError(),
              text("Completion history could not be saved.",
                   "L’historique des tâches terminées n’a pas pu être enregistré."));
    EXPECT_THAT(recordIDs(), ElementsAre("a"));
    ledgerFails = false;
    store->reloadTasks();
    scheduler.advance(1s);
    EXPECT_EQ(store->completionLedgerError(), std::nullopt);
    EXPECT_TRUE(ledgerText().contains("\"reminderIdentifier\":\"a\""));
}

TEST_F(ReminderStoreLedger, TheEndOfTheProgramWaitsForASlowDisk) {
    loadedStore().toggleCompletion(a);
    ledgerDelay = 5s;
    bool done = false;
    store->commitPendingCompletions([&] { done = true; });
    scheduler.advance(5s - 1us);
    EXPECT_FALSE(done);
    scheduler.advance(1us);
    EXPECT_TRUE(done);
    EXPECT_TRUE(ledgerText().contains("\"reminderIdentifier\":\"a\""));
}

}  // namespace
}  // namespace kestrant
