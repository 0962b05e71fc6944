#pragma once

#include "eventkit/items/ItemEventStore.h"

#include <chrono>

namespace kestrant {

/// The desktop's own database of tasks and calendars, Evolution Data Server, with everything that online
/// accounts bring into it. The service only stores: dates of series are found, and changes merged, as they
/// are for every other database. What does not answer is shown as it was last seen, named among the
/// problems, and asked again.
class EvolutionEventStore final : public items::ItemEventStore {
  public:
    /// How long one call to the service may take.
    static constexpr std::chrono::seconds longestCall{20};

    EvolutionEventStore(Scheduler& scheduler, const Clock& clock, const CurrentCalendar& calendar,
                        std::chrono::milliseconds longest = longestCall);
};

}  // namespace kestrant
