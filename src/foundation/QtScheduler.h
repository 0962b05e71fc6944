#pragma once

#include "foundation/Scheduler.h"

#include <QObject>

#include <chrono>
#include <unordered_map>

namespace kestrant {

/// How long to wait, in the whole milliseconds that timers take, for work that is done every `interval`.
/// `due` is the moment of the last time and becomes that of the next, so that the mean is exact; a moment
/// that has passed meanwhile is made up for by none.
[[nodiscard]] std::chrono::milliseconds untilNext(std::chrono::steady_clock::time_point& due,
                                                  Duration interval,
                                                  std::chrono::steady_clock::time_point now);

/// The scheduler of the thread that creates it, on Qt's event loop. Timers are precise to a millisecond, and
/// those that repeat keep their mean interval exactly; they stand still while the machine sleeps. Work that
/// was posted, or is delayed, when the scheduler goes is dropped.
class QtScheduler final : public Scheduler, private QObject {
  public:
    QtScheduler() = default;

    [[nodiscard]] ScheduledTask after(Duration delay, std::function<void()> work) override;
    [[nodiscard]] ScheduledTask every(Duration interval, std::function<void()> work) override;
    void post(std::function<void()> work) override;

  private:
    struct Timer {
        std::weak_ptr<ScheduledTask::State> task;
        /// The time left when the timer fires, for delays longer than a timer's longest.
        std::chrono::milliseconds remaining;
        /// Zero for work that is done once.
        Duration interval;
        std::chrono::steady_clock::time_point due;
    };

    void timerEvent(QTimerEvent* event) override;
    void start(std::chrono::milliseconds delay, Timer timer);

    std::unordered_map<int, Timer> timers_;
};

}  // namespace kestrant
