#pragma once

#include "foundation/Scheduler.h"

#include <chrono>

namespace kestrant {

/// The machine's own time.
class SystemClock final : public Clock {
  public:
    [[nodiscard]] Instant now() const override {
        return std::chrono::time_point_cast<Duration>(std::chrono::system_clock::now());
    }
};

/// A time that stands still.
class FixedClock final : public Clock {
  public:
    explicit FixedClock(Instant now) : now_(now) {}
    [[nodiscard]] Instant now() const override { return now_; }

  private:
    Instant now_;
};

}  // namespace kestrant
