#pragma once

#include "cli/CommandRun.h"
#include "completion/CompletionLedgerRepository.h"
#include "foundation/SerialWorker.h"
#include "reminders/FlaggedReminderAutomation.h"
#include "reminders/ReminderStore.h"
#include "reminders/scripting/EventStoreScriptHost.h"

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
    void carryOut();
    void show();
    void add();
    void added(const QString& identifier);
    void edit();
    void reschedule();
    /// Writes the flag of a reminder to its file.
    /// All of them exist, or nothing is written.
    void setFlagged(const QStringList& identifiers, bool flag, const std::function<void()>& done);
    /// The error's message, which says of which reminder it tells where the command names several.
    [[nodiscard]] TextPair nameIfSeveral(const ReminderStoreError& error, const QString& identifier) const;
    void changed(const tl::expected<void, ReminderStoreError>& result);

    CommandRun& run_;
    CompletionLedgerRepository ledger_;
    /// Where all flags are asked for.
    std::optional<FlagReading> flags_;
    ReminderStore store_;
    std::optional<QString> listID_;
    bool hasBegun_ = false;
};

}  // namespace kestrant
