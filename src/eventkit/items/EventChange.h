#pragma once

#include "eventkit/items/ReminderChange.h"

#include <vector>

namespace kestrant::items {

/// A change of an event as a database of files remembers it: the event itself, then the series that it left
/// for another calendar.
struct EventChange final : EKItemChange {
    explicit EventChange(std::vector<ItemChange> changed) : items(std::move(changed)) {}
    std::vector<ItemChange> items;
};

}  // namespace kestrant::items
