#pragma once

#include "foundation/Scheduler.h"

#include <QString>
#include <QThread>

#include <deque>
#include <memory>
#include <mutex>

namespace kestrant {

/// A thread of its own with a Qt event loop, which does what it is given one piece after the other. Its end
/// waits until everything posted before has run; delayed work that is not due by then never runs.
class SerialThread final : public Scheduler {
  public:
    explicit SerialThread(const QString& name);
    ~SerialThread() override;

    /// Thread: this one, as for cancelling what is returned. Precise to a millisecond.
    [[nodiscard]] ScheduledTask after(Duration delay, std::function<void()> work) override;
    [[nodiscard]] ScheduledTask every(Duration interval, std::function<void()> work) override;
    void post(std::function<void()> work) override;

  private:
    class Inbox;

    QThread thread_;
    std::unique_ptr<Inbox> inbox_;
};

}  // namespace kestrant
