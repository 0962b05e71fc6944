#pragma once

#include "cli/CommandRun.h"
#include "completion/CompletionLedgerRepository.h"
#include "foundation/SerialWorker.h"
#include "reminders/flags/EventStoreScriptHost.h"
#include "reminders/flags/FlaggedReminderAutomation.h"
#include "reminders/store/ReminderStore.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace kestrant {

/// The commands about reminders.
class ReminderCommands {
  public:
    explicit ReminderCommands(CommandRun& run);

    /// Begins the command; it ends in the event loop.
    void start();

  private:
    /// Reads the flags that the files hold.
    struct FlagReading {
        explicit FlagReading(CommandRun& run);

        EventStoreScriptHost host;
        SerialWorker queue;
        FlaggedReminderAutomation automation;
    };

    void accessChanged();
    /// Finds the list that was named.
    [[nodiscard]] tl::expected<void, TextPair> takeList();
    void loaded();
    void execute();
    /// Finds the reminders that were named; all of them exist, or the command is refused.
    void findReminders();
    void foundReminders();
    [[nodiscard]] TextPair notFound() const;
    void show();
    [[nodiscard]] std::vector<ReminderList> knownLists() const;
    /// Adds the next of the lines.
    void add();
    void added(const QuickAddLine& line, const QString& identifier);
    void edit();
    void reschedule();
    void move();
    void complete();
    void remove();
    /// Writes the flags of reminders to their files.
    void setFlagged(const QStringList& identifiers, bool flag, const std::function<void()>& done);
    /// Changes reminders and saves them together, tells `done` of those that were written, and says why the
    /// others were not.
    void saveTogether(const QStringList& identifiers, const std::function<void(EKReminderData&)>& change,
                      std::function<void(const QStringList& written)> done);
    void printFailure(const ReminderStoreError& error, const QString& identifier);
    [[nodiscard]] std::function<void(const tl::expected<void, ReminderStoreError>&)> end();
    /// Ends the command when everything that was begun has ended.
    void finish();

    CommandRun& run_;
    CompletionLedgerRepository ledger_;
    /// Where all flags are asked for.
    std::optional<FlagReading> flags_;
    ReminderStore store_;
    std::optional<QString> listID_;
    /// The identifiers of the reminders that the command is about.
    QStringList identifiers_;
    /// Those that are still to be added.
    QStringList lines_;
    bool hasBegun_ = false;
    bool hasFailed_ = false;
};

}  // namespace kestrant
