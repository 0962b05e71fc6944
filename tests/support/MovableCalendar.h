#pragma once

#include "foundation/ObserverList.h"
#include "foundation/ZoneCalendar.h"

namespace kestrant {

/// A calendar whose zone a test can change; Paris at first.
class MovableCalendar : public CurrentCalendar {
  public:
    [[nodiscard]] ZoneCalendar calendar() const override { return ZoneCalendar(zone_); }
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override {
        return observers_.add(std::move(observer));
    }
    void moveTo(const char* zone) {
        zone_ = *TimeZone::named(zone);
        observers_.notify();
    }

  private:
    TimeZone zone_ = *TimeZone::named("Europe/Paris");
    ObserverList<> observers_;
};

}  // namespace kestrant
