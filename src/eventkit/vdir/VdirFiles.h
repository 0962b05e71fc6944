#pragma once

#include "eventkit/items/StorageContents.h"
#include "foundation/FileDescriptor.h"

#include <QByteArray>

#include <tl/expected.hpp>

#include <optional>
#include <vector>

namespace kestrant::vdir {

// The files of a folder of collections, as they are on the disk. Errors are system error numbers.

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
struct RootFolder {
    /// Sub-folders, by name.
    std::vector<QByteArray> collections;
    /// Notes of changes that were begun (items::isJournalName()).
    std::vector<QByteArray> journals;
};
/// Lists the folder; what writers that were killed have left in it is removed.
[[nodiscard]] tl::expected<RootFolder, int> readRoot(const QByteArray& root);

/// Opens a folder. Not open, with errno set, where that fails.
[[nodiscard]] FileDescriptor openFolder(const QByteArray& path);
/// The names in a folder, which is `path`, without those of temporary files; what killed writers have left is
/// removed.
[[nodiscard]] tl::expected<std::vector<QByteArray>, int> entriesOf(int folder, const QByteArray& path);

struct OpenedFile {
    FileStamp stamp;
    QByteArray text;
};
/// Reads a file, in the second form one of an opened folder. EFBIG for one that is too large to be a calendar
/// file, EISDIR for what is no regular file.
[[nodiscard]] tl::expected<OpenedFile, int> openFile(const QByteArray& path);
[[nodiscard]] tl::expected<OpenedFile, int> openFileAt(int folder, const QByteArray& name);

/// The stamp a file has now; absent when there is none.
[[nodiscard]] std::optional<FileStamp> stampOf(const QByteArray& path);
[[nodiscard]] std::optional<FileStamp> stampAt(int folder, const QByteArray& name);

/// Whether a name is that of an item file, and not of a temporary or hidden one.
[[nodiscard]] bool isItemName(const QByteArray& name);
/// Whether a name is that of a file about the collection itself.
[[nodiscard]] bool isMetadataName(const QByteArray& name);

/// The words for a system error number.
[[nodiscard]] TextPair systemReason(int errorNumber);

}  // namespace kestrant::vdir
