#pragma once

#include "foundation/Instant.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kestrant {

/// Finds what touches a span of time without looking at everything: values in the order of their starts, each
/// with the latest end up to it.
template <typename Value>
class IntervalIndex {
  public:
    void add(Instant start, Instant end, Value value) { entries_.push_back({start, end, std::move(value)}); }

    /// To be called after the last add() and before the first forEachTouching().
    void prepare() {
        std::stable_sort(entries_.begin(), entries_.end(),
                         [](const Entry& a, const Entry& b) { return a.start < b.start; });
        Instant latest = Instant::min();
        for (Entry& entry : entries_)
            entry.latestEnd = latest = std::max(latest, entry.latestEnd);
    }

    /// Calls `visit` for each value that starts at or before `to`, and some that end before `from`, but none
    /// of those before all that reach `from`.
    template <typename Visit>
    void forEachTouching(Instant from, Instant to, Visit visit) const {
        auto entry = std::partition_point(entries_.begin(), entries_.end(),
                                          [&](const Entry& e) { return e.latestEnd < from; });
        for (; entry != entries_.end() && entry->start <= to; ++entry)
            visit(entry->value);
    }

  private:
    struct Entry {
        Instant start;
        /// First its own end, then the latest one of those up to it.
        Instant latestEnd;
        Value value;
    };

    std::vector<Entry> entries_;
};

}  // namespace kestrant
