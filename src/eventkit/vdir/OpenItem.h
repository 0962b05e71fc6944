#pragma once

#include "eventkit/EKErrors.h"
#include "eventkit/icalendar/ItemWriting.h"
#include "eventkit/vdir/VdirDatabase.h"

#include <functional>
#include <optional>
#include <utility>

namespace kestrant::vdir {

/// The file with everything else taken out of it.
[[nodiscard]] icalendar::Document aloneIn(icalendar::Document document, const icalendar::TodoItem& item);

/// A file that is to be changed, as it is at this moment, for the sake of one item in it.
struct VdirDatabase::OpenFile {
    Place place;
    FileStamp stamp;
    icalendar::Document document;
    /// Which of the items with its key the item is.
    int ordinal = 0;
    /// Whether the file holds nothing else.
    bool isAlone = true;
};

struct VdirDatabase::OpenItem : OpenFile {
    icalendar::TodoItem item;
    /// The values with their identifiers.
    EKReminderData current;

    [[nodiscard]] ItemState state() const {
        return {place.collection, place.file, document.text(), ordinal, isAlone};
    }
};

/// What a save makes of a file.
struct VdirDatabase::Revision {
    icalendar::Document document;
    /// The file of the occurrence that was finished, if the reminder recurs.
    std::optional<icalendar::Document> copy;
    QByteArray copyUid;

    /// What is at `place` once it was written there in the place of `opened`.
    [[nodiscard]] ItemState stateAt(const Place& place, const OpenItem& opened) const {
        if (place.collection == opened.place.collection)
            return {place.collection, place.file, document.text(), opened.ordinal, opened.isAlone};
        return {place.collection, place.file, aloneIn(document, opened.item).text(), 0, true};
    }
};

/// A new identifier for an item.
[[nodiscard]] QByteArray newUid();
/// The UID, where it is a name that every program and file system takes as it is.
[[nodiscard]] QByteArray fileNameFor(const QByteArray& uid);
/// From which year on definitions of zones are to hold for an item of this year: they begin with the changes
/// of the year before, so that they cover its first months too.
[[nodiscard]] int firstZoneYear(int year);

/// Opens the file of an item and finds the item in it. Where it is there no more, another program may have
/// moved it: everything is compared, and it is looked for once more.
template <typename Item, typename Entries>
tl::expected<std::pair<VdirDatabase::OpenFile, Item>, EKError>
VdirDatabase::openWith(Entries Snapshot::*entries,
                       std::vector<Item> (*read)(const icalendar::Document&, const ZoneCalendar&),
                       const QString& identifier, const ZoneCalendar& local) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto entry = ((*snapshot_).*entries).constFind(identifier);
        if (entry == ((*snapshot_).*entries).cend())
            break;
        auto file = openFileOf(*entry);
        if (!file)
            return tl::unexpected(file.error());
        if (*file) {
            int ordinal = 0;
            for (Item& item : read((*file)->document, local)) {
                if (item.key != entry->key || ordinal++ != entry->ordinal)
                    continue;
                (*file)->isAlone = !icalendar::holdsMore((*file)->document, item);
                return std::pair(std::move(**file), std::move(item));
            }
        }
        refresh({.everything = true}, local);
    }
    return tl::unexpected(itemNotFoundError());
}

}  // namespace kestrant::vdir
