#include "ReminderStoreFixture.h"
#include "reminders/flags/FlaggedReminderAutomation.h"
#include "support/ManualExecutor.h"

namespace kestrant {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Code = ReminderStoreError::Code;

const QString a = QStringLiteral("a");
const QString b = QStringLiteral("b");

/// A script host with the flags of the reminders application; records the scripts it was given.
class ScriptedHost : public ScriptHost {
  public:
    tl::expected<QStringList, ScriptError> execute(const ReminderScript& script) override {
        if (failure)
            return tl::unexpected(*failure);
        const auto* write = std::get_if<ReminderScript::SetFlag>(&script.request);
        if (!write)
            return flagged;
        written.push_back(*write);
        return QStringList{};
    }
    void interrupt() override { isInterrupted = true; }

    QStringList flagged;
    std::optional<ScriptError> failure;
    std::vector<ReminderScript::SetFlag> written;
    bool isInterrupted = false;
};

class ReminderStoreFlags : public ReminderStoreTest {
  protected:
    ReminderStoreFlags() {
        for (const char* id : {"a", "b"})
            put(aReminder(id));
        automation = &*flags;
    }
    [[nodiscard]] std::vector<std::string> flaggedIDs() const {
        std::vector<std::string> result;
        for (const ReminderTask& task : store->tasks()) {
            if (task.isFlagged)
                result.push_back(task.id.toStdString());
        }
        return result;
    }
    static ReminderScript::SetFlag script(const QString& key, bool flag) {
        return {key, flag, QStringLiteral("list")};
    }
    void reload() {
        store->reloadFlags();
        scheduler.runPosted();
    }

