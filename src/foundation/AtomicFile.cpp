#include "foundation/AtomicFile.h"

#include "foundation/FileDescriptor.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace kestrant {

namespace {

using namespace std::chrono_literals;

constexpr auto temporaryPrefix = ".kestrant-";
constexpr auto temporarySuffix = ".tmp";
constexpr auto abandonedAfter = 1h;
/// How often an exchange is gone back on while another program keeps replacing the same file.
constexpr int exchanges = 8;

tl::unexpected<FileError> failure(const QString& path, int errorNumber) {
    return tl::unexpected(fileError(path, errorNumber));
}

std::string nativePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

QString shownPath(const std::string& path) {
    return QFile::decodeName(path.c_str());
}

/// The path with symbolic links followed; the path itself where nothing is there yet.
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

/// A hidden name that is not in use, such as synchronisers pass over. Short, so that it fits wherever the
/// final name does; it tells whose it is.
std::string newTemporaryPath(const std::string& folder) {
    static std::atomic<unsigned> counter = 0;
    return folder + '/' + temporaryPrefix + std::to_string(::getpid()) + '-' + std::to_string(counter++) +
           temporarySuffix;
}

/// A file, or a folder with files, that is removed again unless it was moved to its place.
class TemporaryFile {
  public:
    explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        std::error_code ignored;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::string& path() const { return path_; }
    void release() { path_.clear(); }

  private:
    std::string path_;
};

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
    const FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // The new name is in place by now and not every file system can do this, so there is nothing to report.
    if (descriptor.isOpen())
        (void)::fsync(descriptor.get());
}

FileDescriptor createTemporary(const std::string& folder, std::string& path) {
    while (true) {
        path = newTemporaryPath(folder);
        FileDescriptor descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (descriptor.isOpen() || errno != EEXIST)
            return descriptor;
    }
}

/// Gives a new file the permissions of the one it replaces, or those of a file of one's own, whatever the
/// mask for new files has taken.
bool setPermissions(int descriptor, const struct stat* replaced) {
    struct stat created = {};
    const mode_t wanted = replaced != nullptr ? replaced->st_mode & 07777 : 0600;
    if (::fstat(descriptor, &created) != 0)
        return false;
    if ((created.st_mode & 07777) == wanted || ::fchmod(descriptor, wanted) == 0)
        return true;
    // Some file systems have no permissions of their own.
    return replaced == nullptr && errno == EPERM;
}

/// A file with this content under a temporary name beside its place, on the disk.
tl::expected<std::string, int> writeTemporary(const std::string& target, const QByteArray& content,
                                              FileMode mode) {
    std::string path;
    FileDescriptor descriptor = createTemporary(folderOf(target), path);
    if (!descriptor.isOpen())
        return tl::unexpected(errno);
    TemporaryFile temporary(path);
    struct stat existing = {};
    const bool replaces = mode == FileMode::replace && ::stat(target.c_str(), &existing) == 0;
    if (!setPermissions(descriptor.get(), replaces ? &existing : nullptr) ||
        !writeAll(descriptor.get(), content) || ::fsync(descriptor.get()) != 0 || descriptor.close() != 0)
        return tl::unexpected(errno);
    temporary.release();
    return path;
}

enum class Exchange { done, otherFile, gone, unsupported, failed };

/// Exchanges two files of one folder, and back again where what came out of the place is not what was
/// expected there. `temporary` is then as before. With `failed`, errno says why.
Exchange exchange(TemporaryFile& temporary, const std::string& target, const FileCheck& isExpected) {
    const auto swap = [&] {
        return ::renameat2(AT_FDCWD, temporary.path().c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) ==
               0;
    };
    const auto identity = [](const std::string& path) {
        struct stat status = {};
        return ::stat(path.c_str(), &status) == 0 ? std::pair(status.st_dev, status.st_ino)
                                                  : std::pair(dev_t(0), ino_t(0));
    };
    const auto ours = identity(temporary.path());
    if (!swap()) {
        if (errno == ENOENT)
            return Exchange::gone;
        return errno == EINVAL || errno == ENOSYS ? Exchange::unsupported : Exchange::failed;
    }
    if (isExpected(shownPath(temporary.path())))
        return Exchange::done;
    // What another program has put there goes back; and so does what it has put in place of ours meanwhile.
    for (int turn = 0; turn < exchanges; ++turn) {
        if (!swap()) {
            // Theirs is the one to keep, whatever it takes.
            if (::rename(temporary.path().c_str(), target.c_str()) != 0)
                return Exchange::failed;
            break;
        }
        if (identity(temporary.path()) == ours)
            break;
    }
    return Exchange::otherFile;
}

int makeFolder(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) == 0)
        return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
    if (errno != ENOENT)
        return errno;
    if (const std::string above = folderOf(path); above != path) {
        if (const int error = makeFolder(above); error != 0)
            return error;
    }
    if (::mkdir(path.c_str(), 0700) != 0)
        return errno == EEXIST && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? 0 : errno;
    // The mask for new files may have taken the owner's own rights.
    if (::stat(path.c_str(), &status) == 0 && (status.st_mode & 0777) != 0700)
        (void)::chmod(path.c_str(), 0700);
    return 0;
}

}  // namespace

FileError fileError(const QString& path, int errorNumber) {
    return {path, errorNumber, QString::fromLocal8Bit(std::generic_category().message(errorNumber))};
}

tl::expected<void, FileError> writeFileAtomically(const QString& path, const QByteArray& content,
                                                  FileMode mode) {
    const std::string target =
        mode == FileMode::replace ? followingLinks(nativePath(path)) : nativePath(path);
    const auto written = writeTemporary(target, content, mode);
    if (!written)
        return failure(path, written.error());
    TemporaryFile temporary(*written);
    const bool isInPlace = mode == FileMode::replace ? ::rename(temporary.path().c_str(), target.c_str()) == 0
                                                     : renameToNew(temporary.path(), target);
    if (!isInPlace)
        return failure(path, errno);
    temporary.release();
    synchronizeFolder(folderOf(target));
    return {};
}

