#pragma once

#include "eventkit/InMemoryEventStore.h"

#include <optional>
#include <vector>

namespace kestrant {

/// A change as the database in memory remembers it.
struct InMemoryEventStore::Change final : EKReminderChange {
    struct Item {
        QString identifier;
        /// Absent before it was made, or after it was removed.
        std::optional<EKReminderData> before;
        std::optional<EKReminderData> after;
    };
    /// The reminder itself, then the copy of a completed occurrence.
    std::vector<Item> items;
};

}  // namespace kestrant
