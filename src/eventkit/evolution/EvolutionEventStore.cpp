#include "eventkit/evolution/EvolutionEventStore.h"

#include "eventkit/evolution/EvolutionStorage.h"
#include "eventkit/evolution/SourceQueues.h"
#include "foundation/CurrentTimeZone.h"

#include <utility>

namespace kestrant {

EvolutionEventStore::EvolutionEventStore(Scheduler& scheduler, const Clock& clock,
                                         const CurrentTimeZone& currentZone,
                                         std::chrono::milliseconds longest, const EventStoreUse& use)
    : EvolutionEventStore(scheduler, clock, currentZone, longest, use, new evolution::SourceQueues) {}

EvolutionEventStore::EvolutionEventStore(Scheduler& scheduler, const Clock& clock,
                                         const CurrentTimeZone& currentZone,
                                         std::chrono::milliseconds longest, const EventStoreUse& use,
                                         evolution::SourceQueues* queues)
    : ItemEventStore(
          scheduler, clock, currentZone,
          [&](items::StorageObserver observer) {
              return std::make_unique<evolution::EvolutionStorage>(std::move(observer), longest, queues, use);
          },
          std::unique_ptr<items::WorkQueues>(queues)) {}

}  // namespace kestrant
