#pragma once

#include "eventkit/EKEventStore.h"
#include "foundation/ZoneCalendar.h"

#include <tl/expected.hpp>

#include <memory>

namespace kestrant {

/// Opens the module with the desktop's own database, Evolution Data Server, and makes the store. The module
/// is looked for beside the program and where it is installed; once opened it stays. Fails, with a sentence,
/// where it or a library that it needs is missing. Nothing is asked of the service yet. Thread: main.
[[nodiscard]] tl::expected<std::unique_ptr<EKEventStore>, TextPair>
makeEvolutionStore(Scheduler& scheduler, const Clock& clock, const CurrentCalendar& calendar);

}  // namespace kestrant
