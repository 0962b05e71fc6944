#pragma once

#include "eventkit/vdir/VdirDatabase.h"

#include <optional>

namespace kestrant::vdir {

/// The file with everything else taken out of it.
[[nodiscard]] icalendar::Document aloneIn(icalendar::Document document, const icalendar::TodoItem& item);

/// A reminder with its file, as the file is at this moment.
struct VdirDatabase::OpenItem {
    Place place;
    FileStamp stamp;
    icalendar::Document document;
    icalendar::TodoItem item;
    int ordinal = 0;
    /// Whether the file holds nothing else.
    bool isAlone = true;
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

}  // namespace kestrant::vdir
