#pragma once

#include "eventkit/EKEventStore.h"
#include "eventkit/EventStoreLocation.h"
#include "foundation/ZoneCalendar.h"

#include <tl/expected.hpp>

#include <memory>

namespace kestrant {

/// Whether the module with the desktop's own database, Evolution Data Server, is installed beside the program
/// or where libraries are. It may still lack a library that it needs.
[[nodiscard]] bool hasEvolutionModule();

/// Opens the module and makes the store; once opened it stays. Fails, with a sentence, where it or a library
/// that it needs is missing. Nothing is asked of the service yet. Thread: main.
[[nodiscard]] tl::expected<std::unique_ptr<EKEventStore>, TextPair>
makeEvolutionStore(Scheduler& scheduler, const Clock& clock, const CurrentCalendar& calendar);

/// The database in this place; one that cannot be used gives no access and says why. Thread: main.
[[nodiscard]] std::unique_ptr<EKEventStore> openEventStore(const EventStoreLocation& location,
                                                           Scheduler& scheduler, const Clock& clock,
                                                           const CurrentCalendar& calendar);

}  // namespace kestrant
