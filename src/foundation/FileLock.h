#pragma once

#include "foundation/AtomicFile.h"
#include "foundation/FileDescriptor.h"

#include <QString>

#include <tl/expected.hpp>

namespace kestrant {

/// An exclusive lock between processes (flock), held until the end of its scope or of the process, however
/// that ends. Two locks of one process exclude each other too. Thread: any.
class FileLock {
  public:
    enum class Waiting {
        /// Fails at once where somebody else holds the lock.
        none,
        /// Waits up to about five seconds: a process that was stopped may hold a lock for ever.
        bounded,
    };

    /// Locks a folder by itself. Fails with EWOULDBLOCK while somebody else holds the lock, otherwise with
    /// the reason why the folder cannot be opened. On a file system without locks of this kind nothing is
    /// held.
    [[nodiscard]] static tl::expected<FileLock, FileError> ofFolder(const QString& path,
                                                                    Waiting waiting = Waiting::bounded);
    /// Locks a file that stands for something else; it is made where it is missing, and stays.
    [[nodiscard]] static tl::expected<FileLock, FileError> ofFile(const QString& path,
                                                                  Waiting waiting = Waiting::bounded);
    /// Locks what is kept in a file that is replaced as a whole, by a hidden file beside it.
    [[nodiscard]] static tl::expected<FileLock, FileError> besideFile(const QString& path);

    /// False where the file system has no such locks.
    [[nodiscard]] bool isHeld() const { return isHeld_; }

  private:
    FileLock(FileDescriptor descriptor, bool isHeld) : descriptor_(std::move(descriptor)), isHeld_(isHeld) {}
    [[nodiscard]] static tl::expected<FileLock, FileError> of(const QString& path, int flags,
                                                              Waiting waiting);

    FileDescriptor descriptor_;
    bool isHeld_;
};

}  // namespace kestrant
