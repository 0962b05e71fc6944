#pragma once

#include "foundation/BackgroundExecutor.h"

#include <utility>
#include <vector>

namespace kestrant {

/// Runs work at once, or keeps it back until it is released.
class ManualExecutor : public BackgroundExecutor {
  public:
    void run(std::function<void()> work) override {
        if (isHeld_)
            held_.push_back(std::move(work));
        else
            work();
    }
    void hold() { isHeld_ = true; }
    /// Runs what was kept back, in order, and keeps nothing back any more.
    void release() {
        isHeld_ = false;
        for (const auto& work : std::exchange(held_, {}))
            work();
    }

  private:
    bool isHeld_ = false;
    std::vector<std::function<void()>> held_;
};

}  // namespace kestrant
