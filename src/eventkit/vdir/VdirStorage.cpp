#include "eventkit/vdir/VdirStorage.h"

#include "eventkit/model/EKErrors.h"
#include "eventkit/vdir/JournalSettling.h"
#include "eventkit/vdir/VdirReading.h"
#include "foundation/AtomicFile.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace kestrant::vdir {

using icalendar::Document;
using items::ChangedMeanwhile;
using items::digestOf;
using items::FileLocation;
using items::Journal;
using items::StoredText;
using items::WriteError;
using Coverage = FolderWatcher::Coverage;

namespace {

using namespace std::chrono_literals;

/// How often everything is compared where changes are not told.
constexpr Duration comparisonInterval = 10s;

QString systemDescription(int errorNumber) {
    return QString::fromStdString(std::generic_category().message(errorNumber));
}

EKError writeError(const FileError& error) {
    if (error.errorNumber == EWOULDBLOCK)
        return storageError(error.path,
                            text("another Kestrant process has been changing it for too long.",
                                 "un autre processus de Kestrant le modifie depuis trop longtemps."));
    if (error.errorNumber == EACCES || error.errorNumber == EPERM || error.errorNumber == EROFS)
        return readOnlyError(error.path);
    return storageError(error.path, error.description);
}

/// The UID, where it is a name that every program and file system takes as it
/// is.
QByteArray fileNameFor(const QByteArray& uid) {
    const bool isSafe = !uid.isEmpty() && uid.size() <= 200 && !uid.startsWith('.') &&
                        std::all_of(uid.begin(), uid.end(), [](char c) {
                            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                   (c >= '0' && c <= '9') || c == '_' || c == '.' || c == '-' || c == '+';
                        });
    return (isSafe ? uid : items::newUid()) + ".ics";
}

TextPair unwatchedNotice() {
    return text(
        "The system watches no more folders for Kestrant (see fs.inotify.max_user_watches): what other "
        "programs change is seen after some seconds.",
        "Le système ne surveille pas davantage de dossiers pour Kestrant (voir "
        "fs.inotify.max_user_watches) : ce que d’autres programmes modifient apparaît après quelques "
        "secondes.");
}

/// Whether a file is the one that was read.
FileCheck fileIs(const items::Version& version, const std::optional<QByteArray>& text) {
    return [version, text](const QString& path) {
        const auto present = openFile(QFile::encodeName(path));
        return present && present->stamp.toVersion() == version && (!text || present->text == *text);
    };
}

WriteError failed(const FileError& error) {
    if (error.errorNumber == ESTALE)
        return ChangedMeanwhile{};
    return writeError(error);
}

}  // namespace

/// A change in two steps that is under way. Its note is written before the first file is made.
class VdirStorage::TwoSteps {
  public:
    TwoSteps(VdirStorage& storage, Journal journal)
        : storage_(storage)
        , journal_(std::move(journal))
        , name_(items::newJournalName()) {}
    TwoSteps(const TwoSteps&) = delete;
    TwoSteps& operator=(const TwoSteps&) = delete;
    ~TwoSteps() {
        if (isNoted_ && vdir::settle(journal_, storage_.root_))
            ::unlink(path().constData());
    }

    [[nodiscard]] const QByteArray& name() const { return name_; }
    std::optional<EKError> note(const FileLocation& location, const QByteArray& text) {
        journal_.made.push_back({location, digestOf(text)});
        const auto written = writeFileAtomically(QFile::decodeName(path()), journal_.text());
        isNoted_ = isNoted_ || written.has_value();
        // Without a place for the note the change is made all the same.
        if (written || written.error().errorNumber == EACCES || written.error().errorNumber == EROFS)
            return std::nullopt;
        return writeError(written.error());
    }

  private:
    [[nodiscard]] QByteArray path() const { return storage_.root_ + '/' + name_; }

    VdirStorage& storage_;
    Journal journal_;
    QByteArray name_;
    bool isNoted_ = false;
};

VdirStorage::VdirStorage(QByteArray root, std::function<void(const items::Changes&)> observer)
    : root_(std::move(root))
    , watcher_(std::make_unique<FolderWatcher>(root_, std::move(observer))) {}

std::optional<EKError> VdirStorage::open() {
    if (const auto created = createFolder(QFile::decodeName(root_)); !created)
        return storageError(created.error().path, created.error().description);
    return std::nullopt;
}

