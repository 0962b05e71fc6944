#pragma once

#include "foundation/Scheduler.h"

#include <future>
#include <optional>
#include <thread>

namespace kestrant {

/// A thread of its own with a Qt event loop, which does what it is given one piece after the other. Its end
/// waits until everything posted before has run; delayed work that is not due by then never runs.
///
/// With a limited patience it waits no longer than that and leaves the thread to the end of the process: for
/// work that nothing is lost with and that a service of the system may hold up for ever.
class EventLoopThread final : public Scheduler {
  public:
    /// The system shows the last part of a dotted label as the thread's name.
    explicit EventLoopThread(const char* label = "", std::optional<Duration> patience = {});
    EventLoopThread(const EventLoopThread&) = delete;
    EventLoopThread& operator=(const EventLoopThread&) = delete;
    ~EventLoopThread() override;

    /// Thread: this one, as for cancelling what is returned.
    [[nodiscard]] ScheduledTask after(Duration delay, std::function<void()> work) override;
    [[nodiscard]] ScheduledTask every(Duration interval, std::function<void()> work) override;
    void post(std::function<void()> work) override;

  private:
    class Loop;

    /// Lives on the thread.
    Loop* loop_ = nullptr;
    std::optional<Duration> patience_;
    std::future<void> ended_;
    std::thread thread_;
};

}  // namespace kestrant
