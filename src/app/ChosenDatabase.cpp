#include "app/ChosenDatabase.h"

#include "app/OpenEventStore.h"
#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"

#include <utility>

namespace kestrant {

ChosenDatabase::ChosenDatabase(std::optional<EventStoreLocation> named, std::function<bool()> desktopHasStore,
                               const UserDefaults& defaults, Scheduler& scheduler, const Clock& clock,
                               const CurrentTimeZone& currentZone)
    : named_(std::move(named))
    , desktopHasStore_(std::move(desktopHasStore))
    , defaults_(defaults)
    , scheduler_(scheduler)
    , clock_(clock)
    , currentZone_(currentZone)
    , location_(chosen())
    , store_(location_.toString(), [this] { return open(); }) {}

void ChosenDatabase::exchange() {
    location_ = chosen();
    store_.switchTo(location_.toString(), [this] { return open(); });
}

bool ChosenDatabase::ringsAlerts() const {
    return location_.kind != EventStoreLocation::Kind::evolution ||
           defaults_.boolean(preferenceKeys::ringsAlertsOnEvolution)
               .value_or(preferenceKeys::ringsAlertsOnEvolution.defaultValue);
}

EventStoreLocation ChosenDatabase::chosen() const {
    return eventStoreToUse(named_, defaults_.string(preferenceKeys::eventStore),
                           EventStoreLocation::embeddedDefault(), desktopHasStore_);
}

std::unique_ptr<EKEventStore> ChosenDatabase::open() const {
    return openEventStore(location_, scheduler_, clock_, currentZone_);
}

}  // namespace kestrant
