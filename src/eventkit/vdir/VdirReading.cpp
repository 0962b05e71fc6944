#include "eventkit/vdir/VdirReading.h"

#include "foundation/FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <future>
#include <thread>
#include <utility>

namespace kestrant::vdir {

using items::Changes;
using items::Collection;
using items::ItemFile;
using items::StorageContents;
using items::unreadable;

namespace {

/// Below this many files a second thread costs more than it saves.
constexpr std::size_t filesPerThread = 200;

/// More files than this are not read to the end when the program ends.
constexpr std::size_t filesReadAtTheEnd = 200;

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

/// One update of what is known from the disk.
class Update {
  public:
    Update(StorageContents& contents, const QByteArray& root, const Changes& changes, const TimeZone& local,
           const std::atomic<bool>& isEnding)
        : contents_(contents)
        , root_(root)
        , changes_(changes)
        , local_(local)
        , isEnding_(isEnding) {}

    void updateRoot(const tl::expected<RootFolder, int>& rootFolder);
    void updateCollections();
    [[nodiscard]] Updated result() && { return std::move(result_); }

  private:
    void updateCollection(const QByteArray& name, const std::set<QByteArray>& named, bool isListed);
    void updateFiles(Collection& collection, Readings& readings, const std::vector<QByteArray>* present);
    void keepUnread(Collection& collection, const QByteArray& name, int errorNumber);

    StorageContents& contents_;
    const QByteArray& root_;
    const Changes& changes_;
    const TimeZone& local_;
    const std::atomic<bool>& isEnding_;
    Updated result_;
};

void Update::updateRoot(const tl::expected<RootFolder, int>& rootFolder) {
    if (!rootFolder) {
        const TextPair problem = unreadable(QFile::decodeName(root_), systemReason(rootFolder.error()));
        result_.changed = contents_.problem != problem;
        contents_.problem = problem;
        if (rootFolder.error() == ENOENT || rootFolder.error() == ENOTDIR) {
            // A folder that does not exist has no items.
            result_.changed = result_.changed || !contents_.collections.empty();
            contents_.collections.clear();
        } else if (mayPass(rootFolder.error())) {
            result_.unread.everything = true;
        }
        return;
    }
    result_.changed = std::exchange(contents_.problem, std::nullopt).has_value();
    const std::set<QByteArray> names(rootFolder->collections.begin(), rootFolder->collections.end());
    const auto isGone = [&](const auto& collection) { return !names.contains(collection.first); };
    result_.changed = std::erase_if(contents_.collections, isGone) > 0 || result_.changed;
    for (const QByteArray& name : names) {
        if (!contents_.collections.contains(name)) {
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
        const bool isNew = !contents_.collections.contains(name);
        updateCollection(name, named, isNew || named.empty() || named.contains(QByteArray()));
        result_.changed = result_.changed || isNew == contents_.collections.contains(name);
    }
}

void Update::keepUnread(Collection& collection, const QByteArray& name, int errorNumber) {
    if (errorNumber == ENOENT || errorNumber == ENOTDIR) {
        contents_.collections.erase(name);
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
    Collection& collection = contents_.collections[name];
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

Updated updateContents(StorageContents& contents, const QByteArray& root,
                       const std::optional<tl::expected<RootFolder, int>>& rootFolder, const Changes& changes,
                       const TimeZone& local, const std::atomic<bool>& isEnding) {
    Update update(contents, root, changes, local, isEnding);
    if (rootFolder)
        update.updateRoot(*rootFolder);
    if (!changes.everything)
        update.updateCollections();
    return std::move(update).result();
}

}  // namespace kestrant::vdir
