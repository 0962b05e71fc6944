#pragma once

#include <functional>

namespace kestrant {

/// Runs work away from the main thread, for what would hold it up longer than a frame. Works may run side by
/// side and end in any order, unless an executor promises more. A result goes back by Scheduler::post().
class BackgroundExecutor {
  public:
    virtual ~BackgroundExecutor() = default;
    /// Runs `work` once, as soon as there is room. It must not throw. Thread: any.
    virtual void run(std::function<void()> work) = 0;
};

/// Runs work at once on the caller's thread: for small amounts of it, and where nothing may come late.
class ImmediateExecutor final : public BackgroundExecutor {
  public:
    void run(std::function<void()> work) override { work(); }
};

}  // namespace kestrant
