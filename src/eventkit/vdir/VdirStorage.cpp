#include "eventkit/vdir/VdirStorage.h"

#include "eventkit/EKErrors.h"
#include "eventkit/vdir/VdirLibrary.h"
#include "foundation/AtomicFile.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace kestrant::vdir {

using icalendar::Document;
using items::ChangedMeanwhile;
using items::Place;
using items::StoredText;
using items::WriteError;

namespace {

using namespace std::chrono_literals;

/// How often everything is compared where changes are not told.
constexpr Duration comparisonInterval = 10s;

QString systemDescription(int errorNumber) {
    return QString::fromStdString(std::generic_category().message(errorNumber));
}

EKError writeError(const FileError& error) {
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

}  // namespace

VdirStorage::VdirStorage(QByteArray root, std::function<void(const items::Changes&)> observer)
    : root_(std::move(root))
    , watcher_(std::make_unique<FolderWatcher>(root_, std::move(observer))) {}

std::optional<EKError> VdirStorage::open() {
    if (const auto created = createFolder(QFile::decodeName(root_)); !created)
        return storageError(created.error().path, created.error().description);
    return std::nullopt;
}

bool VdirStorage::update(items::Library& library, const items::Changes& changes, const ZoneCalendar& local) {
    if (watcher_)
        isWatched_ = watcher_->watch(collectionNames(root_).value_or(std::vector<QByteArray>()));
    return updateLibrary(library, root_, changes, local);
}

std::optional<VdirStorage::Recheck> VdirStorage::recheck() const {
    return isWatched_ ? std::nullopt : std::optional(Recheck{comparisonInterval, {.everything = true}});
}

QByteArray VdirStorage::pathOf(const Place& place) const {
    return root_ + '/' + place.collection + '/' + place.file;
}

tl::expected<std::optional<StoredText>, EKError> VdirStorage::read(const Place& place) {
    const QByteArray path = pathOf(place);
    auto opened = openFile(path);
    if (!opened && opened.error() == ENOENT)
        return std::nullopt;
    if (!opened)
        return tl::unexpected(
            writeError({QFile::decodeName(path), opened.error(), systemDescription(opened.error())}));
    return StoredText{opened->stamp.toVersion(), std::move(opened->text)};
}

std::optional<EKError> VdirStorage::reasonNotToChange(const Place& place) {
    const QByteArray path = pathOf(place);
    if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0 && errno != ENOENT)
        return readOnlyError(QFile::decodeName(place.file));
    return std::nullopt;
}

StoredText VdirStorage::storedAt(const Place& place, QByteArray text) const {
    return {stampOf(pathOf(place)).value_or(FileStamp{}).toVersion(), std::move(text)};
}

tl::expected<StoredText, WriteError> VdirStorage::replace(const Place& place, const Document& /*before*/,
                                                          const Document& after,
                                                          const items::Version& expected) {
    const QByteArray path = pathOf(place);
    const auto stamp = stampOf(path);
    if (!stamp || stamp->toVersion() != expected)
        return tl::unexpected(WriteError(ChangedMeanwhile{}));
    QByteArray text = after.text();
    if (const auto written = writeFileAtomically(QFile::decodeName(path), text); !written)
        return tl::unexpected(WriteError(writeError(written.error())));
    return storedAt(place, std::move(text));
}

std::optional<WriteError> VdirStorage::remove(const Place& place, const items::Version& expected) {
    const QByteArray path = pathOf(place);
    const auto stamp = stampOf(path);
    if (!stamp || stamp->toVersion() != expected)
        return ChangedMeanwhile{};
    if (::unlink(path.constData()) != 0)
        return writeError({QFile::decodeName(path), errno, systemDescription(errno)});
    const int folder =
        ::open((root_ + '/' + place.collection).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        (void)::fsync(folder);
        ::close(folder);
    }
    return std::nullopt;
}

tl::expected<VdirStorage::Created, EKError> VdirStorage::create(const QByteArray& collection,
                                                                const QByteArray& uid,
                                                                const QByteArray& preferredName,
                                                                const Document& document) {
    QByteArray text = document.text();
    Place place{collection, preferredName.isEmpty() ? fileNameFor(uid) : preferredName};
    auto written = writeFileAtomically(QFile::decodeName(pathOf(place)), text, FileMode::createNew);
    if (!written && (written.error().errorNumber == EEXIST || written.error().errorNumber == ENAMETOOLONG)) {
        place.file = items::newUid() + ".ics";
        written = writeFileAtomically(QFile::decodeName(pathOf(place)), text, FileMode::createNew);
    }
    if (!written && written.error().errorNumber == ENOENT)
        return tl::unexpected(calendarNotFoundError());
    if (!written)
        return tl::unexpected(writeError(written.error()));
    return Created{place, uid, storedAt(place, std::move(text))};
}

}  // namespace kestrant::vdir
