#include "ReminderStoreFixture.h"
#include "foundation/DateComponents.h"

namespace kestrant {
namespace {

using Code = ReminderStoreError::Code;
using Operation = InMemoryEventStore::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

const QString a = QStringLiteral("a");
const QString b = QStringLiteral("b");
constexpr std::optional<Code> done = std::nullopt;

class ReminderStoreHistory : public ReminderStoreTest {
  protected:
    /// The result of a replay, after all of its consequences.
    std::optional<Code> undo() { return replay(&ReminderActionHistory::undo); }
    std::optional<Code> redo() { return replay(&ReminderActionHistory::redo); }
    std::optional<Code> replay(void (ReminderActionHistory::*direction)(ReminderActionHistory::Done,
                                                                        const std::optional<QUuid>&)) {
        Outcome end;
        (history.*direction)(end.completion(), std::nullopt);
        scheduler.advance(1s);
        EXPECT_EQ(end.calls, 1);
        return end.error ? std::optional(end.error->code) : std::nullopt;
    }
    /// Everything in the database but for identifiers and dates of changes.
    [[nodiscard]] std::vector<EKReminderData> contents() const {
        std::vector<EKReminderData> result = database.reminders();
        for (EKReminderData& data : result) {
            data.calendarItemIdentifier.clear();
            data.lastModifiedDate.reset();
        }
        std::sort(result.begin(), result.end(), [](const auto& one, const auto& other) {
            return std::pair(one.title, one.isCompleted) < std::pair(other.title, other.isCompleted);
        });
        return result;
    }
    static EKReminderData rich(const char* id) {
        EKReminderData data = aReminder(id)
                                  .due({2026, 3, 28}, {9, 0}, "America/New_York")
                                  .starting({2026, 3, 20}, {9, 0})
                                  .alarmAt(at("America/New_York", {2026, 3, 28}, {8, 45}))
                                  .notes(QStringLiteral("n"))
                                  .priority(3)
                                  .created(now() - 24h)
                                  .repeating(QStringLiteral("FREQ=WEEKLY;COUNT=3"));
        EKAlarm place;
        place.structuredLocation = EKStructuredLocation{QStringLiteral("Home")};
        data.alarms.push_back(place);
        data.url = QStringLiteral("https://example.org/");
        data.location = QStringLiteral("Home");
        data.isFlagged = true;
        return data;
    }
    void completeA() {
        store->completeNow(a, nullptr);
        scheduler.advance(1s);
    }
    void renameA(const char* title) {
        store->rename(a, QString::fromUtf8(title), nullptr);
        scheduler.advance(1s);
    }
    void removeA() {
        store->remove(a, nullptr);
        scheduler.advance(1s);
    }
};

TEST_F(ReminderStoreHistory, EveryChangeIsTakenBackAndMadeAgain) {
    struct Case {
        TextPair title;
        std::function<void(ReminderStore&)> change;
    };
    const auto edit = [](ReminderStore& changed) {
        ReminderEditDetails details = *changed.editDetails(a);
        details.title = QStringLiteral("new");
        details.notes.clear();
        details.dueDate = paris({2026, 5, 1});
        details.dueDateIncludesTime = false;
        details.dueAlertSchedule = DayRelativeToDueDate{-1, 9, 0};
        details.priority = 0;
        details.listID = QStringLiteral("other");
        changed.edit(a, details, ReminderRepeat::yearly, nullptr);
    };
    const auto create = [](ReminderStore& changed) {
        NewReminder reminder;
        reminder.title = QStringLiteral("z");
        changed.create(reminder, nullptr);
    };
    const TextPair editTitle = text("Edit reminder", "Modifier le rappel");
    const TextPair rescheduleTitle = text("Reschedule reminder", "Reporter le rappel");
    const Case cases[] = {
        {editTitle, edit},
        {editTitle, [](ReminderStore& changed) { changed.rename(a, QStringLiteral("new"), nullptr); }},
        {rescheduleTitle,
         [](ReminderStore& changed) {
             changed.reschedule(a, paris({2026, 6, 1}, {7, 0}), true, nullptr);
         }},
        {rescheduleTitle, [](ReminderStore& changed) { changed.clearDueDate(a, nullptr); }},
        {text("Change list", "Changer de liste"),
         [](ReminderStore& changed) { changed.move(a, QStringLiteral("other"), nullptr); }},
        {text("Delete reminder", "Supprimer le rappel"),
         [](ReminderStore& changed) { changed.remove(a, nullptr); }},
        {text("Create reminder", "Créer le rappel"), create},
        {text("Complete reminder", "Terminer le rappel"),
         [](ReminderStore& changed) { changed.completeNow(a, nullptr); }},
        {text("Complete reminder", "Terminer le rappel"),
         [](ReminderStore& changed) { changed.completeNow(b, nullptr); }},
    };
    put(rich("a"));
    put(aReminder("b"));
    loadedStore();
    const auto original = database.reminders();
    for (const Case& each : cases) {
        SCOPED_TRACE(each.title.english.toStdString());
        for (const EKReminderData& reminder : database.reminders())
            database.dropReminder(reminder.calendarItemIdentifier);
        for (const EKReminderData& reminder : original)
            put(reminder);
        scheduler.advance(1s);
        const auto before = contents();
        each.change(*store);
        scheduler.advance(1s);
        const auto after = contents();
        EXPECT_NE(after, before);
        ASSERT_FALSE(history.undoEntries().empty());
        EXPECT_EQ(history.undoEntries().back().title, each.title);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(undo(), done);
            EXPECT_EQ(contents(), before);
            EXPECT_EQ(redo(), done);
            EXPECT_EQ(contents(), after);
        }
        EXPECT_EQ(store->tasks().size(),
                  std::size_t(std::count_if(after.begin(), after.end(),
                                            [](const auto& data) { return !data.isCompleted; })));
    }
    EXPECT_EQ(history.undoEntries().size(), std::size(cases)) << "replays are not recorded";
}

TEST_F(ReminderStoreHistory, EarlierActionsFollowAReminderThatCameBackUnderAnotherIdentifier) {
    put(aReminder("a"));
    put(aReminder("b"));
    database.setKeepsIdentifiers(false);
    loadedStore().commitManualOrder({b, a});
    renameA("new");
    removeA();
    EXPECT_EQ(undo(), done);
    EXPECT_EQ(database.reminder(a), nullptr);
    const QString back = store->tasks()[1].id;
    EXPECT_EQ(*defaults.stringList(QStringLiteral("reminderManualOrder")), (QStringList{b, back}));
    EXPECT_EQ(store->reminderRevealRequest()->reminderID, back);
    EXPECT_EQ(undo(), done);
    EXPECT_EQ(database.reminder(back)->title, a);
    EXPECT_EQ(undo(), done);
    EXPECT_EQ(store->sortMode(), ReminderSortMode::dueDate);
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(redo(), done);
    EXPECT_THAT(visibleIDs(), ElementsAre("b"));
    EXPECT_EQ(undo(), done);
    const QString again = store->tasks()[1].id;
    store->commitManualOrder({a, b});
    EXPECT_EQ(store->manualOrderIDs(), (QStringList{again, b}))
        << "a card that is still known by its old name";
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(undo(), done);
    EXPECT_EQ(database.reminder(again)->title, a);
}

TEST_F(ReminderStoreHistory, WhatComesBackStandsWhereItStood) {
    for (const char* id : {"a", "b", "c"})
        put(aReminder(id));
    loadedStore().commitManualOrder({QStringLiteral("c"), a, b});
    completeA();
    put(aReminder("new"));
    scheduler.advance(1s);
    EXPECT_THAT(visibleIDs(), ElementsAre("c", "b", "new"));
    EXPECT_EQ(undo(), done);
    EXPECT_THAT(visibleIDs(), ElementsAre("c", "a", "b", "new"));
    EXPECT_EQ(undo(), done);
    store->setSortMode(ReminderSortMode::manual);
    EXPECT_THAT(visibleIDs(), ElementsAre("a", "b", "c", "new")) << "what came since keeps its place";
}

TEST_F(ReminderStoreHistory, ACompletionStillPendingIsTakenBackWithoutAWrite) {
    put(aReminder("a"));
    const EKReminderData before = stored("a");
    loadedStore().toggleCompletion(a);
    EXPECT_THAT(recorded(), ElementsAre("Complete reminder"));
    scheduler.advance(700ms);
    EXPECT_EQ(undo(), done);
    EXPECT_THAT(store->pendingCompletionIDs(), IsEmpty());
    EXPECT_EQ(stored("a"), before);
    EXPECT_EQ(redo(), done);
    EXPECT_TRUE(stored("a").isCompleted);
    EXPECT_EQ(reported, 1);
    EXPECT_EQ(undo(), done);
    EXPECT_FALSE(stored("a").isCompleted);

    EXPECT_TRUE(history.canRedo());
    store->toggleCompletion(a);
    store->toggleCompletion(a);
    EXPECT_THAT(recorded(), IsEmpty()) << "taken back by hand";
    EXPECT_TRUE(history.canRedo()) << "nothing has happened";
    store->toggleCompletion(a);
    scheduler.advance(1s);
    EXPECT_FALSE(history.canRedo());
}

TEST_F(ReminderStoreHistory, TheLedgerFollowsCompletionsThatAreTakenBack) {
    put(aReminder("a"));
    put(aReminder("b").due({2026, 3, 27}).repeating(QStringLiteral("FREQ=DAILY")));
    loadedStore();
    completeA();
    store->completeNow(b, nullptr);
    scheduler.advance(1s);
    const auto records = recordIDs();
    EXPECT_EQ(records.size(), 2U);
    EXPECT_EQ(undo(), done);
    EXPECT_THAT(recordIDs(), ElementsAre("a")) << "one step for the series and its copy";
    EXPECT_EQ(stored("b").dueDateComponents, DateComponents::fromDate({2026, 3, 27}));
    EXPECT_EQ(undo(), done);
    EXPECT_THAT(recordIDs(), IsEmpty());
    EXPECT_EQ(redo(), done);
    EXPECT_EQ(redo(), done);
    EXPECT_EQ(store->completionRecords().size(), 2U);
    EXPECT_EQ(reported, 2) << "a completion made again is not a new one";
}

TEST_F(ReminderStoreHistory, TheLedgerIsNotMisledByAFetchThatBeganBeforeTheUndo) {
    put(aReminder("a").completedAt(now()));
    CompletionReconciler reconciler(database, scheduler, scheduler, currentZone, ledger);
    reconciler.schedule();
    EXPECT_TRUE(reconciler.bringForward());
    put(aReminder("a"));
    reconciler.note(a, ReminderCompletionState::incomplete());
    reconciler.schedule();
    scheduler.advance(1s);
    EXPECT_THAT(reconciler.records(), IsEmpty());
}

TEST_F(ReminderStoreHistory, AnUndoWaitsForTheWriteItTakesBack) {
    put(aReminder("a"));
    loadedStore();
    renameA("first");
    store->rename(a, QStringLiteral("second"), nullptr);
    history.undo();
    history.undo();
    scheduler.advance(1s);
    EXPECT_EQ(stored("a").title, a);
    EXPECT_EQ(history.redoEntries().size(), 2U);
    store->completeNow(a, nullptr);
    EXPECT_EQ(undo(), done);
    EXPECT_FALSE(stored("a").isCompleted);
    bool idle = false;
    history.redo();
    store->whenIdle([&] { idle = stored("a").isCompleted; });
    scheduler.runPosted();
    EXPECT_TRUE(idle) << "the end of the program waits for it";
}

TEST_F(ReminderStoreHistory, ACreationIsRecordedOnceItIsKnownToHaveBeenMade) {
    makeStore().requestAccess();
    scheduler.advance(1s);
    for (const bool isMade : {true, false}) {
        SCOPED_TRACE(isMade);
        database.setAnswering(false);
        Outcome first;
        Outcome known;
        store->create({.title = isMade ? a : b, .isFlagged = true}, first.creation(), known.creation());
        scheduler.advance(1min);
        EXPECT_TRUE(first.failedWith(Code::outcomeUnknown));
        EXPECT_EQ(known.calls, 0);
        if (!isMade)
            database.setFailure(Operation::save, diskFull());
        database.setAnswering(true);
        scheduler.advance(1s);
        EXPECT_EQ(first.calls, 1);
        EXPECT_EQ(known.succeeded(), isMade);
        EXPECT_THAT(recorded(), ElementsAre("Create reminder"));
        database.setFailure(Operation::save, std::nullopt);
    }
    ASSERT_EQ(store->visibleTasks().size(), 1U);
    EXPECT_TRUE(store->visibleTasks()[0].isFlagged);
    EXPECT_EQ(undo(), done);
    EXPECT_THAT(database.reminders(), IsEmpty());
}

TEST_F(ReminderStoreHistory, WhatDidNotHappenIsWithdrawn) {
    put(aReminder("a"));
    loadedStore();
    renameA("once");
    EXPECT_EQ(undo(), done);
    store->rename(a, a, nullptr);
    scheduler.advance(1s);
    EXPECT_THAT(recorded(), IsEmpty()) << "nothing to write";
    database.setFailure(Operation::save, diskFull());
    database.setFailure(Operation::remove, diskFull());
    NewReminder reminder;
    reminder.title = QStringLiteral("x");
    store->create(reminder, nullptr);
    store->remove(a, nullptr);
    store->rename(a, QStringLiteral("x"), nullptr);
    history.undo();
    scheduler.advance(1s);
    EXPECT_THAT(recorded(), IsEmpty());
    store->toggleCompletion(a);
    scheduler.advance(1s);
    EXPECT_THAT(recorded(), IsEmpty());
    EXPECT_EQ(history.redoEntries().size(), 1U) << "what was undone before can still be redone";
}

TEST_F(ReminderStoreHistory, ARefusedUndoOverwritesNothingAndCanBeTriedAgain) {
    put(aReminder("a"));
    loadedStore();
    renameA("ours");
    EKReminderData theirs = stored("a");
    theirs.title = QStringLiteral("theirs");
    put(theirs);
    EXPECT_EQ(undo(), Code::changedElsewhere);
    EXPECT_EQ(stored("a").title, QStringLiteral("theirs"));
    EXPECT_THAT(recorded(), ElementsAre("Edit reminder"));
    theirs.title = QStringLiteral("ours");
    theirs.notes = QStringLiteral("theirs");
    put(theirs);
    EXPECT_EQ(undo(), done);
    EXPECT_EQ(stored("a").title, a);
    EXPECT_EQ(stored("a").notes, QStringLiteral("theirs")) << "another property";
    put(theirs);
    removeA();
    database.dropCalendar(QStringLiteral("list"));
    EXPECT_EQ(undo(), Code::listUnavailable);
    EXPECT_THAT(recorded(), ElementsAre("Delete reminder"));
}

TEST_F(ReminderStoreHistory, WhatSomebodyElseHasChangedIsToldOnceAndBarsNothingOlder) {
    put(aReminder("a"));
    put(aReminder("b"));
    loadedStore();
    store->rename(b, QStringLiteral("older"), nullptr);
    scheduler.advance(1s);
    renameA("ours");
    put(aReminder("a").titled(QStringLiteral("theirs")));
    EXPECT_EQ(undo(), Code::changedElsewhere);
    EXPECT_EQ(recorded().size(), 2U) << "it may still become possible";
    EXPECT_EQ(undo(), done);
    EXPECT_EQ(stored("b").title, b);
    EXPECT_EQ(stored("a").title, QStringLiteral("theirs"));
    EXPECT_THAT(recorded(), IsEmpty());
}

TEST_F(ReminderStoreHistory, TenThousandActionsLeaveTheLastTen) {
    put(aReminder("a"));
    loadedStore();
    for (int n = 1; n <= 10000; ++n) {
        store->rename(a, QString::number(n), nullptr);
        scheduler.runPosted();
    }
    for (int n = 9999; n >= 9990; --n) {
        EXPECT_EQ(undo(), done);
        EXPECT_EQ(stored("a").title, QString::number(n));
    }
    EXPECT_EQ(undo(), done);
    EXPECT_EQ(stored("a").title, QStringLiteral("9990"));
}

}  // namespace
}  // namespace kestrant
