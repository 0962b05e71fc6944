#pragma once

#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/EventStoreLocation.h"
#include "foundation/CurrentTimeZone.h"

#include <memory>

namespace kestrant {

/// Whether the module with the desktop's own database, Evolution Data Server, is installed beside the program
/// or where libraries are. It may still lack a library that it needs.
[[nodiscard]] bool hasEvolutionModule();

/// The database in this place; one that cannot be used gives no access and says why. What
/// `use` does not name it may do without. Thread: main.
[[nodiscard]] std::unique_ptr<EKEventStore> openEventStore(const EventStoreLocation& location,
                                                           Scheduler& scheduler, const Clock& clock,
                                                           const CurrentTimeZone& currentZone,
                                                           const EventStoreUse& use = {});

}  // namespace kestrant
