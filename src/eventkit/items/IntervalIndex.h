#pragma once

#include "foundation/Instant.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace kestrant {

/// Finds what touches a span of time without looking at everything: values in the order of their starts, each
/// with the latest end up to it.
template <typename Value>
class IntervalIndex {
  public:
    void add(Instant start, Instant end, Value value) {
        entries_.push_back({start, end, end, std::move(value)});
    }
    /// Takes out the values for which the predicate holds.
    template <typename Predicate>
    void removeIf(Predicate isDoomed) {
        const auto isEntryDoomed = [&](const Entry& entry) { return isDoomed(entry.value); };
        const auto sorted = entries_.begin() + sortedCount_;
        sortedCount_ -= std::count_if(entries_.begin(), sorted, isEntryDoomed);
        std::erase_if(entries_, isEntryDoomed);
    }

    /// To be called after the last change and before the first forEachTouching(). Sorts what was added since
    /// the last time only.
    void prepare() {
        const auto startsEarlier = [](const Entry& a, const Entry& b) { return a.start < b.start; };
        const auto sorted = entries_.begin() + sortedCount_;
        std::stable_sort(sorted, entries_.end(), startsEarlier);
        std::inplace_merge(entries_.begin(), sorted, entries_.end(), startsEarlier);
        sortedCount_ = std::ssize(entries_);
        Instant latest = Instant::min();
        for (Entry& entry : entries_)
            entry.latestEnd = latest = std::max(latest, entry.end);
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
        Instant end;
        /// The latest one of the ends up to it.
        Instant latestEnd;
        Value value;
    };

    std::vector<Entry> entries_;
    std::ptrdiff_t sortedCount_ = 0;
};

}  // namespace kestrant
