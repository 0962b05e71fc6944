#pragma once

#include "eventkit/EKEventStore.h"
#include "eventkit/EventStoreLocation.h"
#include "foundation/ZoneCalendar.h"

#include <QStringList>

#include <tl/expected.hpp>

#include <memory>
#include <optional>

namespace kestrant {

/// Whether the module with the desktop's own database, Evolution Data Server, is installed beside the program
/// or where libraries are. It may still lack a library that it needs.
[[nodiscard]] bool hasEvolutionModule();

/// What somebody needs of a database, so that it can do without the rest.
struct EventStoreUse {
    /// Identifiers of all the items that are needed; absent where that is anything. Where it is none, lists
    /// are opened when something is written to them.
    std::optional<QStringList> items;
    /// Whether it is better to wait for a list that is late, as long as the limit, than to begin without it.
    bool waitsForAll = false;
};

/// Opens the module and makes the store; once opened it stays. Fails, with a sentence, where it or a library
/// that it needs is missing. Nothing is asked of the service yet. Thread: main.
[[nodiscard]] tl::expected<std::unique_ptr<EKEventStore>, TextPair>
makeEvolutionStore(Scheduler& scheduler, const Clock& clock, const CurrentCalendar& calendar,
                   const EventStoreUse& use);

/// The database in this place; one that cannot be used gives no access and says why. What
/// `use` does not name it may do without. Thread: main.
[[nodiscard]] std::unique_ptr<EKEventStore> openEventStore(const EventStoreLocation& location,
                                                           Scheduler& scheduler, const Clock& clock,
                                                           const CurrentCalendar& calendar,
                                                           const EventStoreUse& use = {});

}  // namespace kestrant
