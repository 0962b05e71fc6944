#pragma once

#include "foundation/SerialWorker.h"

#include <QByteArray>

#include <functional>

namespace kestrant::items {

/// Runs a database's work away from the main thread. Only one piece of work has the database to itself at any
/// time; where there are several queues, it is another one's turn while a storage waits for an answer.
class WorkQueues {
  public:
    WorkQueues() = default;
    WorkQueues(const WorkQueues&) = delete;
    WorkQueues& operator=(const WorkQueues&) = delete;
    /// Waits until everything has been run.
    virtual ~WorkQueues() = default;

    /// Runs work after all that was given for the same queue before. The empty name is that of the queue for
    /// what concerns no collection in particular, and never waits for one. Thread: any.
    virtual void run(const QByteArray& queue, std::function<void()> work) = 0;
    /// Whether names make a difference. If not, everything is run in the order in which it was given.
    [[nodiscard]] virtual bool areSeveral() const = 0;
    /// Runs the last work after everything else, and may wait for that.
    virtual void finish(std::function<void()> last) = 0;
};

/// One queue for everything.
class SingleQueue final : public WorkQueues {
  public:
    void run(const QByteArray&, std::function<void()> work) override { worker_.run(std::move(work)); }
    [[nodiscard]] bool areSeveral() const override { return false; }
    void finish(std::function<void()> last) override { worker_.run(std::move(last)); }

  private:
    SerialWorker worker_;
};

}  // namespace kestrant::items