bool VdirStorage::update(items::StorageContents& contents, const items::Changes& changes,
                         const TimeZone& local) {
    std::optional<tl::expected<RootFolder, int>> rootFolder;
    bool isSettled = true;
    if (changes.everything || changes.collections || contents.problem) {
        rootFolder = readRoot(root_);
        // Before anything is read, so that nothing that is taken back is seen.
        if (*rootFolder && !(**rootFolder).journals.empty())
            isSettled = settle((**rootFolder).journals);
        // While it cannot be listed, what was watched goes on to be.
        const bool isKnown = *rootFolder || rootFolder->error() == ENOENT || rootFolder->error() == ENOTDIR;
        if (watcher_ && (isKnown || !wasRead_))
            coverage_ = watcher_->watch(*rootFolder ? (**rootFolder).collections : std::vector<QByteArray>());
    }
    Updated updated = updateContents(contents, root_, rootFolder, changes, local, isEnding_);
    unread_ = std::move(updated.unread);
    unread_.collections = unread_.collections || !isSettled;
    // The observer may be gone before the folder is compared.
    const auto notice =
        wasRead_ && coverage_ == Coverage::limited ? std::optional(unwatchedNotice()) : std::nullopt;
    wasRead_ = true;
    return std::exchange(contents.notice, notice) != notice || updated.changed;
}

bool VdirStorage::readsOnlyFilesNamed(const items::Changes& changes) const {
    if (changes.everything || changes.collections)
        return false;
    return std::all_of(changes.files.begin(), changes.files.end(), [](const auto& named) {
        return !named.second.empty() && std::all_of(named.second.begin(), named.second.end(), isItemName);
    });
}

std::optional<VdirStorage::ScheduledCheck> VdirStorage::recheck() const {
    if (coverage_ != Coverage::complete)
        return ScheduledCheck{comparisonInterval, {.everything = true}};
    if (unread_.everything || unread_.collections || !unread_.files.empty())
        return ScheduledCheck{comparisonInterval, unread_};
    return std::nullopt;
}

tl::expected<std::shared_ptr<VdirStorage::Locks>, FileError>
VdirStorage::lockFolders(const std::vector<QByteArray>& collections, FileLock::Waiting waiting) {
    // Everybody takes them in the same order, whatever the folders are called.
    std::map<std::pair<dev_t, ino_t>, QByteArray> folders;
    for (const QByteArray& name : collections) {
        const QByteArray path = root_ + '/' + name;
        struct stat status {};
        if (::stat(path.constData(), &status) == 0)
            folders.emplace(std::pair(status.st_dev, status.st_ino), path);
    }
    auto result = std::make_shared<Locks>();
    for (const auto& [folder, path] : folders) {
        auto held = locks_[folder].lock();
        if (!held) {
            auto taken = FileLock::ofFolder(QFile::decodeName(path), waiting);
            // Without the right to list a folder one may still write in it.
            if (!taken && taken.error().errorNumber == EACCES)
                continue;
            if (!taken)
                return tl::unexpected(std::move(taken.error()));
            held = std::make_shared<FileLock>(std::move(*taken));
            locks_[folder] = held;
        }
        result->push_back(std::move(held));
    }
    return result;
}

tl::expected<items::StorageHold, EKError> VdirStorage::lock(const std::vector<QByteArray>& collections) {
    auto locks = lockFolders(collections, FileLock::Waiting::bounded);
    if (!locks)
        return tl::unexpected(writeError(locks.error()));
    return items::StorageHold(std::move(*locks));
}

items::StorageHold VdirStorage::beginTwoSteps(const FileLocation& changed, const QByteArray& text,
                                              items::SecondStep step) {
    auto steps = twoSteps_.lock();
    if (!steps) {
        steps = std::make_shared<TwoSteps>(*this, Journal{.changed = changed,
                                                          .before = digestOf(text),
                                                          .isRemoved = step == items::SecondStep::removes});
        twoSteps_ = steps;
    }
    return steps;
}

bool VdirStorage::settle(const std::vector<QByteArray>& journals) {
    bool result = true;
    for (const QByteArray& name : journals)
        result = settle(name) && result;
    return result;
}

