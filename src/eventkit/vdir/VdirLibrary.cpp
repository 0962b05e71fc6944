#include "eventkit/vdir/VdirLibrary.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

namespace kestrant::vdir {

using items::Changes;
using items::Collection;
using items::ItemFile;
using items::Library;
using items::unreadable;

namespace {

/// A larger file holds no single reminder or event.
constexpr qint64 sizeLimit = 10LL * 1024 * 1024;
/// Below this many files a second thread costs more than it saves.
constexpr std::size_t filesPerThread = 200;

class Descriptor {
  public:
    explicit Descriptor(int value) : value_(value) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (value_ >= 0)
            ::close(value_);
    }
    [[nodiscard]] int get() const { return value_; }
    [[nodiscard]] bool isOpen() const { return value_ >= 0; }

  private:
    int value_;
};

Descriptor openFolder(const QByteArray& path) {
    return Descriptor(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

FileStamp stampFrom(const struct stat& status) {
    return {status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec, status.st_ino, status.st_size};
}

std::optional<FileStamp> stampAt(int folder, const QByteArray& name) {
    struct stat status {};
    if (::fstatat(folder, name.constData(), &status, 0) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return stampFrom(status);
}

tl::expected<OpenedFile, int> openFileAt(int folder, const QByteArray& name) {
    // Not blocking, because the name may turn out to be a pipe.
    const Descriptor descriptor(::openat(folder, name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
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

std::vector<QByteArray> entriesOf(int folder) {
    std::vector<QByteArray> result;
    const int copy = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const stream = copy < 0 ? nullptr : ::fdopendir(copy);
    if (!stream)
        return result;
    while (const dirent* entry = ::readdir(stream))  // NOLINT(concurrency-mt-unsafe): the stream is
                                                     // this call's own
        result.emplace_back(entry->d_name);
    ::closedir(stream);
    return result;
}

std::optional<QString> readMetadata(int folder, const char* name) {
    const auto opened = openFileAt(folder, name);
    if (!opened || opened->text.size() > 10'000)
        return std::nullopt;
    const QString value = QString::fromUtf8(opened->text).trimmed();
    return value.isEmpty() ? std::nullopt : std::optional(value);
}

/// Reads what the folder says of itself; true when it differs.
bool updateMetadata(Collection& collection, int folder, const QByteArray& name) {
    Collection read;
    read.title = readMetadata(folder, "displayname").value_or(QFile::decodeName(name));
    if (const auto color = readMetadata(folder, "color"))
        read.color = Color::parse(*color);
    if (const auto order = readMetadata(folder, "order")) {
        bool ok = false;
        const int value = order->toInt(&ok);
        if (ok)
            read.order = value;
    }
    read.isWritable = ::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) == 0;
    const auto key = [](const Collection& c) {
        return std::tie(c.title, c.color, c.order, c.isWritable, c.problem);
    };
    if (key(collection) == key(read))
        return false;
    read.files = std::move(collection.files);
    collection = std::move(read);
    return true;
}

struct Reading {
    QByteArray name;
    std::optional<ItemFile> result;  // absent when the file is gone
};

void readFiles(int folder, const QByteArray& collection, const ZoneCalendar& local, Reading* begin,
               Reading* end) {
    const items::ItemReader reader(collection, local);
    for (Reading* reading = begin; reading != end; ++reading) {
        const auto opened = openFileAt(folder, reading->name);
        if (opened) {
            reading->result = reader.read(opened->text, reading->name);
            reading->result->version = opened->stamp.toVersion();
        } else if (opened.error() != ENOENT && opened.error() != EISDIR) {
            reading->result.emplace();
            reading->result->version = stampAt(folder, reading->name).value_or(FileStamp{}).toVersion();
            reading->result->problem = std::make_shared<const TextPair>(unreadable(
                QFile::decodeName(collection + '/' + reading->name), systemReason(opened.error())));
        }
    }
}

void readFilesOnSeveralThreads(int folder, const QByteArray& collection, const ZoneCalendar& local,
                               std::vector<Reading>& readings) {
    const std::size_t threads = std::clamp<std::size_t>(
        readings.size() / filesPerThread, 1, std::clamp(std::thread::hardware_concurrency(), 1U, 8U));
    std::vector<std::future<void>> others;
    const std::size_t share = (readings.size() + threads - 1) / threads;
    for (std::size_t begin = share; begin < readings.size(); begin += share) {
        const std::size_t end = std::min(readings.size(), begin + share);
        others.push_back(std::async(std::launch::async, [&, begin, end] {
            readFiles(folder, collection, local, readings.data() + begin, readings.data() + end);
        }));
    }
    readFiles(folder, collection, local, readings.data(), readings.data() + std::min(share, readings.size()));
}

bool updateFiles(Collection& collection, int folder, const QByteArray& collectionName,
                 const std::set<QByteArray>& named, const ZoneCalendar& local) {
    std::map<QByteArray, ItemFile>& files = collection.files;
    std::set<QByteArray> present;
    std::vector<Reading> readings;
    for (QByteArray& name : entriesOf(folder)) {
        if (!isItemName(name))
            continue;
        const auto known = files.find(name);
        const auto stamp =
            known != files.end() && !named.contains(name) ? stampAt(folder, name) : std::nullopt;
        if (!stamp || stamp->toVersion() != known->second.version)
            readings.push_back({name, std::nullopt});
        present.insert(std::move(name));
    }
    bool changed = std::erase_if(files, [&](const auto& file) { return !present.contains(file.first); }) > 0;
    readFilesOnSeveralThreads(folder, collectionName, local, readings);
    for (Reading& reading : readings) {
        const auto known = files.find(reading.name);
        if (!reading.result) {
            changed = files.erase(reading.name) > 0 || changed;
        } else if (known == files.end()) {
            files.emplace(reading.name, std::move(*reading.result));
            changed = true;
        } else if (known->second.version != reading.result->version ||
                   !sameContent(known->second, *reading.result)) {
            known->second = std::move(*reading.result);
            changed = true;
        }
    }
    return changed;
}

bool updateCollection(Collection& collection, const QByteArray& root, const QByteArray& name,
                      const std::set<QByteArray>& named, const ZoneCalendar& local) {
    const Descriptor folder = openFolder(root + '/' + name);
    if (!folder.isOpen()) {
        Collection unread{.title = QFile::decodeName(name),
                          .problem = unreadable(QFile::decodeName(name), systemReason(errno))};
        const bool changed = collection.problem != unread.problem;
        collection = std::move(unread);
        return changed;
    }
    const bool metadataChanged = updateMetadata(collection, folder.get(), name);
    return updateFiles(collection, folder.get(), name, named, local) || metadataChanged;
}

}  // namespace

bool isItemName(const QByteArray& name) {
    return name.endsWith(".ics") && !name.startsWith('.') && name.size() > 4;
}

bool isMetadataName(const QByteArray& name) {
    return name == "displayname" || name == "color" || name == "order";
}

std::optional<std::vector<QByteArray>> collectionNames(const QByteArray& root) {
    const Descriptor folder = openFolder(root);
    if (!folder.isOpen())
        return std::nullopt;
    std::vector<QByteArray> result;
    for (QByteArray& name : entriesOf(folder.get())) {
        struct stat status {};
        if (!name.startsWith('.') && ::fstatat(folder.get(), name.constData(), &status, 0) == 0 &&
            S_ISDIR(status.st_mode))
            result.push_back(std::move(name));
    }
    return result;
}

bool updateLibrary(Library& library, const QByteArray& root, const Changes& changes,
                   const ZoneCalendar& local) {
    const auto names = collectionNames(root);
    if (!names) {
        const TextPair problem = unreadable(QFile::decodeName(root), systemReason(errno));
        const bool changed = library.problem != problem || !library.collections.empty();
        library = {.problem = problem};
        return changed;
    }
    bool changed = std::exchange(library.problem, std::nullopt).has_value();
    changed =
        std::erase_if(library.collections,
                      [&](const auto& collection) {
                          return std::find(names->begin(), names->end(), collection.first) == names->end();
                      }) > 0 ||
        changed;
    for (const QByteArray& name : *names) {
        const auto named = changes.files.find(name);
        const bool isNew = !library.collections.contains(name);
        if (!isNew && !changes.everything && named == changes.files.end())
            continue;
        const bool differs =
            updateCollection(library.collections[name], root, name,
                             named == changes.files.end() ? std::set<QByteArray>() : named->second, local);
        changed = changed || isNew || differs;
    }
    return changed;
}

tl::expected<OpenedFile, int> openFile(const QByteArray& path) {
    return openFileAt(AT_FDCWD, path);
}

std::optional<FileStamp> stampOf(const QByteArray& path) {
    return stampAt(AT_FDCWD, path);
}

}  // namespace kestrant::vdir
