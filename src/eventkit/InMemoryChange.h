#pragma once

#include "eventkit/InMemoryEventStore.h"

#include <optional>
#include <utility>
#include <vector>

namespace kestrant {

/// A change as the database in memory remembers it.
struct InMemoryEventStore::Change final : EKItemChange {
    struct Item {
        QString identifier;
        /// Absent before it was made, or after it was removed.
        std::optional<EKReminderData> before;
        std::optional<EKReminderData> after;
    };
    /// The reminder itself, then the copy of a completed occurrence.
    std::vector<Item> items;
};

/// The same of occurrences of events.
struct InMemoryEventStore::EventChange final : EKItemChange {
    struct Occurrence {
        /// Absent before it was made, or after it was removed.
        std::optional<EKEventData> before;
        std::optional<EKEventData> after;
    };
    EventChange() = default;
    explicit EventChange(std::vector<Occurrence> changed) : occurrences(std::move(changed)) {}
    std::vector<Occurrence> occurrences;
};

}  // namespace kestrant
