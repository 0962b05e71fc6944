#include "reminders/store/ReminderActionHistory.h"

#include "support/ManualScheduler.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Done = ReminderActionHistory::Done;

class ReminderActionHistoryTest : public testing::Test {
  protected:
    /// An action that counts how often it was done; its replays end when the test says so, or at once.
    std::optional<QUuid> record(const std::string& title) {
        return recordBy(&ReminderActionHistory::record, title);
    }
    std::optional<QUuid> recordPending(const std::string& title) {
        return recordBy(&ReminderActionHistory::recordPending, title);
    }
    using Operation = ReminderActionHistory::Operation;
    std::optional<QUuid>
    recordBy(std::optional<QUuid> (ReminderActionHistory::*how)(const TextPair&, Operation, Operation,
                                                                ReminderActionHistory::Outcome),
             const std::string& title) {
        const auto operation = [this](std::string what) {
            return [this, what = std::move(what)](const Done& done) {
                replays.push_back(what);
                if (held)
                    held->push_back(done);
                else if (failing)
                    done(tl::unexpected(ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}}));
                else
                    done({});
            };
        };
        const QString text = QString::fromStdString(title);
        return (history.*how)({text, text}, operation("undo " + title), operation("redo " + title), {});
    }
    Done answer() {
        return [this](const tl::expected<void, ReminderStoreError>& result) {
            answers.emplace_back(result ? "done" : result.error().message().english.toStdString());
        };
    }
    /// Titles of the undo entries, a bar, titles of the redo entries.
    [[nodiscard]] std::string entries() const {
        std::string result;
        for (const auto& entry : history.undoEntries())
            result += entry.title.english.toStdString();
        result += '|';
        for (const auto& entry : history.redoEntries())
            result += entry.title.english.toStdString();
        return result;
    }
    void endReplay() {
        const Done done = held->front();
        held->erase(held->begin());
        done({});
    }

    ManualScheduler scheduler{Instant(std::chrono::hours(500000))};
    ReminderActionHistory history{scheduler, scheduler};
    std::vector<std::string> replays;
    std::vector<std::string> answers;
    std::optional<std::vector<Done>> held;
    bool failing = false;
};

TEST_F(ReminderActionHistoryTest, UndoAndRedoMoveThroughTheActionsAndBack) {
    for (const char* title : {"a", "b", "c"})
        record(title);
    history.undo();
    history.undo();
    EXPECT_EQ(entries(), "a|cb");
    history.redo(answer());
    EXPECT_EQ(entries(), "ab|c");
    EXPECT_THAT(replays, ElementsAre("undo c", "undo b", "redo b"));
    record("d");
    EXPECT_EQ(entries(), "abd|") << "a new action forfeits redo";
    history.redo(answer());
    EXPECT_THAT(answers, ElementsAre("done", "done"));
    EXPECT_FALSE(history.canRedo());
}

TEST_F(ReminderActionHistoryTest, HoldsTheTenNewestOfTenThousandActions) {
    for (int n = 0; n < 10000; ++n)
        record(std::to_string(n % 10));
    EXPECT_EQ(entries(), "0123456789|");
    record("x");
    EXPECT_EQ(entries(), "123456789x|");
    EXPECT_EQ(scheduler.pendingCount(), 1U);
}

TEST_F(ReminderActionHistoryTest, WhatIsPendingCostsNothingBeforeItHasHappened) {
    for (int n = 0; n < 10; ++n)
        record(std::to_string(n));
    history.undo();
    record("x");
    history.undo();
    record("9");
    EXPECT_EQ(entries(), "0123456789|") << "ten, and nothing to redo";
    history.undo();
    record("a");
    history.undo();
    EXPECT_EQ(entries(), "012345678|a");
    record("9");
    auto pending = recordPending("p");
    EXPECT_EQ(entries(), "123456789p|") << "no more than ten are on show";
    history.remove(*pending);
    EXPECT_EQ(entries(), "0123456789|");
    history.undo();
    pending = recordPending("p");
    EXPECT_EQ(entries(), "012345678p|9");
    history.remove(*pending);
    EXPECT_EQ(entries(), "012345678|9");
    pending = recordPending("p");
    history.confirm(*pending);
    EXPECT_EQ(entries(), "012345678p|") << "now it has happened";
    pending = recordPending("q");
    history.undo();
    EXPECT_EQ(entries(), "012345678p|q");
    history.confirm(*pending);
    history.redo();
    EXPECT_EQ(entries(), "12345678pq|");
}

TEST_F(ReminderActionHistoryTest, ReplaysWaitForTheActionsUnderWay) {
    record("a");
    const int succeeding = history.beginAction();
    history.undo(answer());
    EXPECT_THAT(answers, IsEmpty());
    record("b");
    history.endAction(succeeding, ReminderActionHistory::ActionEnd::succeeded);
    EXPECT_EQ(entries(), "a|b");
    const int failed = history.beginAction();
    history.undo(answer());
    history.endAction(failed, ReminderActionHistory::ActionEnd::failed);
    EXPECT_EQ(entries(), "a|b") << "it was meant for what did not happen";
    EXPECT_THAT(answers, ElementsAre("done", "done"));
    const int later = history.beginAction();
    history.endAction(later, ReminderActionHistory::ActionEnd::succeeded);
    history.undo(answer());
    EXPECT_EQ(entries(), "|ba");
}

