#include "eventkit/vdir/VdirFiles.h"

#include "eventkit/items/Journal.h"
#include "foundation/AtomicFile.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace kestrant::vdir {
namespace {

/// A larger file holds no single reminder or event.
constexpr qint64 sizeLimit = 10LL * 1024 * 1024;

FileStamp stampFrom(const struct stat& status) {
    return {status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec, status.st_ino, status.st_size};
}

}  // namespace

FileDescriptor openFolder(const QByteArray& path) {
    return FileDescriptor(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::optional<FileStamp> stampAt(int folder, const QByteArray& name) {
    struct stat status {};
    if (::fstatat(folder, name.constData(), &status, 0) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return stampFrom(status);
}

tl::expected<OpenedFile, int> openFileAt(int folder, const QByteArray& name) {
    // Opened without blocking, because the name may be a pipe's.
    const FileDescriptor descriptor(::openat(folder, name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!descriptor.isOpen() || ::fstat(descriptor.get(), &status) != 0)
        return tl::unexpected(errno);
    if (!S_ISREG(status.st_mode))
        return tl::unexpected(EISDIR);
    if (status.st_size > sizeLimit)
        return tl::unexpected(EFBIG);
    OpenedFile result{stampFrom(status), QByteArray(status.st_size, Qt::Uninitialized)};
    qsizetype filled = 0;
    while (filled < result.text.size()) {
        const ssize_t count = ::read(descriptor.get(), result.text.data() + filled,
                                     static_cast<std::size_t>(result.text.size() - filled));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return tl::unexpected(errno);
        if (count == 0)
            break;
        filled += count;
    }
    result.text.truncate(filled);
    return result;
}

TextPair systemReason(int errorNumber) {
    if (errorNumber == EFBIG)
        return text("it is too large", "il est trop volumineux");
    if (errorNumber == EACCES)
        return text("permission denied", "permission refusée");
    const QString description = QString::fromStdString(std::generic_category().message(errorNumber));
    return {description, description};
}

tl::expected<std::vector<QByteArray>, int> entriesOf(int folder, const QByteArray& path) {
    FileDescriptor copy(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(copy.isOpen() ? ::fdopendir(copy.get()) : nullptr,
                                                     ::closedir);
    if (!stream)
        return tl::unexpected(errno);
    (void)copy.release();
    std::vector<QByteArray> result;
    while (true) {
        errno = 0;
        const dirent* entry = ::readdir(stream.get());  // NOLINT(concurrency-mt-unsafe): the stream is
                                                        // this call's own
        if (!entry && errno != 0)
            return tl::unexpected(errno);
        if (!entry)
            return result;
        QByteArray name(entry->d_name);
        if (isTemporaryName(name))
            removeIfAbandoned(QFile::decodeName(path + '/' + name));
        else
            result.push_back(std::move(name));
    }
}

bool isItemName(const QByteArray& name) {
    return name.endsWith(".ics") && !name.startsWith('.') && name.size() > 4;
}

bool isMetadataName(const QByteArray& name) {
    return name == "displayname" || name == "color" || name == "order";
}

tl::expected<RootFolder, int> readRoot(const QByteArray& root) {
    const FileDescriptor folder = openFolder(root);
    if (!folder.isOpen())
        return tl::unexpected(errno);
    auto entries = entriesOf(folder.get(), root);
    if (!entries)
        return tl::unexpected(entries.error());
    RootFolder result;
    for (QByteArray& name : *entries) {
        if (items::isJournalName(name)) {
            result.journals.push_back(std::move(name));
            continue;
        }
        if (name.startsWith('.') || name.isEmpty())
            continue;
        struct stat status {};
        if (::fstatat(folder.get(), name.constData(), &status, 0) != 0) {
            if (errno != ENOENT && errno != ELOOP)
                return tl::unexpected(errno);
        } else if (S_ISDIR(status.st_mode)) {
            result.collections.push_back(std::move(name));
        }
    }
    return result;
}

tl::expected<OpenedFile, int> openFile(const QByteArray& path) {
    return openFileAt(AT_FDCWD, path);
}

std::optional<FileStamp> stampOf(const QByteArray& path) {
    return stampAt(AT_FDCWD, path);
}

}  // namespace kestrant::vdir
