#pragma once

#include "eventkit/icalendar/ItemWriting.h"
#include "eventkit/items/ItemDatabase.h"
#include "eventkit/model/EKErrors.h"

#include <QFile>
#include <QHash>

#include <functional>
#include <optional>
#include <utility>

namespace kestrant::items {

/// The file with everything else taken out of it.
[[nodiscard]] icalendar::Document aloneIn(icalendar::Document document, const icalendar::TodoItem& item);

/// A file that is to be changed, as it is at this moment, for the sake of one
/// item in it.
struct ItemDatabase::OpenFile {
    Place place;
    Version version{};
    icalendar::Document document;
    /// Which of the items with its key the item is.
    int ordinal = 0;
    /// Whether the file holds nothing else.
    bool isAlone = true;

    [[nodiscard]] ItemState state() const {
        return {place.collection, place.file, document.text(), ordinal, isAlone};
    }
    /// Whether nobody has changed anything in the file since the change, so that its text before it will do.
    [[nodiscard]] bool isUntouchedSince(const ItemChange& change) const {
        const ItemState& after = *change.after;
        return place.collection == after.collection && place.file == after.file &&
               document.text() == after.text && change.before->isAlone == after.isAlone;
    }
};

struct ItemDatabase::OpenItem : OpenFile {
    icalendar::TodoItem item;
    /// The values with their identifiers.
    EKReminderData current;

    [[nodiscard]] static OpenItem of(std::pair<OpenFile, icalendar::TodoItem> found,
                                     const QString& identifier) {
        OpenItem result{std::move(found.first), std::move(found.second), {}};
        result.current = result.item.data;
        result.current.calendarItemIdentifier = identifier;
        result.current.calendarIdentifier = QFile::decodeName(result.place.collection);
        return result;
    }
};

/// What a save makes of a file.
struct ItemDatabase::Revision {
    icalendar::Document document;
    /// The file of the occurrence that was finished, if the reminder recurs.
    std::optional<icalendar::Document> copy;
    QByteArray copyUid;
};

/// What a save has to write.
struct ItemDatabase::PreparedSave {
    /// The collection that then holds the item.
    QByteArray target;
    Revision revision;
};

/// What became of a revision.
struct ItemDatabase::WrittenRevision {
    Place place;
    /// All of the file.
    QByteArray text;
    std::optional<Created> copy;

    /// What is at the place once it was written there instead of `opened`.
    [[nodiscard]] ItemState stateAfter(const OpenItem& opened) const {
        const bool isSame = place.collection == opened.place.collection;
        return {place.collection, place.file, text, isSame ? opened.ordinal : 0, !isSame || opened.isAlone};
    }
};

/// Why something was not written; absent when it was.
template <typename Written>
[[nodiscard]] std::optional<WriteError> failureOf(const tl::expected<Written, WriteError>& written) {
    return written ? std::nullopt : std::optional(written.error());
}

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
ItemDatabase::findIn(std::optional<OpenFile> file,
                     std::vector<Item> (*read)(const icalendar::Document&, const ZoneCalendar&),
                     const QString& identifier, const ZoneCalendar& local) {
    if (!file)
        return std::nullopt;
    QHash<QString, int> seen;
    for (Item& item : read(file->document, local)) {
        const QString alone = QString::fromUtf8(item.key);
        const int ordinal = seen[alone]++;
        if ((identifier != alone || ordinal > 0) &&
            identifier != identifierByPlace(alone, file->place, ordinal))
            continue;
        file->ordinal = ordinal;
        file->isAlone = !icalendar::holdsMore(file->document, item);
        return std::pair(std::move(*file), std::move(item));
    }
    return std::nullopt;
}

/// Opens the file of an item and finds the item in it. Where it is there no
/// more, another program may have moved it: everything is compared, and it is
/// looked for once more.
template <typename Item, typename Entries>
tl::expected<std::pair<ItemDatabase::OpenFile, Item>, EKError>
ItemDatabase::openWith(Entries Snapshot::*entries,
                       std::vector<Item> (*read)(const icalendar::Document&, const ZoneCalendar&),
                       const QString& identifier, const ZoneCalendar& local) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto entry = ((*snapshot_).*entries).constFind(identifier);
        if (entry == ((*snapshot_).*entries).cend())
            break;
        const Place place = placeOf(*entry);
        auto file = openFile(place);
        if (!file)
            return tl::unexpected(file.error());
        if (auto found = findIn(std::move(*file), read, identifier, local))
            return std::move(*found);
        refresh({.everything = true, .files = {{place.collection, {place.file}}}}, local);
    }
    return tl::unexpected(itemNotFoundError());
}

}  // namespace kestrant::items