bool VdirStorage::settle(const QByteArray& journalName) {
    if (const auto steps = twoSteps_.lock(); steps && steps->name() == journalName)
        return true;
    const QByteArray path = root_ + '/' + journalName;
    const auto opened = openFile(path);
    const auto journal = opened ? Journal::parse(opened->text) : std::nullopt;
    if (!journal || !staysInFolder(*journal))
        return opened || opened.error() == ENOENT;
    // A process in the middle of the change holds the locks.
    const auto locks = lockFolders(journal->collections(), FileLock::Waiting::none);
    const auto isHeld = [](const auto& lock) { return lock->isHeld(); };
    const bool isAbandoned = locks && (std::all_of((*locks)->begin(), (*locks)->end(), isHeld) ||
                                       !items::isOfRunningProcess(journalName));
    if (!isAbandoned)
        return false;
    // The change may have been completed meanwhile.
    if (!stampOf(path))
        return true;
    return vdir::settle(*journal, root_) && ::unlink(path.constData()) == 0;
}

QByteArray VdirStorage::pathOf(const FileLocation& location) const {
    return root_ + '/' + location.collection + '/' + location.file;
}

tl::expected<std::optional<StoredText>, EKError> VdirStorage::read(const FileLocation& location) {
    const QByteArray path = pathOf(location);
    auto opened = openFile(path);
    if (!opened && opened.error() == ENOENT)
        return std::nullopt;
    if (!opened)
        return tl::unexpected(
            writeError({QFile::decodeName(path), opened.error(), systemDescription(opened.error())}));
    return StoredText{opened->stamp.toVersion(), std::move(opened->text)};
}

std::optional<EKError> VdirStorage::writeRefusal(const FileLocation& location) {
    const QByteArray path = pathOf(location);
    if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0 && errno != ENOENT)
        return readOnlyError(QFile::decodeName(location.file));
    return std::nullopt;
}

StoredText VdirStorage::storedAt(const FileLocation& location, QByteArray text) const {
    return {stampOf(pathOf(location)).value_or(FileStamp{}).toVersion(), std::move(text)};
}

tl::expected<StoredText, WriteError> VdirStorage::replace(const FileLocation& location,
                                                          const Document& before, const Document& after,
                                                          const items::Version& expected) {
    const auto locked = lock({location.collection});
    if (!locked)
        return tl::unexpected(WriteError(locked.error()));
    QByteArray text = after.text();
    const auto written =
        replaceFileIf(QFile::decodeName(pathOf(location)), text, fileIs(expected, before.text()));
    if (!written)
        return tl::unexpected(failed(written.error()));
    return storedAt(location, std::move(text));
}

std::optional<WriteError> VdirStorage::remove(const FileLocation& location, const items::Version& expected) {
    const auto locked = lock({location.collection});
    if (!locked)
        return WriteError(locked.error());
    const auto removed = removeFileIf(QFile::decodeName(pathOf(location)), fileIs(expected, std::nullopt));
    return removed ? std::nullopt : std::optional(failed(removed.error()));
}

QByteArray VdirStorage::freeName(const QByteArray& collection, const QByteArray& wanted) const {
    struct stat status {};
    const bool isFree = ::lstat(pathOf({collection, wanted}).constData(), &status) != 0 && errno == ENOENT;
    return isFree ? wanted : items::newUid() + ".ics";
}

tl::expected<VdirStorage::Created, EKError> VdirStorage::create(const QByteArray& collection,
                                                                const QByteArray& uid,
                                                                const QByteArray& preferredName,
                                                                const Document& document) {
    const auto locked = lock({collection});
    if (!locked)
        return tl::unexpected(locked.error());
    QByteArray text = document.text();
    QByteArray wanted = preferredName.isEmpty() ? fileNameFor(uid) : preferredName;
    while (true) {
        const FileLocation location{collection, freeName(collection, std::exchange(wanted, {}))};
        if (const auto steps = twoSteps_.lock()) {
            if (auto error = steps->note(location, text))
                return tl::unexpected(std::move(*error));
        }
        const auto written =
            writeFileAtomically(QFile::decodeName(pathOf(location)), text, FileMode::createNew);
        if (written)
            return Created{location, uid, storedAt(location, std::move(text))};
        if (written.error().errorNumber == ENOENT)
            return tl::unexpected(calendarNotFoundError());
        if (written.error().errorNumber != EEXIST)
            return tl::unexpected(writeError(written.error()));
    }
}

}  // namespace kestrant::vdir
