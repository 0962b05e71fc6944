#pragma once

#include "eventkit/EKTypes.h"
#include "eventkit/EventSeries.h"
#include "foundation/ZoneCalendar.h"

#include <QByteArray>

#include <tl/expected.hpp>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace kestrant::vdir {

/// Tells one state of a file from another.
struct FileStamp {
    qint64 modifiedNanoseconds = 0;
    quint64 inode = 0;
    qint64 size = 0;

    /// The same, for others to keep.
    [[nodiscard]] QByteArray toBytes() const;
    bool operator==(const FileStamp&) const = default;
};

/// A reminder in a file. `key` and `ordinal` find it there again: it is the ordinal-th one with this key.
struct FileReminder {
    QByteArray key;
    int ordinal = 0;
    /// With the list's identifier, and with the identifier it has if it is the only one of its UID.
    std::shared_ptr<const EKReminderData> data;
};

/// An event in a file, found there again in the same way.
struct FileEvent {
    QByteArray key;
    int ordinal = 0;
    /// With the same identifiers.
    std::shared_ptr<const EventSeries> series;
};

/// What is known of one file. The text itself is not kept.
struct ItemFile {
    FileStamp stamp;
    std::vector<FileReminder> reminders;
    std::vector<FileEvent> events;
    /// Also such as cannot be shown.
    bool holdsEvents = false;
    /// Why it cannot be shown.
    std::optional<TextPair> problem;
};

/// One sub-folder: a list, a calendar, or both.
struct Collection {
    QString title;
    std::optional<Color> color;
    std::optional<int> order;
    bool isWritable = false;
    std::optional<TextPair> problem;
    std::map<QByteArray, ItemFile> files;
};

/// The whole folder. Names are as the file system has them.
struct Library {
    std::map<QByteArray, Collection> collections;
    std::optional<TextPair> problem;
};

/// What may have changed. Files named here are read again even if they look the same.
struct Changes {
    bool everything = false;
    std::map<QByteArray, std::set<QByteArray>> files;

    void add(const Changes& other);
};

/// Names of the sub-folders that are collections; absent when the folder cannot be read.
[[nodiscard]] std::optional<std::vector<QByteArray>> collectionNames(const QByteArray& root);

/// Brings the library up to date with the disk. Only files that differ in their stamp (or are named in
/// `changes`) are read, on several threads when there are many. True when anything came out differently.
[[nodiscard]] bool updateLibrary(Library& library, const QByteArray& root, const Changes& changes,
                                 const ZoneCalendar& local);

/// What a file with this text holds.
[[nodiscard]] ItemFile readItems(const QByteArray& text, const QByteArray& collection, const QByteArray& file,
                                 const ZoneCalendar& local);

struct OpenedFile {
    FileStamp stamp;
    QByteArray text;
};
/// Reads an item file. The error is a system error number; EFBIG for one that is too large to be a calendar
/// file.
[[nodiscard]] tl::expected<OpenedFile, int> openFile(const QByteArray& path);

/// The stamp a file has now; absent when there is none.
[[nodiscard]] std::optional<FileStamp> stampOf(const QByteArray& path);

/// Whether a name is that of an item file, and not of a temporary or hidden one.
[[nodiscard]] bool isItemName(const QByteArray& name);
/// Whether a name is that of a file about the collection itself.
[[nodiscard]] bool isMetadataName(const QByteArray& name);

}  // namespace kestrant::vdir
