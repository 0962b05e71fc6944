#pragma once

#include "eventkit/EKEventStore.h"
#include "foundation/Scheduler.h"
#include "reminders/ScriptHost.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace kestrant {

/// The scripting of reminders where the platform has none: carries out the few statements that are needed,
/// against the database itself. What scripts call the flag of a reminder is the mark that other programs
/// know it by (X-PINNED), and its id is "x-kestrant-reminder://" with its identifier.
///
/// execute() asks the database on the main thread and waits; it must not be called there. The end of this
/// object interrupts a script that is running; whoever runs it must have come back by then.
class EventStoreScriptHost final : public ScriptHost {
  public:
    /// Both outlive the host.
    EventStoreScriptHost(EKEventStore& eventStore, Scheduler& scheduler);
    EventStoreScriptHost(const EventStoreScriptHost&) = delete;
    EventStoreScriptHost& operator=(const EventStoreScriptHost&) = delete;
    ~EventStoreScriptHost() override;

    [[nodiscard]] tl::expected<QStringList, ScriptError> execute(const QString& source) override;
    void interrupt() override;

  private:
    class Database;

    /// What the main thread and the script's share.
    struct Shared {
        std::mutex mutex;
        std::condition_variable changed;
        bool isInterrupted = false;
        /// Time limits are numbered, so that a late end of one does not end the next. 0 is none.
        int timeLimit = 0;
        int expiredTimeLimit = 0;

        [[nodiscard]] bool isOverTime() const { return timeLimit != 0 && timeLimit == expiredTimeLimit; }
    };

    void onMain(std::function<void()> work);

    EKEventStore& eventStore_;
    Scheduler& scheduler_;
    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
    /// Of the main thread alone.
    ScheduledTask timeLimitTask_;
    /// Of the script's thread alone.
    int timeLimits_ = 0;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace kestrant
