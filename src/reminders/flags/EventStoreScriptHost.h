#pragma once

#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/Scheduler.h"
#include "reminders/flags/ScriptHost.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace kestrant {

/// Carries out scripts against the database itself, where there is no application to steer. A reminder's flag
/// is the mark that other programs know it by (X-PINNED); its id is "x-kestrant-reminder://" with its
/// identifier. A flag is set where the last component of the identifier is the one that is looked for, so
/// that no other reminder that merely ends alike is changed.
///
/// execute() works on the main thread and waits for it; it must not be called there. The end of this object
/// interrupts a script that is running; whoever runs it must have come back by then.
class EventStoreScriptHost final : public ScriptHost {
  public:
    /// `openReminders` are those of the same database. All outlive the host.
    EventStoreScriptHost(EKEventStore& eventStore, OpenReminders& openReminders, Scheduler& scheduler);
    EventStoreScriptHost(const EventStoreScriptHost&) = delete;
    EventStoreScriptHost& operator=(const EventStoreScriptHost&) = delete;
    ~EventStoreScriptHost() override;

    [[nodiscard]] tl::expected<QStringList, ScriptError> execute(const ReminderScript& script) override;
    void interrupt() override;

  private:
    using Answer = std::function<void(tl::expected<QStringList, ScriptError>)>;
    /// State shared by the main thread and the script's.
    struct Shared {
        std::mutex mutex;
        std::condition_variable changed;
        bool isInterrupted = false;
    };

    void execute(const ReminderScript::ReadFlagged& request, const Answer& answer);
    void execute(const ReminderScript::SetFlag& request, const Answer& answer);

    EKEventStore& eventStore_;
    OpenReminders& openReminders_;
    Scheduler& scheduler_;
    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
    /// Of the main thread alone.
    ScheduledTask timeLimit_;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace kestrant
