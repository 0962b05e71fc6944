#pragma once

#include "eventkit/EKTypes.h"
#include "eventkit/EventSeries.h"
#include "foundation/ZoneCalendar.h"

#include <QByteArray>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace kestrant::items {

/// A reminder in a file. `key` and `ordinal` find it there again: it is the
/// ordinal-th one with this key.
struct FileReminder {
    QByteArray key;
    int ordinal = 0;
    /// With the list's identifier, and with the identifier it has if it is the
    /// only one of its UID.
    std::shared_ptr<const EKReminderData> data;
};

/// An event in a file, found there again in the same way.
struct FileEvent {
    QByteArray key;
    int ordinal = 0;
    /// With the same identifiers.
    std::shared_ptr<const EventSeries> series;
};

/// What is known of one file: an iCalendar text that is kept and changed as a
/// whole. The text itself is not here.
struct ItemFile {
    /// Tells one state of the file from another.
    QByteArray version;
    std::vector<FileReminder> reminders;
    std::vector<FileEvent> events;
    /// Also such as cannot be shown.
    bool holdsEvents = false;
    /// Why it cannot be shown.
    std::optional<TextPair> problem;
};

/// One collection of files: a list, a calendar, or both.
struct Collection {
    QString title;
    std::optional<Color> color;
    std::optional<int> order;
    bool isWritable = false;
    /// What it can hold; absent where what it does hold tells what it is.
    std::optional<EKEntityType> holdsOnly;
    std::optional<TextPair> problem;
    std::map<QByteArray, ItemFile> files;
};

/// Everything that is kept. Names are the storage's own.
struct Library {
    std::map<QByteArray, Collection> collections;
    /// The collections for what is new; where there is none, the first one that
    /// can be changed.
    QByteArray defaultForReminders;
    QByteArray defaultForEvents;
    std::optional<TextPair> problem;
};

/// What may have changed. Files named here are read again even if they look the
/// same.
struct Changes {
    bool everything = false;
    /// Which collections there are, or what one of them is called and may be used for.
    bool collections = false;
    std::map<QByteArray, std::set<QByteArray>> files;

    void add(const Changes& other);
};

/// Where a file is.
struct Place {
    QByteArray collection;
    QByteArray file;
};

/// What a file with this text holds.
[[nodiscard]] ItemFile readItems(const QByteArray& text, const Place& place, const ZoneCalendar& local);

/// A colour for a new collection: one that none of the others has, as long as there are any.
[[nodiscard]] Color unusedColor(const Library& library);

/// Whether two states of a file show the same.
[[nodiscard]] bool sameContent(const ItemFile& a, const ItemFile& b);

/// The sentence about something that is left alone; `name` is what people know
/// it by.
[[nodiscard]] TextPair unreadable(const QString& name, const TextPair& reason);

}  // namespace kestrant::items
