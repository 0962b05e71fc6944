#pragma once

#include "eventkit/icalendar/Event.h"
#include "eventkit/icalendar/ItemWriting.h"
#include "eventkit/icalendar/Todo.h"
#include "eventkit/items/ItemDatabase.h"
#include "eventkit/model/EKErrors.h"
#include "eventkit/model/EventChanges.h"
#include "eventkit/model/ReminderChanges.h"

#include <QFile>

#include <functional>
#include <optional>
#include <utility>

namespace kestrant::items {

/// What the items of one kind are called in a file, how they are read, and where a snapshot has them.
template <typename Item>
struct ItemKind;
template <>
struct ItemKind<icalendar::TodoItem> {
    static constexpr EKEntityType type = EKEntityType::reminder;
    static constexpr QByteArrayView component = "VTODO";
    static constexpr auto read = &icalendar::readTodos;
    static constexpr auto entries = &Snapshot::reminders;
    [[nodiscard]] static const QString& title(const icalendar::TodoItem& item) { return item.data.title; }
};
template <>
struct ItemKind<icalendar::EventItem> {
    static constexpr EKEntityType type = EKEntityType::event;
    static constexpr QByteArrayView component = "VEVENT";
    static constexpr auto read = &icalendar::readEvents;
    static constexpr auto entries = &Snapshot::events;
    [[nodiscard]] static const QString& title(const icalendar::EventItem& item) {
        return item.event.data.title;
    }
};

/// A file that is to be changed, as it is at this moment, for the sake of one
/// item in it.
struct ItemDatabase::OpenFile {
    FileLocation location;
    Version version{};
    icalendar::Document document;
    /// The item's key, and which of the items with that key it is.
    QByteArray key;
    int ordinal = 0;
    /// Whether the file holds nothing else.
    bool isAlone = true;

    [[nodiscard]] ItemState state() const {
        return {location.collection, location.file, key, document.text(), ordinal, isAlone};
    }
    /// The state of an item of this file after it was written there or in another collection.
    [[nodiscard]] ItemState stateAfter(const WrittenItem& written) const {
        const bool isSame = written.location.collection == location.collection;
        return {written.location.collection, written.location.file, written.key, written.text,
                isSame ? ordinal : 0,        !isSame || isAlone};
    }
    /// Whether nobody has changed anything in the file since the change, so that its text before it will do.
    [[nodiscard]] bool isUntouchedSince(const ItemChange& change) const {
        const ItemState& after = *change.after;
        return location.collection == after.collection && location.file == after.file &&
               document.text() == after.text && change.before->isAlone == after.isAlone;
    }
};

struct ItemDatabase::OpenReminder : OpenFile {
    icalendar::TodoItem item;
    /// The values with their identifiers.
    EKReminderData current;

