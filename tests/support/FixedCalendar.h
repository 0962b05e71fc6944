#pragma once

#include "foundation/ZoneCalendar.h"

namespace kestrant {

/// A person's calendar that stays in one zone.
class FixedCalendar : public CurrentCalendar {
  public:
    explicit FixedCalendar(const char* zone) : calendar_(*TimeZone::named(zone)) {}
    [[nodiscard]] ZoneCalendar calendar() const override { return calendar_; }
    [[nodiscard]] Subscription observeChanges(std::function<void()>) override { return {}; }

  private:
    ZoneCalendar calendar_;
};

}  // namespace kestrant
