#pragma once

#include "foundation/Subscription.h"
#include "foundation/TimeZone.h"

#include <functional>
#include <utility>

namespace kestrant {

/// The person's time zone: that of the machine, which may change while the program runs. Thread: main.
class CurrentTimeZone {
  public:
    virtual ~CurrentTimeZone() = default;
    [[nodiscard]] virtual TimeZone zone() const = 0;
    /// Told after the zone has changed.
    [[nodiscard]] virtual Subscription observeChanges(std::function<void()> observer) = 0;
};

/// A zone that never changes.
class FixedTimeZone final : public CurrentTimeZone {
  public:
    explicit FixedTimeZone(TimeZone zone) : zone_(std::move(zone)) {}
    [[nodiscard]] TimeZone zone() const override { return zone_; }
    [[nodiscard]] Subscription observeChanges(std::function<void()>) override { return {}; }

  private:
    TimeZone zone_;
};

}  // namespace kestrant
