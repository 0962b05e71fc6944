#pragma once

#include "eventkit/model/EventStoreLocation.h"
#include "eventkit/model/EventStoreSwitch.h"

#include <functional>
#include <memory>
#include <optional>

namespace kestrant {

class CurrentTimeZone;
class UserDefaults;

/// The database in use: the one named when the program was started, else the one chosen in the settings, else
/// what fits the machine. Thread: main.
class ChosenDatabase {
  public:
    /// `desktopHasStore` says whether the desktop has a database of its own; may be empty. The others must
    /// outlive this.
    ChosenDatabase(std::optional<EventStoreLocation> named, std::function<bool()> desktopHasStore,
                   const UserDefaults& defaults, Scheduler& scheduler, const Clock& clock,
                   const CurrentTimeZone& currentZone);

    /// Stays the same object when another database is used.
    [[nodiscard]] EKEventStore& store() { return store_; }
    [[nodiscard]] const EventStoreLocation& location() const { return location_; }
    [[nodiscard]] bool wasNamed() const { return named_.has_value(); }
    [[nodiscard]] const std::function<bool()>& desktopHasStore() const { return desktopHasStore_; }
    /// Whether the settings choose another one than is in use.
    [[nodiscard]] bool isToBeExchanged() const { return chosen() != location_; }
    /// Uses the one that is chosen now.
    void exchange();
    /// Whether alerts ring from here: the desktop rings those of its own database by itself, unless a setting
    /// asks for it here.
    [[nodiscard]] bool ringsAlerts() const;

  private:
    [[nodiscard]] EventStoreLocation chosen() const;
    [[nodiscard]] std::unique_ptr<EKEventStore> open() const;

    std::optional<EventStoreLocation> named_;
    std::function<bool()> desktopHasStore_;
    const UserDefaults& defaults_;
    Scheduler& scheduler_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    EventStoreLocation location_;
    EventStoreSwitch store_;
};

}  // namespace kestrant
