#include "eventkit/EKErrors.h"
#include "eventkit/ReminderChanges.h"
#include "eventkit/icalendar/ItemWriting.h"
#include "eventkit/icalendar/TimeZoneText.h"
#include "eventkit/vdir/OpenItem.h"
#include "foundation/AtomicFile.h"

#include <QFile>
#include <QUuid>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <system_error>
#include <utility>

namespace kestrant::vdir {

using icalendar::Component;
using icalendar::Document;
using icalendar::TodoItem;

namespace {

/// So often a write is tried again when the file changes between reading and writing it.
constexpr int attempts = 5;

QByteArray newUid() {
    return QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
}

/// The UID, where it is a name that every program and file system takes as it is.
QByteArray fileNameFor(const QByteArray& uid) {
    const bool isSafe = !uid.isEmpty() && uid.size() <= 200 && !uid.startsWith('.') &&
                        std::all_of(uid.begin(), uid.end(), [](char c) {
                            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                   (c >= '0' && c <= '9') || c == '_' || c == '.' || c == '-' || c == '+';
                        });
    return (isSafe ? uid : newUid()) + ".ics";
}

QString systemDescription(int errorNumber) {
    return QString::fromStdString(std::generic_category().message(errorNumber));
}

EKError writeError(const FileError& error) {
    if (error.errorNumber == EACCES || error.errorNumber == EPERM || error.errorNumber == EROFS)
        return readOnlyError(error.path);
    return storageError(error.path, error.description);
}

std::shared_ptr<const ReminderChange> changeOf(std::vector<ItemChange> items) {
    auto change = std::make_shared<ReminderChange>();
    change->items = std::move(items);
    return change;
}

int firstYearOf(const EKReminderData& data) {
    int year = 9999;
    for (const auto& date : {data.startDateComponents, data.dueDateComponents}) {
        if (date && date->year)
            year = std::min(year, *date->year);
    }
    // A definition begins with the changes of the year before, so that it covers the first months too.
    return std::max(1970, year - 1);
}

}  // namespace

Document aloneIn(Document document, const TodoItem& item) {
    icalendar::keepOnlyItem(document, "VTODO", item);
    return document;
}

tl::expected<VdirDatabase::OpenItem, EKError> VdirDatabase::openItem(const QString& identifier,
                                                                     const ZoneCalendar& local) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto entry = snapshot_->reminders.constFind(identifier);
        if (entry == snapshot_->reminders.cend())
            return tl::unexpected(itemNotFoundError());
        const Place place{entry->collection, entry->file};
        auto opened = openFile(pathOf(place));
        if (opened) {
            auto document = Document::parse(opened->text);
            if (!document)
                return tl::unexpected(storageError(QFile::decodeName(pathOf(place)), document.error()));
            int ordinal = 0;
            auto items = icalendar::readTodos(*document, local);
            for (TodoItem& item : items) {
                if (item.key != entry->key || ordinal++ != entry->ordinal)
                    continue;
                EKReminderData current = item.data;
                current.calendarItemIdentifier = identifier;
                current.calendarIdentifier = QFile::decodeName(place.collection);
                const bool isAlone = !icalendar::holdsMore(*document, item);
                return OpenItem{place,          opened->stamp, std::move(*document), std::move(item),
                                entry->ordinal, isAlone,       std::move(current)};
            }
        } else if (opened.error() != ENOENT) {
            return tl::unexpected(writeError(
                {QFile::decodeName(pathOf(place)), opened.error(), systemDescription(opened.error())}));
        }
        // Not where it was: another program may have moved it.
        refresh({.everything = true}, local);
    }
    return tl::unexpected(itemNotFoundError());
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

tl::expected<EKSaveResult, EKError> VdirDatabase::save(const std::shared_ptr<const EKReminderData>& base,
                                                       const EKReminderData& edited, Instant now,
                                                       const ZoneCalendar& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    if (!base) {
        auto result = saveNew(edited, now, local);
        rebuildSnapshot();
        return result;
    }
    for (int attempt = 0; attempt < attempts; ++attempt) {
        auto result = trySave(*base, edited, now, local);
        if (result)
            return std::move(*result);
        if (const auto* error = std::get_if<EKError>(&result.error())) {
            rebuildSnapshot();
            return tl::unexpected(*error);
        }
    }
    return tl::unexpected(conflictError(edited.title));
}

tl::expected<EKSaveResult, EKError> VdirDatabase::saveNew(const EKReminderData& edited, Instant now,
                                                          const ZoneCalendar& local) {
    const auto collection = writableCollection(edited.calendarIdentifier);
    if (!collection)
        return tl::unexpected(collection.error());
    if (auto error = invalidReason(std::nullopt, edited))
        return tl::unexpected(std::move(*error));
    const EKReminderData prepared = preparedForSave(std::nullopt, edited, now);
    const QByteArray uid = newUid();
    Document document = icalendar::makeTodo(uid, prepared, local, now);
    icalendar::addMissingTimeZones(document, firstYearOf(prepared));
    const auto place = createFile(*collection, fileNameFor(uid), document, local);
    if (!place)
        return tl::unexpected(place.error());
    EKSaveResult result{QString::fromUtf8(uid), std::nullopt};
    result.change = changeOf({{result.calendarItemIdentifier, uid, std::nullopt,
                               ItemState{place->collection, place->file, document.text()}}});
    return result;
}

