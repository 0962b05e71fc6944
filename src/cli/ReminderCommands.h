#pragma once

#include "cli/CommandRun.h"
#include "completion/CompletionLedgerRepository.h"
#include "reminders/ReminderStore.h"

namespace kestrant {

/// The commands about reminders.
class ReminderCommands {
  public:
    explicit ReminderCommands(CommandRun& run);

    /// Begins the command; it ends in the event loop.
    void start();

  private:
    void accessChanged();
    void loaded();
    void carryOut();
    void show();
    void add();
    void changed(const tl::expected<void, ReminderStoreError>& result);

    CommandRun& run_;
    CompletionLedgerRepository ledger_;
    ReminderStore store_;
    bool hasBegun_ = false;
};

}  // namespace kestrant
