#include "eventkit/icalendar/Reverting.h"

#include "eventkit/items/OpenFile.h"
#include "eventkit/model/EKErrors.h"
#include "eventkit/model/EventChanges.h"
#include "eventkit/model/ReminderChanges.h"

#include <QFile>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

// Taking changes of reminders and events back.

namespace kestrant::items {

using icalendar::Component;
using icalendar::ComponentView;
using icalendar::Document;
using icalendar::EventItem;
using icalendar::TodoItem;

namespace {

/// An item in the text of a file that was read before.
template <typename Item>
struct KnownItem {
    icalendar::Document document;
    Item item;
};

/// The item in a state of its file; absent where that does not say it.
template <typename Item>
std::optional<KnownItem<Item>> knownItem(const ItemState& state, const TimeZone& local) {
    auto document = icalendar::Document::parse(state.text);
    if (!document)
        return std::nullopt;
    int ordinal = 0;
    for (Item& item : ItemKind<Item>::read(*document, local)) {
        if (item.key == state.key && ordinal++ == state.ordinal)
            return KnownItem<Item>{std::move(*document), std::move(item)};
    }
    return std::nullopt;
}

/// The present file with what led from `before` to `after` taken back; absent where somebody else has changed
/// the same.
std::optional<Document> takenBack(const Document& present, const TodoItem& item,
                                  const KnownItem<TodoItem>& before, const KnownItem<TodoItem>& after,
                                  Instant now) {
    const auto todoIn = [](const Document& document, const TodoItem& each) {
        return document.components("VTODO")[static_cast<std::size_t>(each.index)];
    };
    const auto todo = icalendar::reverted(todoIn(present, item), todoIn(before.document, before.item),
                                          todoIn(after.document, after.item), present.lineEnd(), now);
    if (!todo)
        return std::nullopt;
    Document result = present;
    result.replace(item.index, *todo);
    return result;
}

/// The components of an event by the date of the series that each is about; the series itself has none.
std::map<QByteArray, qsizetype> componentsOf(const EventItem& item, const Document& document) {
    const auto events = document.components("VEVENT");
    std::map<QByteArray, qsizetype> result{{QByteArray(), item.index}};
    for (const qsizetype index : item.changeIndexes) {
        const auto date = events[static_cast<std::size_t>(index)].property("RECURRENCE-ID");
        result.emplace(date ? date->value : QByteArray(), index);
    }
    return result;
}

/// The same, component by component.
std::optional<Document> takenBack(const Document& present, const EventItem& item,
                                  const KnownItem<EventItem>& before, const KnownItem<EventItem>& after,
                                  Instant now) {
    const auto was = componentsOf(before.item, before.document);
    const auto became = componentsOf(after.item, after.document);
    const auto is = componentsOf(item, present);
    const auto view = [](const Document& document, const std::map<QByteArray, qsizetype>& indexes,
                         const QByteArray& date) -> std::optional<ComponentView> {
        const auto found = indexes.find(date);
        if (found == indexes.end())
            return std::nullopt;
        return document.components("VEVENT")[static_cast<std::size_t>(found->second)];
    };
    auto dates = was;
    dates.insert(became.begin(), became.end());
    Document result = present;
    std::vector<Component> missing;
    std::vector<qsizetype> superfluous;
    for (const auto& [date, index] : dates) {
        const auto old = view(before.document, was, date);
        const auto changed = view(after.document, became, date);
        const auto current = view(present, is, date);
        if (old && changed) {
            if (old->text() == changed->text())
                continue;
            const auto restored = current
                                      ? icalendar::reverted(*current, *old, *changed, present.lineEnd(), now)
                                      : std::nullopt;
            if (!restored)
                return std::nullopt;
            result.replace(is.at(date), *restored);
        } else if (old) {
            if (current)
                return std::nullopt;
            missing.emplace_back(old->lines());
        } else if (current) {
            if (!icalendar::saySame(*current, *changed))
                return std::nullopt;
            superfluous.push_back(is.at(date));
        }
    }
    std::sort(superfluous.rbegin(), superfluous.rend());
    for (const qsizetype index : superfluous)
        result.remove("VEVENT", index);
    for (const Component& component : missing)
        result.add(component);
    return result;
}

/// Whether the file still says of an item what it said then, and nothing more.
bool isAsItWas(const KnownItem<TodoItem>& then, const Document&, const TodoItem& item) {
    return saysTheSame(then.item.data, item.data);
}

bool isAsItWas(const KnownItem<EventItem>& then, const Document& document, const EventItem& item) {
    const auto was = componentsOf(then.item, then.document);
    const auto is = componentsOf(item, document);
    return std::equal(was.begin(), was.end(), is.begin(), is.end(), [&](const auto& a, const auto& b) {
        const ComponentView old = then.document.components("VEVENT")[static_cast<std::size_t>(a.second)];
        const ComponentView present = document.components("VEVENT")[static_cast<std::size_t>(b.second)];
        return a.first == b.first && icalendar::saySame(old, present);
    });
}

}  // namespace

tl::expected<EKSaveResult, EKError> ItemDatabase::revert(const ChangeRecord& change,
                                                         const QString& identifier, Instant now,
                                                         const TimeZone& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    const bool isEvent = change.type == EKEntityType::event;
    const auto revertOne = [&](const ItemChange& item, const QString& name) {
        return isEvent ? revertItem<EventItem>(item, name, now, local)
                       : revertItem<TodoItem>(item, name, now, local);
    };
    std::vector<ItemChange> reverse;
    std::optional<QString> copyIdentifier;
    for (const ItemChange& item : change.items) {
        const bool isFirst = &item == &change.items.front();
        auto done = revertOne(item, isFirst ? identifier : item.identifier);
        if (!done) {
            // A copy of a reminder that somebody else has removed already leaves nothing to do.
            if (!isFirst && !isEvent && done.error().code == EKError::Code::itemNotFound)
                continue;
            for (const ItemChange& step : reverse)
                (void)revertOne(step, step.identifier);
            return tl::unexpected(done.error());
        }
        if (!isFirst && !isEvent && done->after)
            copyIdentifier = done->identifier;
        reverse.push_back(std::move(*done));
    }
    EKSaveResult result = resultOf(change.type, std::move(reverse));
    result.completedCopyIdentifier = copyIdentifier;
    return result;
}

template <typename Item>
tl::expected<ItemChange, EKError> ItemDatabase::revertItem(const ItemChange& change,
                                                           const QString& identifier, Instant now,
                                                           const TimeZone& local) {
    if (!change.after)
        return bringBack<Item>(change, local);
    const auto attempt = [&]() -> tl::expected<ItemChange, WriteError> {
        const auto opened = openWith<Item>(identifier, local);
        if (!opened)
            return tl::unexpected(WriteError(opened.error()));
        const auto& [file, item] = *opened;
        if (auto error = writeRefusal(file.location))
            return tl::unexpected(WriteError(std::move(*error)));
        auto done = change.before ? restore(change, identifier, file, item, now, local)
                                  : takeAway(change, identifier, file, item, local);
        // The written text becomes the known one.
        if (!done && std::holds_alternative<EKError>(done.error()))
            (void)refresh({.files = {{file.location.collection, {file.location.file}}}}, local);
        return done;
    };
    std::vector<QString> collections{QFile::decodeName(change.after->collection)};
    if (change.before)
        collections.push_back(QFile::decodeName(change.before->collection));
    return persist<ItemChange>(identifier, collections, attempt);
}

/// Adds an item again that a change removed.
template <typename Item>
tl::expected<ItemChange, EKError> ItemDatabase::bringBack(const ItemChange& change, const TimeZone& local) {
    using Kind = ItemKind<Item>;
    const ItemState& before = *change.before;
    const auto collection = writableCollection(QFile::decodeName(before.collection));
    if (!collection)
        return tl::unexpected(collection.error());
    auto known = knownItem<Item>(before, local);
    if (!known || ((*snapshot_).*Kind::entries).contains(change.identifier))
        return tl::unexpected(conflictError(known ? Kind::title(known->item) : change.identifier));
    if (!before.isAlone)
        icalendar::keepOnlyItem(known->document, Kind::component, known->item);
    return createItem<Item>(*collection, before.key, before.file, known->document, local);
}

template <typename Item>
tl::expected<ItemChange, WriteError>
ItemDatabase::restore(const ItemChange& change, const QString& identifier, const OpenFile& opened,
                      const Item& item, Instant now, const TimeZone& local) {
    using Kind = ItemKind<Item>;
    const auto target = collectionBefore(change, opened.location, Kind::title(item));
    if (!target)
        return tl::unexpected(target.error());
    const auto before = knownItem<Item>(*change.before, local);
    const auto after = knownItem<Item>(*change.after, local);
    std::optional<Document> document;
    const bool isUntouched = opened.isUntouchedSince(change);
    if (before && after)
        document = isUntouched ? before->document : takenBack(opened.document, item, *before, *after, now);
    if (!document)
        return tl::unexpected(WriteError(conflictError(Kind::title(item))));
    const auto written =
        storeItem(opened, item, std::move(*document), isUntouched ? before->item : item, *target, local);
    if (!written)
        return tl::unexpected(written.error());
    rebuildSnapshot();
    // The item may have come back under another UID.
    const bool isSame = written->location.collection == opened.location.collection;
    return ItemChange{isSame ? identifier
                             : identifierIn((*snapshot_).*Kind::entries, written->location, written->key),
                      opened.state(), opened.stateAfter(*written)};
}

template <typename Item>
tl::expected<ItemChange, WriteError> ItemDatabase::takeAway(const ItemChange& change,
                                                            const QString& identifier, const OpenFile& opened,
                                                            const Item& item, const TimeZone& local) {
    const auto made = knownItem<Item>(*change.after, local);
    if (!made || opened.location.collection != change.after->collection ||
        !isAsItWas(*made, opened.document, item))
        return tl::unexpected(WriteError(conflictError(ItemKind<Item>::title(item))));
    if (auto error = removeFromFile(opened, ItemKind<Item>::component, item, local))
        return tl::unexpected(std::move(*error));
    rebuildSnapshot();
    return ItemChange{identifier, opened.state(), std::nullopt};
}

tl::expected<QByteArray, WriteError> ItemDatabase::collectionBefore(const ItemChange& change,
                                                                    const FileLocation& present,
                                                                    const QString& title) const {
    const QByteArray& before = change.before->collection;
    const QByteArray& after = change.after->collection;
    QByteArray result = present.collection;
    if (before != after) {
        // Where it came from already, nothing of the move is left to take back.
        if (result != after && result != before)
            return tl::unexpected(WriteError(conflictError(title)));
        result = before;
    }
    if (const auto writable = writableCollection(QFile::decodeName(result)); !writable)
        return tl::unexpected(WriteError(writable.error()));
    return result;
}

}  // namespace kestrant::items