tl::expected<EKSaveResult, VdirDatabase::WriteError> VdirDatabase::trySave(const EKReminderData& base,
                                                                           const EKReminderData& edited,
                                                                           Instant now,
                                                                           const ZoneCalendar& local) {
    const auto refuse = [](EKError error) { return tl::unexpected(WriteError(std::move(error))); };
    auto opened = openItem(base.calendarItemIdentifier, local);
    if (!opened)
        return refuse(opened.error());
    MergedEdits merge = mergeEdits(base, edited, opened->current);
    if (merge.conflict || merge.merged == opened->current) {
        // Nothing to write, but what the file says now is known from here on.
        (void)refresh({.files = {{opened->place.collection, {opened->place.file}}}}, local);
        if (merge.conflict)
            return refuse(conflictError(opened->current.title));
        return EKSaveResult{base.calendarItemIdentifier, std::nullopt};
    }
    if (auto error = reasonNotToChange(opened->place))
        return refuse(std::move(*error));
    const auto target = writableCollection(merge.merged.calendarIdentifier);
    if (!target)
        return refuse(target.error());
    if (auto error = invalidReason(opened->current, merge.merged))
        return refuse(std::move(*error));

    const Revision revision =
        revised(*opened, preparedForSave(opened->current, std::move(merge.merged), now), now, local);
    const auto place = writeRevision(*opened, *target, revision, local);
    if (!place)
        return tl::unexpected(place.error());
    rebuildSnapshot();
    EKSaveResult result{base.calendarItemIdentifier, std::nullopt};
    if (place->collection != opened->place.collection)
        result.calendarItemIdentifier = identifierAt(*place, opened->item.key, 0);
    std::vector<ItemChange> changes{{result.calendarItemIdentifier, opened->item.key, opened->state(),
                                     revision.stateAt(*place, *opened)}};
    if (revision.copy) {
        const QString copy = QString::fromUtf8(revision.copyUid);
        const Entry written = snapshot_->reminders.value(copy);
        changes.push_back({copy, revision.copyUid, std::nullopt,
                           ItemState{written.collection, written.file, revision.copy->text()}});
        result.completedCopyIdentifier = copy;
    }
    result.change = changeOf(std::move(changes));
    return result;
}

VdirDatabase::Revision VdirDatabase::revised(const OpenItem& opened, EKReminderData wanted, Instant now,
                                             const ZoneCalendar& local) {
    Revision result{.document = opened.document};
    Component todo(opened.document.components("VTODO")[static_cast<std::size_t>(opened.item.index)].lines());
    std::optional<CompletedOccurrence> step;
    if (wanted.isCompleted && !opened.current.isCompleted)
        step = completeOccurrence(wanted, opened.item.dates, local);
    if (step && step->copy) {
        icalendar::writeAdvancedTodo(todo, opened.item, *step, opened.document, local, now);
        result.copyUid = newUid();
        result.copy = icalendar::makeCompletedCopy(result.copyUid, opened.document, opened.item, *step->copy,
                                                   local, now);
        wanted = std::move(step->series);
    } else {
        icalendar::writeTodo(todo, opened.item, wanted, opened.document, local, now);
    }
    result.document.replace(opened.item.index, todo);
    icalendar::addMissingTimeZones(result.document, firstYearOf(wanted));
    return result;
}

tl::expected<VdirDatabase::Place, VdirDatabase::WriteError>
VdirDatabase::writeRevision(const OpenItem& opened, const QByteArray& target, const Revision& revision,
                            const ZoneCalendar& local) {
    // The finished occurrence is on the disk before the series moves on, and does not stay if that fails.
    std::optional<Place> copy;
    if (revision.copy) {
        const auto created = createFile(target, fileNameFor(revision.copyUid), *revision.copy, local);
        if (!created)
            return tl::unexpected(WriteError(created.error()));
        copy = *created;
    }
    Place place = opened.place;
    std::optional<WriteError> error;
    if (target == opened.place.collection) {
        error = replaceFile(opened.place, revision.document, opened.stamp, local);
    } else {
        const auto moved =
            createFile(target, opened.isAlone ? opened.place.file : fileNameFor(opened.item.key),
                       aloneIn(revision.document, opened.item), local);
        if (moved) {
            place = *moved;
            error = takeOut(opened, local);
            if (error)
                takeBack(place);
        } else {
            error = moved.error();
        }
    }
    if (error) {
        if (copy)
            takeBack(*copy);
        return tl::unexpected(std::move(*error));
    }
    return place;
}

std::optional<VdirDatabase::WriteError> VdirDatabase::takeOut(const OpenItem& item,
                                                              const ZoneCalendar& local) {
    if (item.isAlone)
        return removeFile(item.place, item.stamp);
    Document rest = item.document;
    icalendar::removeItem(rest, "VTODO", item.item);
    return replaceFile(item.place, rest, item.stamp, local);
}

tl::expected<EKSaveResult, EKError> VdirDatabase::remove(const QString& identifier,
                                                         const ZoneCalendar& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const auto opened = openItem(identifier, local);
        if (!opened)
            return tl::unexpected(opened.error());
        if (auto error = reasonNotToChange(opened->place))
            return tl::unexpected(std::move(*error));
        const auto failed = takeOut(*opened, local);
        if (!failed) {
            rebuildSnapshot();
            return EKSaveResult{identifier, std::nullopt,
                                changeOf({{identifier, opened->item.key, opened->state(), std::nullopt}})};
        }
        if (const auto* error = std::get_if<EKError>(&*failed))
            return tl::unexpected(*error);
    }
    return tl::unexpected(conflictError(identifier));
}

}  // namespace kestrant::vdir
