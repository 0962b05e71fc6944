#pragma once

#include "foundation/QtScheduler.h"
#include "foundation/Scheduler.h"

#include <QString>
#include <QThread>

#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace kestrant {

/// A thread of its own with a Qt event loop, which does what it is given one piece after the other. Its end
/// waits until everything posted before has run; delayed work that is not due by then never runs.
class EventLoopThread final : public Scheduler {
  public:
    explicit EventLoopThread(const QString& name);
    ~EventLoopThread() override;

    /// Thread: this one, as for cancelling what is returned.
    [[nodiscard]] ScheduledTask after(Duration delay, std::function<void()> work) override;
    [[nodiscard]] ScheduledTask every(Duration interval, std::function<void()> work) override;
    void post(std::function<void()> work) override;

  private:
    class Inbox;

    QtScheduler& timers();

    QThread thread_;
    std::unique_ptr<Inbox> inbox_;
    /// Made and ended on the thread.
    std::optional<QtScheduler> timers_;
};

}  // namespace kestrant
