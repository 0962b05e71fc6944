#include "eventkit/EKErrors.h"
#include "eventkit/vdir/OpenItem.h"
#include "foundation/AtomicFile.h"

#include <QFile>
#include <QUuid>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace kestrant::vdir {

using icalendar::Document;

namespace {

/// So often a write is tried again when the file changes between reading and writing it.
constexpr int attempts = 5;

QString systemDescription(int errorNumber) {
    return QString::fromStdString(std::generic_category().message(errorNumber));
}

EKError writeError(const FileError& error) {
    if (error.errorNumber == EACCES || error.errorNumber == EPERM || error.errorNumber == EROFS)
        return readOnlyError(error.path);
    return storageError(error.path, error.description);
}

}  // namespace

QByteArray newUid() {
    return QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
}

QByteArray fileNameFor(const QByteArray& uid) {
    const bool isSafe = !uid.isEmpty() && uid.size() <= 200 && !uid.startsWith('.') &&
                        std::all_of(uid.begin(), uid.end(), [](char c) {
                            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                   (c >= '0' && c <= '9') || c == '_' || c == '.' || c == '-' || c == '+';
                        });
    return (isSafe ? uid : newUid()) + ".ics";
}

int firstZoneYear(int year) {
    return std::max(1970, year - 1);
}

tl::expected<std::optional<VdirDatabase::OpenFile>, EKError>
VdirDatabase::openFileOf(const ItemEntry& entry) const {
    const Place place{entry.collection, entry.file};
    const QByteArray path = pathOf(place);
    const auto opened = openFile(path);
    if (!opened && opened.error() == ENOENT)
        return std::nullopt;
    if (!opened)
        return tl::unexpected(
            writeError({QFile::decodeName(path), opened.error(), systemDescription(opened.error())}));
    auto document = Document::parse(opened->text);
    if (!document)
        return tl::unexpected(storageError(QFile::decodeName(path), document.error()));
    return OpenFile{place, opened->stamp, std::move(*document), entry.ordinal};
}

tl::expected<QByteArray, EKError> VdirDatabase::writableCollection(const QString& identifier) const {
    const QByteArray name = QFile::encodeName(identifier);
    const auto found = library_.collections.find(name);
    if (found == library_.collections.end())
        return tl::unexpected(calendarNotFoundError());
    if (!found->second.isWritable)
        return tl::unexpected(readOnlyError(found->second.title));
    return name;
}

std::optional<EKError> VdirDatabase::reasonNotToChange(const Place& place) const {
    if (auto collection = writableCollection(QFile::decodeName(place.collection)); !collection)
        return collection.error();
    const QByteArray path = pathOf(place);
    if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0 && errno != ENOENT)
        return readOnlyError(QFile::decodeName(place.file));
    return std::nullopt;
}

void VdirDatabase::noteWritten(const Place& place, const QByteArray& text, const ZoneCalendar& local) {
    placeEvents(local);
    ItemFile items = readItems(text, place.collection, place.file, local);
    items.stamp = stampOf(pathOf(place)).value_or(FileStamp{});
    library_.collections[place.collection].files.insert_or_assign(place.file, std::move(items));
}

std::optional<VdirDatabase::WriteError> VdirDatabase::replaceFile(const Place& place,
                                                                  const Document& document,
                                                                  const FileStamp& expected,
                                                                  const ZoneCalendar& local) {
    const QByteArray path = pathOf(place);
    if (stampOf(path) != expected)
        return ChangedMeanwhile{};
    const QByteArray text = document.text();
    if (const auto written = writeFileAtomically(QFile::decodeName(path), text); !written)
        return writeError(written.error());
    noteWritten(place, text, local);
    return std::nullopt;
}

std::optional<VdirDatabase::WriteError> VdirDatabase::removeFile(const Place& place,
                                                                 const FileStamp& expected) {
    const QByteArray path = pathOf(place);
    if (stampOf(path) != expected)
        return ChangedMeanwhile{};
    if (::unlink(path.constData()) != 0)
        return writeError({QFile::decodeName(path), errno, systemDescription(errno)});
    const int folder =
        ::open((root_ + '/' + place.collection).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        (void)::fsync(folder);
        ::close(folder);
    }
    library_.collections[place.collection].files.erase(place.file);
    return std::nullopt;
}

tl::expected<VdirDatabase::Place, EKError> VdirDatabase::createFile(const QByteArray& collection,
                                                                    const QByteArray& preferredName,
                                                                    const Document& document,
                                                                    const ZoneCalendar& local) {
    const QByteArray text = document.text();
    Place place{collection, preferredName};
    auto written = writeFileAtomically(QFile::decodeName(pathOf(place)), text, FileMode::createNew);
    if (!written && (written.error().errorNumber == EEXIST || written.error().errorNumber == ENAMETOOLONG)) {
        place.file = newUid() + ".ics";
        written = writeFileAtomically(QFile::decodeName(pathOf(place)), text, FileMode::createNew);
    }
    if (!written && written.error().errorNumber == ENOENT)
        return tl::unexpected(calendarNotFoundError());
    if (!written)
        return tl::unexpected(writeError(written.error()));
    noteWritten(place, text, local);
    return place;
}

void VdirDatabase::takeBack(const Place& place) {
    if (const auto stamp = stampOf(pathOf(place)))
        (void)removeFile(place, *stamp);
}

std::optional<VdirDatabase::WriteError> VdirDatabase::takeOut(const OpenFile& file, QByteArrayView name,
                                                              const icalendar::ItemComponents& item,
                                                              const ZoneCalendar& local) {
    if (file.isAlone)
        return removeFile(file.place, file.stamp);
    Document rest = file.document;
    icalendar::removeItem(rest, name, item);
    return replaceFile(file.place, rest, file.stamp, local);
}

tl::expected<VdirDatabase::Place, VdirDatabase::WriteError>
VdirDatabase::move(const QByteArray& target, const QByteArray& preferredName, const Document& document,
                   const std::function<std::optional<WriteError>()>& leave, const ZoneCalendar& local) {
    const auto place = createFile(target, preferredName, document, local);
    if (!place)
        return tl::unexpected(WriteError(place.error()));
    if (auto error = leave()) {
        takeBack(*place);
        return tl::unexpected(std::move(*error));
    }
    return *place;
}

tl::expected<EKSaveResult, EKError>
VdirDatabase::persist(const QString& title,
                      const std::function<tl::expected<EKSaveResult, WriteError>()>& attempt) {
    for (int i = 0; i < attempts; ++i) {
        auto result = attempt();
        if (result)
            return std::move(*result);
        if (const auto* error = std::get_if<EKError>(&result.error())) {
            rebuildSnapshot();
            return tl::unexpected(*error);
        }
    }
    return tl::unexpected(conflictError(title));
}

}  // namespace kestrant::vdir