    [[nodiscard]] static OpenReminder of(std::pair<OpenFile, icalendar::TodoItem> found,
                                         const QString& identifier) {
        OpenReminder result{std::move(found.first), std::move(found.second), {}};
        result.current = result.item.data;
        result.current.calendarItemIdentifier = identifier;
        result.current.calendarIdentifier = QFile::decodeName(result.location.collection);
        return result;
    }
};

/// The result of a save for a file.
struct ItemDatabase::Revision {
    icalendar::Document document;
    /// The file of the occurrence that was finished, if the reminder recurs.
    std::optional<icalendar::Document> copy;
    QByteArray copyUid;
};

/// The outcome of a revision.
struct ItemDatabase::WrittenRevision : WrittenItem {
    std::optional<Created> copy;
};

/// The values that a save writes, and the collection that then holds the item.
template <typename Data>
struct ItemDatabase::Wanted {
    Data data;
    QByteArray target;
};

/// Why something was not written; absent when it was.
template <typename Written>
[[nodiscard]] std::optional<WriteError> failureOf(const tl::expected<Written, WriteError>& written) {
    return written ? std::nullopt : std::optional(written.error());
}

/// The state of a file that was made for one item.
[[nodiscard]] inline ItemState stateOf(const ItemStorage::Created& created) {
    return {created.location.collection, created.location.file, created.uid, created.stored.text};
}

/// What a change of items of one kind has done, of which the first is the item itself.
[[nodiscard]] EKSaveResult resultOf(EKEntityType type, std::vector<ItemChange> items);

/// From which year on definitions of zones are to hold for an item of this
/// year: they begin with the changes of the year before, so that they cover its
/// first months too.
[[nodiscard]] int firstZoneYear(int year);

/// So often a write is tried again when the file changes between reading and
/// writing it.
constexpr int writeAttempts = 5;

template <typename Result>
tl::expected<Result, EKError>
ItemDatabase::persist(const QString& title, const std::vector<QString>& collections,
                      const std::function<tl::expected<Result, WriteError>()>& attempt) {
    std::vector<QByteArray> names;
    names.reserve(collections.size());
    for (const QString& identifier : collections)
        names.push_back(QFile::encodeName(identifier));
    const auto locked = storage_.lock(names);
    if (!locked)
        return tl::unexpected(locked.error());
    for (int i = 0; i < writeAttempts; ++i) {
        auto result = attempt();
        if (result)
            return std::move(*result);
        if (const auto* error = std::get_if<EKError>(&result.error())) {
            rebuildSnapshot();
            return tl::unexpected(*error);
        }
    }
    return tl::unexpected(conflictError(title));
}

/// Finds the item that goes by this identifier in its file.
template <typename Item>
std::optional<std::pair<ItemDatabase::OpenFile, Item>>
ItemDatabase::findIn(std::optional<OpenFile> file, const QString& identifier, const TimeZone& local) {
    if (!file)
        return std::nullopt;
    QHash<QString, int> seen;
    for (Item& item : ItemKind<Item>::read(file->document, local)) {
        const QString alone = QString::fromUtf8(item.key);
        const int ordinal = seen[alone]++;
        if ((identifier != alone || ordinal > 0) &&
            identifier != identifierByLocation(alone, file->location, ordinal))
            continue;
        file->key = item.key;
        file->ordinal = ordinal;
        file->isAlone = !icalendar::holdsMore(file->document, item);
        return std::pair(std::move(*file), std::move(item));
    }
    return std::nullopt;
}

/// Opens the file of an item and finds the item in it. Where it is there no
/// more, another program may have moved it: everything is compared, and it is
/// looked for once more.
template <typename Item>
tl::expected<std::pair<ItemDatabase::OpenFile, Item>, EKError>
ItemDatabase::openWith(const QString& identifier, const TimeZone& local) {
    constexpr auto entries = ItemKind<Item>::entries;
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto* const entry = ((*snapshot_).*entries).find(identifier);
        if (!entry)
            break;
        const FileLocation location = locationOf(*entry);
        auto file = openFile(location);
        if (!file)
            return tl::unexpected(file.error());
        if (auto found = findIn<Item>(std::move(*file), identifier, local))
            return std::move(*found);
        refresh({.everything = true, .files = {{location.collection, {location.file}}}}, local);
    }
    return tl::unexpected(itemNotFoundError());
}

template <typename Data>
tl::expected<std::optional<ItemDatabase::Wanted<Data>>, EKError>
ItemDatabase::wanted(const FileLocation& location, const Data& base, const Data& edited,
                     const Data& current) const {
    auto merge = mergeEdits(base, edited, current);
    if (merge.conflict)
        return tl::unexpected(conflictError(current.title));
    if (merge.merged == current)
        return std::nullopt;
    if (auto error = writeRefusal(location))
        return tl::unexpected(std::move(*error));
    auto target = writableCollection(merge.merged.calendarIdentifier);
    if (!target)
        return tl::unexpected(std::move(target.error()));
    if (auto error = invalidReason(current, merge.merged))
        return tl::unexpected(std::move(*error));
    return Wanted<Data>{std::move(merge.merged), std::move(*target)};
}

template <typename Item>
tl::expected<ItemChange, EKError>
ItemDatabase::createItem(const QByteArray& collection, const QByteArray& key, const QByteArray& preferredName,
                         const icalendar::Document& document, const TimeZone& local) {
    const auto created = createFile(collection, key, preferredName, document, local);
    if (!created)
        return tl::unexpected(created.error());
    rebuildSnapshot();
    return ItemChange{identifierIn((*snapshot_).*ItemKind<Item>::entries, created->location, created->uid),
                      std::nullopt, stateOf(*created)};
}

template <typename Item>
tl::expected<ItemDatabase::WrittenItem, WriteError>
ItemDatabase::storeItem(const OpenFile& opened, const Item& item, icalendar::Document document,
                        const Item& inDocument, const QByteArray& target, const TimeZone& local) {
    constexpr QByteArrayView component = ItemKind<Item>::component;
    if (target == opened.location.collection)
        return replaceFile(opened, document, local).map([&](QByteArray text) {
            return WrittenItem{opened.location, item.key, std::move(text)};
        });
    if (!opened.isAlone)
        icalendar::keepOnlyItem(document, component, inDocument);
    return move(
        opened, opened.isAlone ? SecondStep::removes : SecondStep::rewrites, target, inDocument.key, document,
        [&] { return removeFromFile(opened, component, item, local); }, local);
}

}  // namespace kestrant::items
