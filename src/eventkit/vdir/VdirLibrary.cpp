#include "eventkit/vdir/VdirLibrary.h"

#include "eventkit/items/Journal.h"
#include "foundation/AtomicFile.h"
#include "foundation/FileDescriptor.h"

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

/// More files than this are not read to the end when the program ends.
constexpr std::size_t filesReadAtTheEnd = 200;

FileDescriptor openFolder(const QByteArray& path) {
    return FileDescriptor(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
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

/// The names in a folder, without those of temporary files; what killed writers have left is removed.
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

/// Whether an error may pass by itself. Others are told when they do, or need the file to be changed.
bool mayPass(int errorNumber) {
    return errorNumber != EACCES && errorNumber != EPERM && errorNumber != EFBIG;
}

/// The folder's properties, from files of its own. Where one cannot be read, the known value stays.
std::optional<QString> readMetadata(int folder, const char* name, std::optional<QString> known) {
    const auto opened = openFileAt(folder, name);
    if (!opened && opened.error() != ENOENT && opened.error() != EISDIR)
        return known;
    if (!opened || opened->text.size() > 10'000)
        return std::nullopt;
    const QString value = QString::fromUtf8(opened->text).trimmed();
    return value.isEmpty() ? std::nullopt : std::optional(value);
}

/// Reads what the folder says of itself; true when it differs.
bool updateMetadata(Collection& collection, int folder, const QByteArray& name) {
    Collection read;
    read.title = readMetadata(folder, "displayname", collection.title).value_or(QFile::decodeName(name));
    if (read.title.isEmpty())
        read.title = QFile::decodeName(name);
    if (const auto color = readMetadata(
            folder, "color", collection.color ? std::optional(collection.color->toString()) : std::nullopt))
        read.color = Color::parse(*color);
    if (const auto order = readMetadata(folder, "order",
                                        collection.order ? std::optional(QString::number(*collection.order))
                                                         : std::nullopt)) {
        bool ok = false;
        const int value = order->toInt(&ok);
        if (ok)
            read.order = value;
    }
    read.isWritable = ::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) == 0;
    const auto key = [](const Collection& c) {
        return std::tie(c.title, c.color, c.order, c.isWritable, c.isAnswering, c.problem);
    };
    if (key(collection) == key(read))
        return false;
    read.files = std::move(collection.files);
    collection = std::move(read);
    return true;
}

struct Reading {
    QByteArray name;
    /// The result; absent where the file is gone.
    std::optional<ItemFile> result;
    /// Why there is no result but a problem; 0 where there is one.
    int errorNumber = 0;
    bool wasBrokenOff = false;
};

/// The files of one collection that are to be read.
struct Readings {
    int folder;
    QByteArray collection;
    const TimeZone& local;
    const std::atomic<bool>& isEnding;
    std::vector<Reading> wanted;

    void read(std::size_t begin, std::size_t end) {
        const items::ItemReader reader(collection, local);
        for (std::size_t i = begin; i < end; ++i) {
            Reading& reading = wanted[i];
            if (wanted.size() > filesReadAtTheEnd && isEnding) {
                reading.wasBrokenOff = true;
                continue;
            }
            const auto opened = openFileAt(folder, reading.name);
            if (opened) {
                reading.result = reader.read(opened->text, reading.name);
                reading.result->version = opened->stamp.toVersion();
            } else if (opened.error() != ENOENT && opened.error() != EISDIR) {
                reading.errorNumber = opened.error();
            }
        }
    }

    void readOnSeveralThreads() {
        const std::size_t threads = std::clamp<std::size_t>(
            wanted.size() / filesPerThread, 1, std::clamp(std::thread::hardware_concurrency(), 1U, 8U));
        std::vector<std::future<void>> others;
        const std::size_t share = (wanted.size() + threads - 1) / threads;
        for (std::size_t begin = share; begin < wanted.size(); begin += share) {
            const std::size_t end = std::min(wanted.size(), begin + share);
            others.push_back(std::async(std::launch::async, [this, begin, end] { read(begin, end); }));
        }
        read(0, std::min(share, wanted.size()));
    }
};

/// One update of the library.
class Update {
  public:
    Update(Library& library, const QByteArray& root, const Changes& changes, const TimeZone& local,
           const std::atomic<bool>& isEnding)
        : library_(library)
        , root_(root)
        , changes_(changes)
        , local_(local)
        , isEnding_(isEnding) {}

    void updateRoot(const tl::expected<RootContents, int>& contents);
    void updateCollections();
    [[nodiscard]] Updated result() && { return std::move(result_); }

  private:
    void updateCollection(const QByteArray& name, const std::set<QByteArray>& named, bool isListed);
    void updateFiles(Collection& collection, Readings& readings, const std::vector<QByteArray>* present);
    void keepUnread(Collection& collection, const QByteArray& name, int errorNumber);

    Library& library_;
    const QByteArray& root_;
    const Changes& changes_;
    const TimeZone& local_;
    const std::atomic<bool>& isEnding_;
    Updated result_;
};

void Update::updateRoot(const tl::expected<RootContents, int>& contents) {
    if (!contents) {
        const TextPair problem = unreadable(QFile::decodeName(root_), systemReason(contents.error()));
        result_.changed = library_.problem != problem;
        library_.problem = problem;
        if (contents.error() == ENOENT || contents.error() == ENOTDIR) {
            // A folder that does not exist has no items.
            result_.changed = result_.changed || !library_.collections.empty();
            library_.collections.clear();
        } else if (mayPass(contents.error())) {
            result_.unread.everything = true;
        }
        return;
    }
    result_.changed = std::exchange(library_.problem, std::nullopt).has_value();
    const std::set<QByteArray> names(contents->collections.begin(), contents->collections.end());
    const auto isGone = [&](const auto& collection) { return !names.contains(collection.first); };
    result_.changed = std::erase_if(library_.collections, isGone) > 0 || result_.changed;
    for (const QByteArray& name : names) {
        if (!library_.collections.contains(name)) {
            updateCollection(name, {}, true);
            result_.changed = true;
        } else if (changes_.everything) {
            const auto named = changes_.files.find(name);
            updateCollection(name, named == changes_.files.end() ? std::set<QByteArray>() : named->second,
                             true);
        }
    }
}

void Update::updateCollections() {
    for (const auto& [name, named] : changes_.files) {
        const bool isNew = !library_.collections.contains(name);
        updateCollection(name, named, isNew || named.empty() || named.contains(QByteArray()));
        result_.changed = result_.changed || isNew == library_.collections.contains(name);
    }
}

void Update::keepUnread(Collection& collection, const QByteArray& name, int errorNumber) {
    if (errorNumber == ENOENT || errorNumber == ENOTDIR) {
        library_.collections.erase(name);
        return;
    }
    if (collection.title.isEmpty())
        collection.title = QFile::decodeName(name);
    const TextPair problem = unreadable(QFile::decodeName(name), systemReason(errorNumber));
    result_.changed = result_.changed || collection.problem != problem;
    collection.problem = problem;
    collection.isWritable = false;
    collection.isAnswering = false;
    if (mayPass(errorNumber))
        result_.unread.files[name].insert(QByteArray());
}

void Update::updateCollection(const QByteArray& name, const std::set<QByteArray>& named, bool isListed) {
    Collection& collection = library_.collections[name];
    const QByteArray path = root_ + '/' + name;
    const FileDescriptor folder = openFolder(path);
    if (!folder.isOpen())
        return keepUnread(collection, name, errno);
    isListed = isListed || collection.problem;
    Readings readings{folder.get(), name, local_, isEnding_, {}};
    std::vector<QByteArray> present;
    if (isListed) {
        auto entries = entriesOf(folder.get(), path);
        if (!entries)
            return keepUnread(collection, name, entries.error());
        present = std::move(*entries);
        std::erase_if(present, [](const QByteArray& entry) { return !isItemName(entry); });
        for (const QByteArray& file : present) {
            const auto known = collection.files.find(file);
            const auto stamp = known != collection.files.end() && !named.contains(file)
                                   ? stampAt(folder.get(), file)
                                   : std::nullopt;
            if (!stamp || stamp->toVersion() != known->second.version)
                readings.wanted.push_back({.name = file});
        }
    } else {
        for (const QByteArray& file : named) {
            if (isItemName(file))
                readings.wanted.push_back({.name = file});
        }
    }
    if (isListed || std::any_of(named.begin(), named.end(), isMetadataName))
        result_.changed = updateMetadata(collection, folder.get(), name) || result_.changed;
    readings.readOnSeveralThreads();
    updateFiles(collection, readings, isListed ? &present : nullptr);
}

void Update::updateFiles(Collection& collection, Readings& readings, const std::vector<QByteArray>* present) {
    std::map<QByteArray, ItemFile>& files = collection.files;
    bool changed = false;
    if (present) {
        const std::set<QByteArray> names(present->begin(), present->end());
        changed = std::erase_if(files, [&](const auto& file) { return !names.contains(file.first); }) > 0;
    }
    for (Reading& reading : readings.wanted) {
        const auto known = files.find(reading.name);
        if (reading.wasBrokenOff)
            continue;
        if (reading.errorNumber != 0) {
            // The known items stay. Without a version the file is read again at every comparison.
            reading.result = known == files.end() ? ItemFile() : known->second;
            reading.result->version = {};
            reading.result->problem = std::make_shared<const TextPair>(
                unreadable(QFile::decodeName(readings.collection + '/' + reading.name),
                           systemReason(reading.errorNumber)));
            if (mayPass(reading.errorNumber))
                result_.unread.files[readings.collection].insert(reading.name);
        }
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
    result_.changed = result_.changed || changed;
}

}  // namespace

bool isItemName(const QByteArray& name) {
    return name.endsWith(".ics") && !name.startsWith('.') && name.size() > 4;
}

bool isMetadataName(const QByteArray& name) {
    return name == "displayname" || name == "color" || name == "order";
}

tl::expected<RootContents, int> readRoot(const QByteArray& root) {
    const FileDescriptor folder = openFolder(root);
    if (!folder.isOpen())
        return tl::unexpected(errno);
    auto entries = entriesOf(folder.get(), root);
    if (!entries)
        return tl::unexpected(entries.error());
    RootContents result;
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

Updated updateLibrary(Library& library, const QByteArray& root,
                      const std::optional<tl::expected<RootContents, int>>& contents, const Changes& changes,
                      const TimeZone& local, const std::atomic<bool>& isEnding) {
    Update update(library, root, changes, local, isEnding);
    if (contents)
        update.updateRoot(*contents);
    if (!changes.everything)
        update.updateCollections();
    return std::move(update).result();
}

tl::expected<OpenedFile, int> openFile(const QByteArray& path) {
    return openFileAt(AT_FDCWD, path);
}

std::optional<FileStamp> stampOf(const QByteArray& path) {
    return stampAt(AT_FDCWD, path);
}

}  // namespace kestrant::vdir
