#pragma once

#include <QByteArray>
#include <QString>

#include <tl/expected.hpp>

namespace kestrant {

/// Why a file could not be read or written: the file's path, the system's error number and its text.
struct FileError {
    QString path;
    int errorNumber = 0;
    /// The system's own description, for logs and as detail behind a message.
    QString description;
};

enum class FileMode {
    /// Takes the place of an existing file.
    replace,
    /// Fails with EEXIST where a file of that name exists.
    createNew,
};

/// Writes a whole file so that a reader sees the old content or the new, never part of it, and so that the
/// new content is on the disk when this returns: hidden temporary file beside it, fsync, rename (or link),
/// fsync of the folder. An existing file keeps its permissions. The folder must exist. On failure the old
/// file is untouched and nothing is left behind. Thread: any; blocks for the disk.
[[nodiscard]] tl::expected<void, FileError>
writeFileAtomically(const QString& path, const QByteArray& content, FileMode mode = FileMode::replace);

/// Reads a whole file. Fails with EFBIG above `sizeLimit` bytes. Thread: any; blocks for the disk.
[[nodiscard]] tl::expected<QByteArray, FileError> readFile(const QString& path,
                                                           qint64 sizeLimit = 64LL * 1024 * 1024);

/// Renames a damaged file to "<name>.damaged-<n>" beside it, with the first free n; returns the new path.
[[nodiscard]] tl::expected<QString, FileError> setFileAside(const QString& path);

/// Creates a folder and what is missing above it.
[[nodiscard]] tl::expected<void, FileError> createFolder(const QString& path);

}  // namespace kestrant
