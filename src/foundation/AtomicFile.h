#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <tl/expected.hpp>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {

/// Why a file could not be read or written: the file's path, the system's error number and its text.
struct FileError {
    QString path;
    int errorNumber = 0;
    /// The system's own description, for logs and as detail behind a message.
    QString description;
};

/// The error of this number (errno) with the system's description of it.
[[nodiscard]] FileError fileError(const QString& path, int errorNumber);

enum class FileMode {
    /// Takes the place of an existing file.
    replace,
    /// Fails with EEXIST where a file of that name exists.
    createNew,
};

/// Writes a whole file so that a reader sees the old content or the new, never part of it, and so that the
/// new content is on the disk when this returns: hidden temporary file beside it, fsync, rename (or link),
/// fsync of the folder. A new file is its owner's alone (0600); an existing one keeps its permissions. The
/// folder must exist. On failure the old file is untouched and nothing is left behind. Thread: any; blocks
/// for the disk.
[[nodiscard]] tl::expected<void, FileError>
writeFileAtomically(const QString& path, const QByteArray& content, FileMode mode = FileMode::replace);

/// Whether the file at a path is the one that is to be replaced or removed. Asked of the file in its place
/// and, once it was taken out of it, of the same file under another name in its folder.
using FileCheck = std::function<bool(const QString& path)>;

/// Writes as above over a file that passes the check. The two are exchanged, what came out is looked at, and
/// goes back to its place where another program has put it there meanwhile. Fails with ESTALE, and changes
/// nothing, where the file fails the check or is gone.
[[nodiscard]] tl::expected<void, FileError> replaceFileIf(const QString& path, const QByteArray& content,
                                                          const FileCheck& isExpected);
/// Writes in the same way over a file that holds `present`, or, where that is absent, a file that is not
/// there yet.
[[nodiscard]] tl::expected<void, FileError>
replaceContent(const QString& path, const std::optional<QByteArray>& present, const QByteArray& content);
/// Removes a file in the same way.
[[nodiscard]] tl::expected<void, FileError> removeFileIf(const QString& path, const FileCheck& isExpected);

/// Makes a folder with files in it (by name) that is seen whole or not at all. Fails with EEXIST where
/// something of its name exists.
[[nodiscard]] tl::expected<void, FileError>
createFolderWithFiles(const QString& path, const std::vector<std::pair<QString, QByteArray>>& files);

/// Whether a name is one that the functions above give to what is not in its place yet. Synchronisers pass
/// over hidden files.
[[nodiscard]] bool isTemporaryName(QByteArrayView name);
/// Removes a temporary file that was left behind by a process that was killed: one whose process is gone and
/// that is older than an hour.
void removeIfAbandoned(const QString& path);
/// The same for all that are in a folder.
void removeAbandonedFiles(const QString& folder);

/// The process that a name of the form PREFIX<pid>-<rest>SUFFIX tells of; absent for another name.
[[nodiscard]] std::optional<int> processNamedIn(QByteArrayView name, QByteArrayView prefix,
                                                QByteArrayView suffix);
/// Whether there is a process of this number.
[[nodiscard]] bool isRunning(int process);

/// Reads a whole file. Fails with EFBIG above `sizeLimit` bytes. Thread: any; blocks for the disk.
[[nodiscard]] tl::expected<QByteArray, FileError> readFile(const QString& path,
                                                           qint64 sizeLimit = 64LL * 1024 * 1024);

/// Renames a damaged file to "<name>.damaged-<n>" beside it, with the first free n; returns the new path.
[[nodiscard]] tl::expected<QString, FileError> setFileAside(const QString& path);

/// Creates a folder and what is missing above it, for its owner alone (0700).
[[nodiscard]] tl::expected<void, FileError> createFolder(const QString& path);

}  // namespace kestrant
