#pragma once

#include "eventkit/icalendar/Event.h"
#include "eventkit/items/OpenItem.h"

#include <optional>
#include <utility>
#include <vector>

namespace kestrant::items {

// What taking back changes of reminders and of events has in common.

/// What items of one kind are called in a file, and how they are read.
template <typename Item>
struct ItemKind;
template <>
struct ItemKind<icalendar::TodoItem> {
    static constexpr QByteArrayView component = "VTODO";
    static constexpr auto read = &icalendar::readTodos;
    [[nodiscard]] static const QString& title(const icalendar::TodoItem& item) { return item.data.title; }
};
template <>
struct ItemKind<icalendar::EventItem> {
    static constexpr QByteArrayView component = "VEVENT";
    static constexpr auto read = &icalendar::readEvents;
    [[nodiscard]] static const QString& title(const icalendar::EventItem& item) {
        return item.event.data.title;
    }
};

/// An item in the text of a file that was read before.
template <typename Item>
struct KnownItem {
    icalendar::Document document;
    Item item;
};

/// The item with this key in a state of its file; absent where that does not say it.
template <typename Item>
std::optional<KnownItem<Item>> knownItem(const ItemState& state, const QByteArray& key,
                                         const ZoneCalendar& local) {
    auto document = icalendar::Document::parse(state.text);
    if (!document)
        return std::nullopt;
    int ordinal = 0;
    for (Item& item : ItemKind<Item>::read(*document, local)) {
        if (item.key == key && ordinal++ == state.ordinal)
            return KnownItem<Item>{std::move(*document), std::move(item)};
    }
    return std::nullopt;
}

/// Adds an item again that a change removed.
template <typename Item, typename Entries>
tl::expected<ItemChange, EKError>
ItemDatabase::bringBack(const ItemChange& change, Entries Snapshot::*entries, const ZoneCalendar& local) {
    using Kind = ItemKind<Item>;
    const ItemState& before = *change.before;
    const auto collection = writableCollection(QFile::decodeName(before.collection));
    if (!collection)
        return tl::unexpected(collection.error());
    auto known = knownItem<Item>(before, change.key, local);
    if (!known || ((*snapshot_).*entries).contains(change.identifier))
        return tl::unexpected(conflictError(known ? Kind::title(known->item) : change.identifier));
    if (!before.isAlone)
        icalendar::keepOnlyItem(known->document, Kind::component, known->item);
    const auto created = createFile(*collection, change.key, before.file, known->document, local);
    if (!created)
        return tl::unexpected(created.error());
    rebuildSnapshot();
    return ItemChange{identifierIn((*snapshot_).*entries, created->place, created->uid), created->uid,
                      std::nullopt,
                      ItemState{created->place.collection, created->place.file, created->stored.text}};
}

}  // namespace kestrant::items
