#pragma once

#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/NotificationCenter.h"
#include "preferences/Localization.h"
#include "reminders/store/ReminderActionHistory.h"
#include "reminders/store/ReminderStore.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kestrant {

using namespace std::chrono_literals;

/// What a completion was told, and how often.
struct Outcome {
    int calls = 0;
    std::optional<ReminderStoreError> error;
    QString id;

    [[nodiscard]] ReminderStore::Completion completion() {
        return [this](const tl::expected<void, ReminderStoreError>& result) {
            ++calls;
            error = result ? std::nullopt : std::optional(result.error());
        };
    }
    [[nodiscard]] ReminderStore::CreationCompletion creation() {
        return [this](const tl::expected<QString, ReminderStoreError>& result) {
            ++calls;
            error = result ? std::nullopt : std::optional(result.error());
            id = result.value_or(QString());
        };
    }
    [[nodiscard]] bool succeeded() const { return calls == 1 && !error; }
    [[nodiscard]] bool failedWith(ReminderStoreError::Code code) const {
        return calls == 1 && error && error->code == code;
    }
};

/// A reminder store over a database in memory that holds two lists, "list" and "other"; Friday 27 March 2026,
/// noon, in Paris.
class ReminderStoreTest : public testing::Test {
  protected:
    static Instant paris(QDate day, QTime time = {0, 0}) { return at("Europe/Paris", day, time); }
    static Instant now() { return paris({2026, 3, 27}, {12, 0}); }

    ReminderStoreTest() {
        putList("list");
        putList("other");
    }

    QString putList(const char* id, bool writable = true) {
        EKCalendar list;
        list.calendarIdentifier = QString::fromUtf8(id);
        list.title = list.calendarIdentifier;
        list.allowsContentModifications = writable;
        return database.putCalendar(list);
    }

    void put(const EKReminderData& reminder) { database.putReminder(reminder); }

    /// Makes the store as it is at the start of the program; it has not asked for access yet.
    ReminderStore& makeStore() { return makeStoreOn(database); }
    ReminderStore& makeStoreOn(EKEventStore& eventStore) {
        openReminders.emplace(eventStore, scheduler);
        store.emplace(ReminderStoreServices{.eventStore = eventStore,
                                            .openReminders = *openReminders,
                                            .scheduler = scheduler,
                                            .clock = scheduler,
                                            .currentZone = currentZone,
                                            .defaults = defaults,
                                            .localization = localization,
                                            .notifications = notifications,
                                            .ledger = ledger,
                                            .completionsCommitted = [this](int count) { reported += count; },
                                            .history = &history,
                                            .flags = automation});
        return *store;
    }

    /// A store that has loaded, with everything that follows from loading behind it.
    ReminderStore& loadedStore() {
        makeStore().requestAccess();
        scheduler.advance(1s);
        return *store;
    }

    static std::vector<std::string> ids(const ReminderTaskList& tasks) {
        std::vector<std::string> result;
        for (const ReminderTask& task : tasks)
            result.push_back(task.id.toStdString());
        return result;
    }
    [[nodiscard]] std::vector<std::string> visibleIDs() const { return ids(store->visibleTasks()); }
    [[nodiscard]] std::vector<std::string> recordIDs() const {
        std::vector<std::string> result;
        for (const CompletionRecord& record : store->completionRecords())
            result.push_back(record.reminderIdentifier.toStdString());
        return result;
    }
    /// Titles of the actions that can be undone, oldest first.
    [[nodiscard]] std::vector<std::string> recorded() const {
        std::vector<std::string> result;
        for (const auto& entry : history.undoEntries())
            result.push_back(entry.title.english.toStdString());
        return result;
    }
    [[nodiscard]] EKReminderData stored(const char* id) const {
        const auto reminder = database.reminder(QString::fromUtf8(id));
        return reminder ? *reminder : EKReminderData{};
    }
    static EKError diskFull() {
        return {EKError::Code::storage, text("The disk is full.", "Le disque est plein.")};
    }

    QTemporaryDir folder;
    ManualScheduler scheduler{now()};
    MovableTimeZone currentZone;
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English, QLocale::UnitedStates); }};
    Localization localization{preferences};
    NotificationCenter notifications;
    /// How long the ledger's disk takes, and whether it refuses.
    std::optional<Duration> ledgerDelay;
    bool ledgerFails = false;
    std::vector<ScheduledTask> ledgerWrites;
    CompletionLedgerRepository ledger{
        folder.filePath(QStringLiteral("ledger.json")),
        [this](const QString& path, const std::shared_ptr<const LedgerChange>& change, const auto& done) {
            const auto write = [this, path, change, done] {
                if (ledgerFails)
                    done(tl::unexpected(FileError{path, ENOSPC, QStringLiteral("disk full")}));
                else
                    done(writeLedgerFile(path, *change));
            };
            if (ledgerDelay)
                ledgerWrites.push_back(scheduler.after(*ledgerDelay, write));
            else
                write();
        }};
    InMemoryEventStore database{scheduler, scheduler, currentZone};
    std::optional<OpenReminders> openReminders;
    ReminderActionHistory history{scheduler, scheduler};
    FlaggedReminderAutomation* automation = nullptr;
    int reported = 0;
    std::optional<ReminderStore> store;
};

}  // namespace kestrant
