#pragma once

#include "eventkit/items/ItemEventStore.h"
#include "eventkit/model/EventStoreLocation.h"
#include "foundation/CurrentTimeZone.h"

#include <chrono>

namespace kestrant {

namespace evolution {
class SourceQueues;
}

/// The desktop's own database of tasks and calendars, Evolution Data Server, with everything that online
/// accounts bring into it. The service only stores: dates of series are found, and changes merged, as they
/// are for every other database. Each list is worked on by itself, so that one that does not answer holds up
/// no other; it is shown as it was last seen, named among the problems, and asked again.
class EvolutionEventStore : public items::ItemEventStore {
  public:
    /// How long the service may take to answer what is asked of it together: to read, to write one change.
    static constexpr std::chrono::seconds longestCall{20};

    EvolutionEventStore(Scheduler& scheduler, const Clock& clock, const CurrentTimeZone& currentZone,
                        std::chrono::milliseconds longest = longestCall, const EventStoreUse& use = {});

  private:
    /// `queues` become the store's own.
    EvolutionEventStore(Scheduler& scheduler, const Clock& clock, const CurrentTimeZone& currentZone,
                        std::chrono::milliseconds longest, const EventStoreUse& use,
                        evolution::SourceQueues* queues);
};

}  // namespace kestrant
