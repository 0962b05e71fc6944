#pragma once

#include "foundation/Scheduler.h"

#include <QObject>

#include <chrono>
#include <unordered_map>

namespace kestrant {

/// The scheduler of the thread that creates it, on Qt's event loop. Timers are precise to a millisecond and
/// stand still while the machine sleeps. Work that was posted, or is delayed, when the scheduler goes is
/// dropped.
class QtScheduler final : public Scheduler, private QObject {
  public:
    QtScheduler() = default;

    [[nodiscard]] ScheduledTask after(Duration delay, std::function<void()> work) override;
    [[nodiscard]] ScheduledTask every(Duration interval, std::function<void()> work) override;
    void post(std::function<void()> work) override;

  private:
    struct Timer {
        std::weak_ptr<ScheduledTask::State> task;
        /// What is left when the timer fires, for delays longer than a timer can be set to.
        std::chrono::milliseconds remaining;
        bool repeats;
    };

    void timerEvent(QTimerEvent* event) override;
    void start(std::chrono::milliseconds delay, const std::weak_ptr<ScheduledTask::State>& task,
               bool repeats);

    std::unordered_map<int, Timer> timers_;
};

}  // namespace kestrant