    ScriptedHost host;
    ManualExecutor queue;
    std::optional<FlaggedReminderAutomation> flags{std::in_place, host, queue, scheduler};
};

TEST_F(ReminderStoreFlags, ALocalFlagThatAnotherProcessTakesBackIsNotPutBack) {
    loadedStore();
    store->setFlagged(a, true, {});
    scheduler.advance(1s);
    ASSERT_THAT(flaggedIDs(), ElementsAre("a"));
    defaults.set(QStringLiteral("reminderFlagIndex.localOverrides"), QJsonObject{{"a", false}});
    EXPECT_THAT(flaggedIDs(), IsEmpty());
    store->setFlagged(b, true, {});
    scheduler.advance(1s);
    EXPECT_THAT(flaggedIDs(), ElementsAre("b"));
    EXPECT_EQ(defaults.object(QStringLiteral("reminderFlagIndex.localOverrides")).toObject(),
              (QJsonObject{{"a", false}, {"b", true}}));
}

TEST_F(ReminderStoreFlags, WhatIsFlaggedElsewhereIsReadAndKept) {
    host.flagged = {QStringLiteral("x-kestrant-reminder://A"), QStringLiteral("x-other://x/y")};
    loadedStore();
    EXPECT_THAT(flaggedIDs(), ElementsAre("a"));
    EXPECT_EQ(store->filterCounts().flagged, 1);
    EXPECT_EQ(*defaults.stringList(QStringLiteral("reminderFlagIndex.nativeIDs")),
              (QStringList{QStringLiteral("a"), QStringLiteral("y")}));
    host.flagged = {QStringLiteral("x-kestrant-reminder://b")};
    database.putReminder(aReminder("c"));
    scheduler.advance(1s);
    EXPECT_THAT(flaggedIDs(), ElementsAre("b")) << "read again when the database has changed";
    host.failure = ScriptError{};
    store.reset();
    loadedStore();
    EXPECT_THAT(flaggedIDs(), ElementsAre("b")) << "what was read last is remembered";
}

TEST_F(ReminderStoreFlags, AFlagSetHereShowsAtOnceAndIsWritten) {
    loadedStore();
    queue.hold();
    Outcome end;
    store->toggleFlag(a, end.completion());
    EXPECT_THAT(flaggedIDs(), ElementsAre("a"));
    EXPECT_THAT(store->pendingFlagIDs(), ElementsAre(a));
    EXPECT_EQ(defaults.object(QStringLiteral("reminderFlagIndex.localOverrides")),
              QJsonValue(QJsonObject{{a, true}}));
    queue.release();
    EXPECT_EQ(end.calls, 0);
    scheduler.runPosted();
    EXPECT_TRUE(end.succeeded());
    EXPECT_THAT(store->pendingFlagIDs(), IsEmpty());
    EXPECT_THAT(host.written, ElementsAre(script(a, true)));
    host.flagged = {QStringLiteral("x-kestrant-reminder://a")};
    store->toggleFlag(a, nullptr);
    reload();
    EXPECT_THAT(flaggedIDs(), IsEmpty()) << "a flag set here wins";
    EXPECT_THAT(host.written, ElementsAre(script(a, true), script(a, false)));
    Outcome missing;
    store->toggleFlag(QStringLiteral("nobody"), missing.completion());
    scheduler.runPosted();
    EXPECT_TRUE(missing.failedWith(Code::reminderNotFound));
}

TEST_F(ReminderStoreFlags, OnlyTheAnswerToTheLatestWriteEndsTheWaiting) {
    loadedStore();
    std::vector<QSet<QString>> pending;
    const auto notePending = [&](const auto& result) {
        EXPECT_TRUE(result);
        pending.push_back(store->pendingFlagIDs());
    };
    queue.hold();
    store->toggleFlag(a, notePending);
    store->toggleFlag(a, notePending);
    store->toggleFlag(b, notePending);
    queue.release();
    scheduler.runPosted();
    EXPECT_THAT(pending, ElementsAre(QSet<QString>{a, b}, QSet<QString>{b}, QSet<QString>{}));
    EXPECT_THAT(host.written, ElementsAre(script(a, true), script(a, false), script(b, true)));
}

TEST_F(ReminderStoreFlags, ARefusedWriteIsToldAndTheFlagStays) {
    loadedStore();
    host.failure = ScriptError{};
    Outcome end;
    store->setFlagged(a, true, end.completion());
    scheduler.runPosted();
    ASSERT_TRUE(end.failedWith(Code::flagNotUpdated));
    EXPECT_EQ(end.error->message(),
              text("The flag could not be updated.", "Le drapeau n’a pas pu être modifié."));
    EXPECT_THAT(flaggedIDs(), ElementsAre("a"));
    EXPECT_THAT(store->pendingFlagIDs(), IsEmpty());
}

TEST_F(ReminderStoreFlags, AFailedReadSaysWhyAndKeepsTheFlags) {
    host.flagged = {QStringLiteral("x-kestrant-reminder://a")};
    loadedStore();
    host.failure = ScriptError{ScriptError::Code::failed, QStringLiteral("detail")};
    reload();
    EXPECT_EQ(
        store->flagFilterError(),
        text("Reminders sync unavailable: Failed to read flagged reminders. Local flags remain available.",
             "Synchronisation Rappels indisponible : Impossible de lire les rappels marqués. Les drapeaux "
             "locaux restent disponibles."));
    EXPECT_FALSE(store->isFlagLoading());
    EXPECT_THAT(flaggedIDs(), ElementsAre("a"));
    host.failure->code = ScriptError::Code::notPermitted;
    reload();
    EXPECT_EQ(
        store->flagFilterError(),
        text(
            "Reminders sync unavailable: Access to Reminders flags was denied. Local flags remain available.",
            "Synchronisation Rappels indisponible : L’accès aux drapeaux de Rappels a été refusé. Les "
            "drapeaux locaux restent disponibles."));
    host.failure.reset();
    reload();
    EXPECT_EQ(store->flagFilterError(), std::nullopt);
}

TEST_F(ReminderStoreFlags, ASlowReadTimesOutAndIsStillHeededWhenItComes) {
    loadedStore();
    queue.hold();
    host.flagged = {QStringLiteral("x-kestrant-reminder://a")};
    store->reloadFlags();
    scheduler.advance(10s - 1us);
    EXPECT_TRUE(store->isFlagLoading());
    EXPECT_EQ(store->flagFilterError(), std::nullopt);
    scheduler.advance(1us);
    EXPECT_FALSE(store->isFlagLoading());
    EXPECT_EQ(
        store->flagFilterError(),
        text("Sync with Reminders Flagged list timed out. Local flags remain available.",
             "La synchronisation avec la liste Drapeaux de Rappels a expiré. Les drapeaux locaux restent "
             "disponibles."));
    queue.release();
    scheduler.runPosted();
    EXPECT_THAT(flaggedIDs(), ElementsAre("a"));
    EXPECT_EQ(store->flagFilterError(), std::nullopt);
}

TEST_F(ReminderStoreFlags, AnOverdueAnswerToAnEarlierReadIsDropped) {
    loadedStore();
    queue.hold();
    store->reloadFlags();
    store->reloadFlags();
    host.failure = ScriptError{};
    queue.release();
    int errors = 0;
    QObject::connect(&*store, &ReminderStore::flagFilterErrorChanged, &*store, [&] { ++errors; });
    scheduler.runPosted();
    EXPECT_EQ(errors, 1);
    EXPECT_FALSE(store->isFlagLoading());
}

TEST_F(ReminderStoreFlags, AReminderCreatedWithItsFlagIsWrittenALittleLater) {
    loadedStore();
    NewReminder reminder;
    reminder.title = QStringLiteral("new");
    reminder.isFlagged = true;
    Outcome created;
    store->create(reminder, created.creation());
    scheduler.runPosted();
    EXPECT_THAT(flaggedIDs(), ElementsAre(created.id.toStdString()));
    bool idle = false;
    store->whenIdle([&] { idle = true; });
    scheduler.advance(199ms);
    EXPECT_THAT(host.written, IsEmpty());
    EXPECT_FALSE(idle);
    scheduler.advance(1ms);
    EXPECT_THAT(host.written, ElementsAre(script(ReminderFlagIndex::flagKey(created.id), true)));
    EXPECT_TRUE(idle);

    store->create(reminder, created.creation());
    scheduler.runPosted();
    history.undo();
    scheduler.advance(1s);
    EXPECT_EQ(host.written.size(), 1U) << "it was taken back before";
}

TEST_F(ReminderStoreFlags, FlagsAreTakenBackAndFollowAReminderThatComesBack) {
    database.setKeepsIdentifiers(false);
    loadedStore().toggleFlag(a, nullptr);
    scheduler.advance(1s);
    store->setFlagged(a, true, nullptr);
    store->remove(a, nullptr);
    scheduler.advance(1s);
    EXPECT_THAT(recorded(), ElementsAre("Flag reminder", "Delete reminder")) << "nothing new is no action";
    history.undo();
    scheduler.advance(1s);
    ASSERT_EQ(flaggedIDs().size(), 1U);
    const QString back = QString::fromStdString(flaggedIDs().front());
    EXPECT_NE(back, a);
    history.undo();
    scheduler.advance(1s);
    EXPECT_THAT(flaggedIDs(), IsEmpty());
    EXPECT_EQ(host.written.back(), script(ReminderFlagIndex::flagKey(back), false));
    history.redo();
    scheduler.advance(1s);
    EXPECT_EQ(host.written.back(), script(ReminderFlagIndex::flagKey(back), true));
    history.undo();
    scheduler.advance(1s);
    store->toggleFlag(back, nullptr);
    EXPECT_EQ(history.undoEntries().back().title.french, QStringLiteral("Ajouter un drapeau"));
    store->toggleFlag(back, nullptr);
    EXPECT_EQ(history.undoEntries().back().title, text("Remove flag", "Retirer le drapeau"));
    scheduler.advance(1s);
    database.dropReminder(back);
    history.undo();
    scheduler.advance(1s);
    EXPECT_EQ(history.undoEntries().size(), 2U) << "there is nothing to flag any more";
}

TEST_F(ReminderStoreFlags, WithoutAutomationFlagsAreKeptHere) {
    automation = nullptr;
    loadedStore();
    Outcome end;
    store->toggleFlag(a, end.completion());
    scheduler.runPosted();
    EXPECT_TRUE(end.succeeded());
    store->setShowsFlaggedOnly(true);
    EXPECT_THAT(visibleIDs(), ElementsAre("a"));
    EXPECT_FALSE(store->isFlagLoading());
    EXPECT_THAT(host.written, IsEmpty());
}

TEST_F(ReminderStoreFlags, TheEndOfTheAutomationInterruptsTheHostAndDropsLateAnswers) {
    loadedStore();
    queue.hold();
    store->toggleFlag(a, nullptr);
    store->reloadFlags();
    flags.reset();
    EXPECT_TRUE(host.isInterrupted);
    queue.release();
    scheduler.runPosted();
    EXPECT_THAT(store->pendingFlagIDs(), ElementsAre(a));
}

TEST_F(ReminderStoreFlags, DamagedPreferencesAreNoFlags) {
    defaults.set(QStringLiteral("reminderFlagIndex.nativeIDs"), 5);
    defaults.set(QStringLiteral("reminderFlagIndex.localOverrides"),
                 QJsonObject{{a, true}, {b, QStringLiteral("yes")}});
    host.failure = ScriptError{};
    loadedStore();
    EXPECT_THAT(flaggedIDs(), ElementsAre("a"));
}

}  // namespace
}  // namespace kestrant
