#pragma once

#include "foundation/Scheduler.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace kestrant {

/// Clock and scheduler that stand still until told. Wall time and the timers' time move together in advance()
/// and apart in jumpWall(), as they do when a machine sleeps or its clock is set.
class ManualScheduler : public Scheduler, public Clock {
  public:
    explicit ManualScheduler(Instant start);

    [[nodiscard]] Instant now() const override;
    [[nodiscard]] ScheduledTask after(Duration delay, std::function<void()> work) override;
    [[nodiscard]] ScheduledTask every(Duration interval, std::function<void()> work) override;
    void post(std::function<void()> work) override;

    /// Moves time on, running what falls due in order, each at its own instant, and everything posted
    /// meanwhile.
    void advance(Duration duration);
    /// Moves the wall clock alone; timers keep the time they have left.
    void jumpWall(Duration duration);
    /// Runs what was posted (and what that posts) without moving time.
    void runPosted();
    /// Runs posted work until `done` holds, waiting for other threads to post; false when nothing was posted
    /// for a minute.
    [[nodiscard]] bool runUntil(const std::function<bool()>& done);

    /// Timers that have not run or been cancelled.
    [[nodiscard]] std::size_t pendingCount() const;

  private:
    struct Timer {
        Duration due;
        unsigned long long sequence;
        Duration interval;  // zero for a timer that runs once
        std::weak_ptr<ScheduledTask::State> state;
    };
    ScheduledTask add(Duration delay, Duration interval, std::function<void()> work);
    [[nodiscard]] std::vector<Timer>::iterator earliest();
    [[nodiscard]] std::function<void()> takePosted();

    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<std::function<void()>> queue_;
    std::vector<Timer> timers_;
    Instant wall_;
    Duration elapsed_{0};
    unsigned long long nextSequence_ = 0;
};

}  // namespace kestrant
