#pragma once

#include "eventkit/items/ItemLibrary.h"
#include "foundation/ZoneCalendar.h"

#include <QByteArray>

#include <tl/expected.hpp>

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

/// Names of the sub-folders that are collections; absent when the folder cannot
/// be read.
[[nodiscard]] std::optional<std::vector<QByteArray>> collectionNames(const QByteArray& root);

/// Brings the library up to date with the disk. Only files that differ in their
/// stamp (or are named in `changes`) are read, on several threads when there
/// are many. True when anything came out differently.
[[nodiscard]] bool updateLibrary(items::Library& library, const QByteArray& root,
                                 const items::Changes& changes, const ZoneCalendar& local);

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
