#include "eventkit/evolution/EvolutionEventStore.h"

#include "eventkit/evolution/EvolutionStorage.h"
#include "eventkit/evolution/GlibWorker.h"

#include <utility>

namespace kestrant {

EvolutionEventStore::EvolutionEventStore(Scheduler& scheduler, const Clock& clock,
                                         const CurrentCalendar& calendar, std::chrono::milliseconds longest)
    : ItemEventStore(
          scheduler, clock, calendar,
          [&](items::StorageObserver observer) {
              return std::make_unique<evolution::EvolutionStorage>(std::move(observer), longest);
          },
          std::make_unique<evolution::GlibWorker>()) {}

}  // namespace kestrant
