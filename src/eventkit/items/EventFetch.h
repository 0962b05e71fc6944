#pragma once

#include "eventkit/items/ItemSnapshot.h"
#include "eventkit/model/EKEventStore.h"

#include <memory>
#include <vector>

namespace kestrant::items {

/// Limits of one answer in rows and steps; past them, what is nearest to the present is kept.
struct FetchBudget {
    std::size_t events = 50'000;
    /// Steps of the search for dates of series (EventSeries::Cost). Every series has a few thousand of its
    /// own; the rest is shared by those that need more.
    qint64 steps = 1'500'000;
};

struct EventsFound {
    EKEvents found;
    /// Those that have more occurrences, or take more steps, than one series may.
    std::vector<std::shared_ptr<const EventSeries>> costly;
    /// Steps that were taken.
    qint64 steps = 0;
};

/// The occurrences that match, each of a series by itself. Thread: any.
[[nodiscard]] EventsFound fetchEvents(const Snapshot& snapshot, const EKEventPredicate& predicate,
                                      Instant now, const FetchBudget& budget = {});

}  // namespace kestrant::items
