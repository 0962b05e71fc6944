#include "eventkit/evolution/EvolutionEventStore.h"
#include "eventkit/model/EventStoreLocation.h"
#include "foundation/CurrentTimeZone.h"

extern "C" Q_DECL_EXPORT kestrant::EKEventStore*
kestrantMakeEvolutionStore(kestrant::Scheduler& scheduler, const kestrant::Clock& clock,
                           const kestrant::CurrentTimeZone& currentZone, const kestrant::EventStoreUse& use) {
    return new kestrant::EvolutionEventStore(scheduler, clock, currentZone,
                                             kestrant::EvolutionEventStore::longestCall, use);
}
