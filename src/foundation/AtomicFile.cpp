#include "foundation/AtomicFile.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kestrant {

namespace {

/// A file descriptor that closes itself.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0)
            ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const { return number_; }
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    /// The result of close(), which is where some file systems report that a write failed.
    [[nodiscard]] int close() { return ::close(std::exchange(number_, -1)); }

  private:
    int number_;
};

FileError errorFor(const QString& path, int number) {
    return {path, number, QString::fromStdString(std::system_category().message(number))};
}

tl::unexpected<FileError> failure(const QString& path, int number = errno) {
    return tl::unexpected(errorFor(path, number));
}

bool writeAll(int descriptor, const QByteArray& content) {
    qsizetype written = 0;
    while (written < content.size()) {
        const auto count = ::write(descriptor, content.constData() + written,
                                   static_cast<std::size_t>(content.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        written += count;
    }
    return true;
}

}  // namespace

tl::expected<void, FileError> writeFileAtomically(const QString& path, const QByteArray& content,
                                                  FileMode mode) {
    // A link keeps pointing to its file: the file it leads to is replaced, not the link.
    const QFileInfo info(path);
    const QString target =
        mode == FileMode::replace && info.isSymLink() && info.exists() ? info.canonicalFilePath() : path;
    const QByteArray targetName = QFile::encodeName(target);
    const QString folder = QFileInfo(target).absolutePath();
    QByteArray temporary =
        QFile::encodeName(folder + QStringLiteral("/.") + QFileInfo(target).fileName().left(200)) +
        ".XXXXXX.tmp";

    Descriptor file(::mkostemps(temporary.data(), 4, O_CLOEXEC));
    if (!file.isOpen())
        return failure(path);
    const auto giveUp = [&](int number) {
        ::unlink(temporary.constData());
        return failure(path, number);
    };

    struct stat existing {};
    const bool exists = ::stat(targetName.constData(), &existing) == 0;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (::fchmod(file.get(), exists ? existing.st_mode & 07777 : 0666 & ~mask) != 0)
        return giveUp(errno);
    if (!writeAll(file.get(), content) || ::fsync(file.get()) != 0)
        return giveUp(errno);
    if (file.close() != 0)
        return giveUp(errno);

    if (mode == FileMode::createNew) {
        if (::link(temporary.constData(), targetName.constData()) != 0)
            return giveUp(errno);
        ::unlink(temporary.constData());
    } else if (::rename(temporary.constData(), targetName.constData()) != 0) {
        return giveUp(errno);
    }

    const Descriptor directory(
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen())
        ::fsync(directory.get());
    return {};
}

tl::expected<QByteArray, FileError> readFile(const QString& path, qint64 sizeLimit) {
    const Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return failure(path);
    if (S_ISDIR(status.st_mode))
        return failure(path, EISDIR);
    if (status.st_size > sizeLimit)
        return failure(path, EFBIG);
    QByteArray content;
    content.resize(status.st_size);
    qsizetype size = 0;
    while (true) {
        if (size == content.size())
            content.resize(size + 65536);
        const auto count =
            ::read(file.get(), content.data() + size, static_cast<std::size_t>(content.size() - size));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failure(path);
        if (count == 0)
            break;
        size += count;
        if (size > sizeLimit)
            return failure(path, EFBIG);
    }
    content.resize(size);
    return content;
}

tl::expected<QString, FileError> setFileAside(const QString& path) {
    const QByteArray source = QFile::encodeName(path);
    for (int number = 1; number < 10000; ++number) {
        const QString aside = path + QStringLiteral(".damaged-%1").arg(number);
        // link() refuses a name that is taken, so that an earlier damaged file is never lost.
        if (::link(source.constData(), QFile::encodeName(aside).constData()) == 0) {
            if (::unlink(source.constData()) != 0)
                return failure(path);
            return aside;
        }
        if (errno != EEXIST)
            return failure(path);
    }
    return failure(path, EEXIST);
}

tl::expected<void, FileError> createFolder(const QString& path) {
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(path).toStdString(), error);
    if (error)
        return failure(path, error.value());
    return {};
}

}  // namespace kestrant
