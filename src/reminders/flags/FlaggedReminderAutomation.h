#pragma once

#include "foundation/BackgroundExecutor.h"
#include "foundation/Scheduler.h"
#include "foundation/Text.h"
#include "reminders/flags/ScriptHost.h"

#include <QSet>
#include <QString>

#include <tl/expected.hpp>

#include <functional>
#include <optional>

namespace kestrant {

/// Reads and sets flags by scripting the Reminders application. Scripts run one at a time on a queue of their
/// own; completions are called exactly once, on the main thread, and not after the end of this object.
/// Thread: main.
class FlaggedReminderAutomation {
  public:
    struct AutomationError {
        TextPair message;
        bool operator==(const AutomationError&) const = default;
    };
    using ReadCompletion = std::function<void(tl::expected<QSet<QString>, AutomationError>)>;
    using SetCompletion = std::function<void(tl::expected<void, AutomationError>)>;

    /// Name of the queue's thread.
    static constexpr auto queueLabel = "com.Kestrant.notchapp.reminders-automation";

    /// `queue` runs one job at a time, never on the main thread, and has run all of them when it ends; the
    /// host outlives it, and both outlive this object.
    FlaggedReminderAutomation(ScriptHost& host, BackgroundExecutor& queue, Scheduler& scheduler);
    FlaggedReminderAutomation(const FlaggedReminderAutomation&) = delete;
    FlaggedReminderAutomation& operator=(const FlaggedReminderAutomation&) = delete;
    /// Interrupts the host.
    ~FlaggedReminderAutomation();

    /// The flag keys of all flagged reminders that are open.
    void readFlaggedIdentifiers(ReadCompletion completion);
    /// Sets the flag of the reminder whose identifier ends with `targetSuffix`, a flag key. It is looked for
    /// in the list of this name first.
    void setFlag(const QString& targetSuffix, bool flag, const std::optional<QString>& listName,
                 SetCompletion completion);

  private:
    using Result = tl::expected<QStringList, ScriptError>;
    void run(const ReminderScript& script, std::function<void(Result)> completion);

    ScriptHost& host_;
    BackgroundExecutor& queue_;
    Scheduler& scheduler_;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace kestrant