TEST_F(ReminderActionHistoryTest, AFailedReplayLeavesItsEntryAndSaysWhy) {
    record("a");
    failing = true;
    history.undo(answer());
    EXPECT_EQ(entries(), "a|");
    EXPECT_FALSE(history.isReplaying());
    failing = false;
    history.undo(answer());
    failing = true;
    history.redo(answer());
    EXPECT_EQ(entries(), "|a");
    EXPECT_THAT(answers, ElementsAre("This reminder is no longer available.", "done",
                                     "This reminder is no longer available."));
    EXPECT_EQ(ReminderActionHistory::failureTitle(),
              text("Action could not be completed", "Action impossible"));
}

TEST_F(ReminderActionHistoryTest, NothingIsRecordedWhileAnEntryIsReplayed) {
    record("a");
    held.emplace();
    history.undo();
    EXPECT_TRUE(history.isReplaying());
    EXPECT_EQ(record("b"), std::nullopt);
    endReplay();
    EXPECT_EQ(entries(), "|a");
    EXPECT_TRUE(record("c").has_value());
}

TEST_F(ReminderActionHistoryTest, AnEntryWhoseOutcomeIsUnknownIsSetAsideUntilItIsKnown) {
    const tl::expected<void, ReminderStoreError> failed = tl::unexpected(
        ReminderStoreError{ReminderStoreError::Code::changedElsewhere, text("refused", "refusé")});
    const struct {
        bool isUndone;
        bool isMade;
        bool actsMeanwhile;
        const char* entries;
    } cases[] = {{false, true, false, "a|b"},  {false, false, false, "ab|"}, {false, true, true, "ac|"},
                 {false, false, true, "acb|"}, {true, true, false, "ab|"},   {true, false, false, "a|b"},
                 {true, true, true, "acb|"},   {true, false, true, "ac|"}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.entries);
        history.clear();
        answers.clear();
        record("a");
        record("b");
        if (each.isUndone)
            history.undo();
        held.emplace();
        if (each.isUndone)
            history.redo(answer());
        else
            history.undo(answer());
        const Done late = held->front();
        held.reset();
        late(tl::unexpected(ReminderStoreError{ReminderStoreError::Code::outcomeUnknown,
                                               text("no answer", "pas de réponse")}));
        EXPECT_EQ(entries(), "a|");
        EXPECT_FALSE(history.isReplaying());
        if (each.actsMeanwhile)
            record("c");
        late(each.isMade ? tl::expected<void, ReminderStoreError>() : failed);
        EXPECT_EQ(entries(), each.entries);
        EXPECT_THAT(answers, ElementsAre("no answer", each.isMade ? "done" : "refused"));
    }
}

TEST_F(ReminderActionHistoryTest, ReplaysAreCarriedOutOneAfterTheOther) {
    record("a");
    record("b");
    held.emplace();
    history.undo(answer());
    history.undo(answer());
    history.redo(answer());
    history.undo(answer());
    EXPECT_THAT(replays, ElementsAre("undo b"));
    endReplay();
    EXPECT_THAT(replays, ElementsAre("undo b", "undo a"));
    endReplay();
    endReplay();
    endReplay();
    EXPECT_THAT(replays, ElementsAre("undo b", "undo a", "redo a", "undo a"));
    EXPECT_EQ(answers.size(), 4U);
    EXPECT_EQ(entries(), "|ba");
}

TEST_F(ReminderActionHistoryTest, AnEntryWithdrawnInMidReplayDoesNotComeBack) {
    record("a");
    const auto b = record("b");
    held.emplace();
    history.undo(answer());
    history.remove(*b);
    endReplay();
    EXPECT_EQ(entries(), "a|");
    EXPECT_THAT(answers, ElementsAre("done"));
}

TEST_F(ReminderActionHistoryTest, EntriesLastAnHourWhereverTheyAre) {
    record("a");
    scheduler.advance(1min);
    record("b");
    history.undo();
    scheduler.advance(58min);
    EXPECT_EQ(entries(), "a|b");
    int told = 0;
    QObject::connect(&history, &ReminderActionHistory::entriesChanged, &history, [&] { ++told; });
    scheduler.advance(1min);
    EXPECT_EQ(entries(), "|b") << "without anybody doing anything";
    scheduler.advance(1min);
    EXPECT_EQ(entries(), "|");
    EXPECT_EQ(told, 2);
    EXPECT_EQ(scheduler.pendingCount(), 0U);
}

TEST_F(ReminderActionHistoryTest, AnEntryThatExpiredWhileTheMachineSleptIsNotReplayed) {
    record("a");
    scheduler.jumpWall(61min);
    EXPECT_FALSE(history.canUndo());
    history.undo(answer());
    EXPECT_THAT(replays, IsEmpty());
    EXPECT_THAT(answers, ElementsAre("done"));
    EXPECT_EQ(entries(), "|");
}

TEST_F(ReminderActionHistoryTest, TheEndOfTheHistoryLeavesLateAnswersWithoutEffect) {
    auto doomed = std::make_unique<ReminderActionHistory>(scheduler, scheduler);
    Done late;
    doomed->record({}, [&](const Done& done) { late = done; }, {});
    doomed->undo(answer());
    doomed.reset();
    late({});
    EXPECT_THAT(answers, IsEmpty());
}

}  // namespace
}  // namespace kestrant
