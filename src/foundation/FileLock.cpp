#include "foundation/FileLock.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

namespace kestrant {

namespace {

using namespace std::chrono_literals;

constexpr auto longestWait = 5000ms;
constexpr auto shortestPause = 1ms;
constexpr auto longestPause = 20ms;

/// 0, or the error number.
int lock(int descriptor, FileLock::Waiting waiting) {
    std::chrono::milliseconds waited = 0ms;
    std::chrono::milliseconds pause = shortestPause;
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK || waiting == FileLock::Waiting::none || waited >= longestWait)
            return errno;
        std::this_thread::sleep_for(pause);
        waited += pause;
        pause = std::min(2 * pause, longestPause);
    }
    return 0;
}

}  // namespace

tl::expected<FileLock, FileError> FileLock::of(const QString& path, int flags, Waiting waiting) {
    FileDescriptor descriptor(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, 0600));
    if (!descriptor.isOpen())
        return tl::unexpected(fileError(path, errno));
    if (const int error = lock(descriptor.get(), waiting); error == EWOULDBLOCK)
        return tl::unexpected(fileError(path, error));
    else
        return FileLock(std::move(descriptor), error == 0);
}

tl::expected<FileLock, FileError> FileLock::ofFolder(const QString& path, Waiting waiting) {
    return of(path, O_RDONLY | O_DIRECTORY, waiting);
}

tl::expected<FileLock, FileError> FileLock::ofFile(const QString& path, Waiting waiting) {
    auto result = of(path, O_RDWR | O_CREAT | O_NOFOLLOW, waiting);
    // The mask for new files may have taken the owner's own rights.
    struct stat status {};
    if (result && ::fstat(result->descriptor_.get(), &status) == 0 && (status.st_mode & 0600) != 0600)
        (void)::fchmod(result->descriptor_.get(), 0600);
    return result;
}

tl::expected<FileLock, FileError> FileLock::besideFile(const QString& path) {
    const QFileInfo file(path);
    return ofFile(file.path() + QStringLiteral("/.") + file.fileName() + QStringLiteral(".lock"));
}

}  // namespace kestrant