tl::expected<void, FileError> replaceFileIf(const QString& path, const QByteArray& content,
                                            const FileCheck& isExpected) {
    const std::string target = followingLinks(nativePath(path));
    const auto written = writeTemporary(target, content, FileMode::replace);
    if (!written)
        return failure(path, written.error());
    TemporaryFile temporary(*written);
    if (!isExpected(shownPath(target)))
        return failure(path, ESTALE);
    switch (exchange(temporary, target, isExpected)) {
    case Exchange::done:
        break;
    case Exchange::otherFile:
    case Exchange::gone:
        return failure(path, ESTALE);
    case Exchange::failed:
        return failure(path, errno);
    case Exchange::unsupported:
        if (::rename(temporary.path().c_str(), target.c_str()) != 0)
            return failure(path, errno);
        temporary.release();
        break;
    }
    synchronizeFolder(folderOf(target));
    return {};
}

tl::expected<void, FileError> replaceContent(const QString& path, const std::optional<QByteArray>& present,
                                             const QByteArray& content) {
    if (present)
        return replaceFileIf(path, content,
                             [&](const QString& there) { return readFile(there) == *present; });
    auto written = writeFileAtomically(path, content, FileMode::createNew);
    if (!written && written.error().errorNumber == EEXIST)
        return failure(path, ESTALE);
    return written;
}

tl::expected<void, FileError> removeFileIf(const QString& path, const FileCheck& isExpected) {
    const std::string target = nativePath(path);
    if (!isExpected(path))
        return failure(path, ESTALE);
    TemporaryFile taken(newTemporaryPath(folderOf(target)));
    if (!renameToNew(target, taken.path())) {
        const int error = errno;
        taken.release();
        return failure(path, error == ENOENT ? ESTALE : error);
    }
    if (!isExpected(shownPath(taken.path()))) {
        // Unless there is a newer one, which then holds.
        if (renameToNew(taken.path(), target))
            taken.release();
        return failure(path, ESTALE);
    }
    if (::unlink(taken.path().c_str()) == 0)
        taken.release();
    synchronizeFolder(folderOf(target));
    return {};
}

tl::expected<void, FileError>
createFolderWithFiles(const QString& path, const std::vector<std::pair<QString, QByteArray>>& files) {
    const std::string target = nativePath(path);
    TemporaryFile temporary(newTemporaryPath(folderOf(target)));
    if (const int error = makeFolder(temporary.path()); error != 0)
        return failure(path, error);
    for (const auto& [name, content] : files) {
        if (auto written = writeFileAtomically(shownPath(temporary.path()) + u'/' + name, content); !written)
            return written;
    }
    // A folder takes the place of an empty one, so there the name itself has to be new.
    struct stat status = {};
    const int moved =
        ::renameat2(AT_FDCWD, temporary.path().c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE);
    const bool isUnsupported = moved != 0 && (errno == EINVAL || errno == ENOSYS);
    if (isUnsupported && ::lstat(target.c_str(), &status) == 0)
        return failure(path, EEXIST);
    if (moved != 0 && !(isUnsupported && ::rename(temporary.path().c_str(), target.c_str()) == 0))
        return failure(path, errno);
    temporary.release();
    synchronizeFolder(folderOf(target));
    return {};
}

std::optional<int> processNamedIn(QByteArrayView name, QByteArrayView prefix, QByteArrayView suffix) {
    if (!name.startsWith(prefix) || !name.endsWith(suffix))
        return std::nullopt;
    int process = 0;
    const char* const begin = name.data() + prefix.size();
    const char* const limit = name.data() + name.size();
    const auto [end, error] = std::from_chars(begin, limit, process);
    return error == std::errc() && process > 0 && end != limit && *end == '-' ? std::optional(process)
                                                                              : std::nullopt;
}

bool isRunning(int process) {
    return ::kill(process, 0) == 0 || errno != ESRCH;
}

bool isTemporaryName(QByteArrayView name) {
    return processNamedIn(name, temporaryPrefix, temporarySuffix).has_value();
}

void removeIfAbandoned(const QString& path) {
    const QByteArray native = QFile::encodeName(path);
    const QByteArrayView name = QByteArrayView(native).sliced(native.lastIndexOf('/') + 1);
    const auto owner = processNamedIn(name, temporaryPrefix, temporarySuffix);
    struct stat status = {};
    if (!owner || isRunning(*owner) || ::lstat(native.constData(), &status) != 0 ||
        std::chrono::seconds(::time(nullptr) - status.st_mtim.tv_sec) < abandonedAfter)
        return;
    const TemporaryFile removed(native.toStdString());
}

void removeAbandonedFiles(const QString& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(nativePath(folder).c_str()), ::closedir);
    while (const dirent* entry =
               stream ? ::readdir(stream.get()) : nullptr) {  // NOLINT(concurrency-mt-unsafe)
        if (isTemporaryName(entry->d_name))
            removeIfAbandoned(folder + u'/' + QFile::decodeName(entry->d_name));
    }
}

tl::expected<QByteArray, FileError> readFile(const QString& path, qint64 sizeLimit) {
    // Without waiting: a named pipe would hold the thread until somebody writes to it.
    const FileDescriptor descriptor(::open(nativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
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
    std::string native = nativePath(path);
    while (native.size() > 1 && native.back() == '/')
        native.pop_back();
    if (const int error = makeFolder(native); error != 0)
        return failure(path, error);
    return {};
}

}  // namespace kestrant
