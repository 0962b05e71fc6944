#pragma once

#include "foundation/Instant.h"

#include <functional>
#include <memory>

namespace kestrant {

/// Tells the time. Nothing below the application reads a clock in any other way.
class Clock {
  public:
    virtual ~Clock() = default;
    /// Thread: any.
    [[nodiscard]] virtual Instant now() const = 0;
};

/// Owns one piece of delayed work. Destroying or overwriting it, or calling cancel(), means the work never
/// runs. Once the work has started running the task is no longer pending. Move-only. Thread: that of its
/// scheduler.
class ScheduledTask {
  public:
    /// A scheduler's record of a task; shared between the scheduler and the handle.
    struct State {
        std::function<void()> work;
        bool pending = true;
    };

    ScheduledTask() = default;
    explicit ScheduledTask(std::shared_ptr<State> state) : state_(std::move(state)) {}
    ScheduledTask(ScheduledTask&& other) noexcept = default;
    ScheduledTask& operator=(ScheduledTask&& other) noexcept;
    ScheduledTask(const ScheduledTask&) = delete;
    ScheduledTask& operator=(const ScheduledTask&) = delete;
    ~ScheduledTask() { cancel(); }

    /// Stops the work from running and forgets it. Harmless when it has run or was cancelled.
    void cancel();
    /// True from scheduling until the work starts or is cancelled; for repeating work, until it is cancelled.
    [[nodiscard]] bool isPending() const { return state_ && state_->pending; }

  private:
    std::shared_ptr<State> state_;
};

/// Delayed work on one thread, the one the scheduler was created on (the "main thread" of the models that use
/// it). Work is never run from within the call that schedules it.
class Scheduler {
  public:
    virtual ~Scheduler() = default;

    /// Runs `work` once, after `delay` (at least one turn later, also for 0). Thread: the scheduler's.
    [[nodiscard]] virtual ScheduledTask after(Duration delay, std::function<void()> work) = 0;

    /// Runs `work` every `interval` until the handle is cancelled; missed ticks are skipped. Thread: the
    /// scheduler's.
    [[nodiscard]] virtual ScheduledTask every(Duration interval, std::function<void()> work) = 0;

    /// Runs `work` on the scheduler's thread on a later turn; calls from one thread keep their order. Cannot
    /// be cancelled: `work` must check for itself whether its owner still exists. Thread: any.
    virtual void post(std::function<void()> work) = 0;
};

}  // namespace kestrant
