#pragma once

#include <QThreadPool>

#include <functional>

namespace kestrant {

/// Runs work away from the main thread, for what would hold it up longer than a frame. Works may run side by
/// side and end in any order. A result goes back by Scheduler::post().
class BackgroundExecutor {
  public:
    virtual ~BackgroundExecutor() = default;
    /// Runs `work` once, as soon as there is room. It must not throw. Thread: any.
    virtual void run(std::function<void()> work) = 0;
};

/// Runs work on threads of its own. Its end waits for what was begun and drops what was not, so whatever work
/// refers to must live longer.
class ThreadPoolExecutor final : public BackgroundExecutor {
  public:
    ThreadPoolExecutor() = default;
    ~ThreadPoolExecutor() override;
    void run(std::function<void()> work) override;

  private:
    QThreadPool pool_;
};

}  // namespace kestrant
