#pragma once

#include "foundation/CurrentTimeZone.h"
#include "foundation/ObserverList.h"
#include "foundation/TimeZone.h"

namespace kestrant {

/// A calendar whose zone a test can change; Paris at first.
class MovableTimeZone : public CurrentTimeZone {
  public:
    [[nodiscard]] TimeZone zone() const override { return TimeZone(zone_); }
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
