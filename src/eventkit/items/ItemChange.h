#pragma once

#include "eventkit/model/EKEventStore.h"

#include <optional>
#include <utility>
#include <vector>

namespace kestrant::items {

/// A file that holds an item, at one moment.
struct ItemState {
    QByteArray collection;
    QByteArray file;
    /// The item's key there; some services give another one to what is moved or comes back.
    QByteArray key;
    /// All of it.
    QByteArray text;
    /// Which of the items with its key the item is.
    int ordinal = 0;
    /// Whether the file holds nothing else.
    bool isAlone = true;
};

/// The change of one item.
struct ItemChange {
    QString identifier;
    /// Absent where it was made.
    std::optional<ItemState> before;
    /// Absent where it was removed.
    std::optional<ItemState> after;
};

/// A change as a database of files remembers it: the item itself, then what else it made or changed: the copy
/// of a completed occurrence, or the series that an event left for another calendar.
struct ChangeRecord final : EKItemChange {
    ChangeRecord(EKEntityType kind, std::vector<ItemChange> changes)
        : type(kind)
        , items(std::move(changes)) {}
    EKEntityType type;
    std::vector<ItemChange> items;
};

}  // namespace kestrant::items
