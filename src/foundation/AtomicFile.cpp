#include "foundation/AtomicFile.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace kestrant {

namespace {

tl::unexpected<FileError> failure(const QString& path, int errorNumber) {
    return tl::unexpected(
        FileError{path, errorNumber, QString::fromLocal8Bit(std::generic_category().message(errorNumber))});
}

/// An open file, closed at the end of its scope.
class Descriptor {
  public:
    explicit Descriptor(int value) : value_(value) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    [[nodiscard]] bool isOpen() const { return value_ >= 0; }
    [[nodiscard]] int get() const { return value_; }
    int close() { return value_ < 0 ? 0 : ::close(std::exchange(value_, -1)); }

  private:
    int value_;
};

/// A file that is removed again unless it was moved to its place.
class TemporaryFile {
  public:
    explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (!path_.empty())
            ::unlink(path_.c_str());
    }

    [[nodiscard]] const std::string& path() const { return path_; }
    void release() { path_.clear(); }

  private:
    std::string path_;
};

std::string nativePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

/// What a path stands for once symbolic links are followed; the path itself where nothing is there yet.
std::string followingLinks(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), std::free);
    return resolved ? std::string(resolved.get()) : path;
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool writeAll(int descriptor, const QByteArray& content) {
    qsizetype written = 0;
    while (written < content.size()) {
        const ssize_t count =
            ::write(descriptor, content.constData() + written, static_cast<size_t>(content.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        written += count;
    }
    return true;
}

/// Gives a file a name that no other file has; EEXIST where one has it.
bool renameToNew(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // The file system does not offer it: a second name that fails where there is one, then the first name
    // goes.
    if (::link(from.c_str(), to.c_str()) != 0)
        return false;
    ::unlink(from.c_str());
    return true;
}

void synchronizeFolder(const std::string& folder) {
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // The new name is in place by now and not every file system can do this, so there is nothing to report.
    if (descriptor.isOpen())
        (void)::fsync(descriptor.get());
}

/// Creates a hidden file of a name not in use. Short, so that it fits wherever the final name does.
int createTemporary(const std::string& folder, std::string& path) {
    static std::atomic<unsigned> counter = 0;
    while (true) {
        path = folder + "/.kestrant-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".tmp";
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0 || errno != EEXIST)
            return descriptor;
    }
}

}  // namespace

tl::expected<void, FileError> writeFileAtomically(const QString& path, const QByteArray& content,
                                                  FileMode mode) {
    const std::string target =
        mode == FileMode::replace ? followingLinks(nativePath(path)) : nativePath(path);
    const std::string folder = folderOf(target);

    std::string temporaryPath;
    Descriptor descriptor(createTemporary(folder, temporaryPath));
    if (!descriptor.isOpen())
        return failure(path, errno);
    TemporaryFile temporary(temporaryPath);

    struct stat existing = {};
    if (mode == FileMode::replace && ::stat(target.c_str(), &existing) == 0 &&
        ::fchmod(descriptor.get(), existing.st_mode & 07777) != 0)
        return failure(path, errno);
    if (!writeAll(descriptor.get(), content) || ::fsync(descriptor.get()) != 0 || descriptor.close() != 0)
        return failure(path, errno);

    const bool isInPlace = mode == FileMode::replace ? ::rename(temporary.path().c_str(), target.c_str()) == 0
                                                     : renameToNew(temporary.path(), target);
    if (!isInPlace)
        return failure(path, errno);
    temporary.release();
    synchronizeFolder(folder);
    return {};
}

tl::expected<QByteArray, FileError> readFile(const QString& path, qint64 sizeLimit) {
    // Without waiting: a named pipe would hold the thread until somebody writes to it.
    const Descriptor descriptor(::open(nativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!descriptor.isOpen())
        return failure(path, errno);
    struct stat status = {};
    if (::fstat(descriptor.get(), &status) != 0)
        return failure(path, errno);
    if (!S_ISREG(status.st_mode))
        return failure(path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    if (status.st_size > sizeLimit)
        return failure(path, EFBIG);

    // One byte more than expected shows the end at once, and a file that has grown meanwhile.
    QByteArray content(status.st_size + 1, Qt::Uninitialized);
    qsizetype length = 0;
    while (true) {
        const ssize_t count =
            ::read(descriptor.get(), content.data() + length, static_cast<size_t>(content.size() - length));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failure(path, errno);
        if (count == 0)
            break;
        length += count;
        if (length > sizeLimit)
            return failure(path, EFBIG);
        if (length == content.size())
            content.resize(2 * length);
    }
    content.truncate(length);
    return content;
}

tl::expected<QString, FileError> setFileAside(const QString& path) {
    for (int number = 1;; ++number) {
        const QString aside = path + QStringLiteral(".damaged-") + QString::number(number);
        if (renameToNew(nativePath(path), nativePath(aside)))
            return aside;
        if (errno != EEXIST)
            return failure(path, errno);
    }
}

tl::expected<void, FileError> createFolder(const QString& path) {
    std::error_code error;
    std::filesystem::create_directories(nativePath(path), error);
    if (error)
        return failure(path, error.value());
    return {};
}

}  // namespace kestrant
