#pragma once

#include "eventkit/items/ItemLibrary.h"
#include "foundation/TimeZone.h"

#include <QByteArray>

#include <tl/expected.hpp>

#include <atomic>
#include <optional>
#include <vector>

namespace kestrant::vdir {

/// Tells one state of a file from another.
struct FileStamp {
    qint64 modifiedNanoseconds = 0;
    quint64 inode = 0;
    qint64 size = 0;

    [[nodiscard]] items::Version toVersion() const {
        return {static_cast<quint64>(modifiedNanoseconds), inode, static_cast<quint64>(size)};
    }
    bool operator==(const FileStamp&) const = default;
};

/// The content of the folder of all collections.
struct RootContents {
    /// Sub-folders, by name.
    std::vector<QByteArray> collections;
    /// Notes of changes that were begun (items::isJournalName()).
    std::vector<QByteArray> journals;
};
/// Lists the folder; what writers that were killed have left in it is removed. The error is a system error
/// number.
[[nodiscard]] tl::expected<RootContents, int> readRoot(const QByteArray& root);

/// The result of an update.
struct Updated {
    /// Whether anything came out differently.
    bool changed = false;
    /// Files and folders that could not be read, but may become readable without a change.
    items::Changes unread;
};

/// Brings the library up to date with the disk. Of a collection's files those named in `changes` are read, or
/// with `everything`, or with no name or the empty one given, those that differ in their stamp; on several
/// threads when there are many. Collections are only looked for where `collections` is given. What cannot be
/// read becomes a problem, and what was known of it stays. Once `isEnding` is true long readings are broken
/// off.
[[nodiscard]] Updated updateLibrary(items::Library& library, const QByteArray& root,
                                    const std::optional<tl::expected<RootContents, int>>& contents,
                                    const items::Changes& changes, const TimeZone& local,
                                    const std::atomic<bool>& isEnding);

struct OpenedFile {
    FileStamp stamp;
    QByteArray text;
};
/// Reads an item file. The error is a system error number; EFBIG for one that
/// is too large to be a calendar file.
[[nodiscard]] tl::expected<OpenedFile, int> openFile(const QByteArray& path);

/// The stamp a file has now; absent when there is none.
[[nodiscard]] std::optional<FileStamp> stampOf(const QByteArray& path);

/// Whether a name is that of an item file, and not of a temporary or hidden
/// one.
[[nodiscard]] bool isItemName(const QByteArray& name);
/// Whether a name is that of a file about the collection itself.
[[nodiscard]] bool isMetadataName(const QByteArray& name);

}  // namespace kestrant::vdir
