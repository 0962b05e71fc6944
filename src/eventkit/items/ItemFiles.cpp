#include "eventkit/items/OpenFile.h"
#include "eventkit/model/EKErrors.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace kestrant::items {

using icalendar::Document;

EKSaveResult resultOf(EKEntityType type, std::vector<ItemChange> items) {
    const QString identifier = items.front().identifier;
    return {identifier, std::nullopt, std::make_shared<const ChangeRecord>(type, std::move(items))};
}

int firstZoneYear(int year) {
    return std::max(1970, year - 1);
}

tl::expected<std::optional<ItemDatabase::OpenFile>, EKError>
ItemDatabase::openFile(const FileLocation& location) const {
    return opened(location, storage_.read(location));
}

tl::expected<std::optional<ItemDatabase::OpenFile>, EKError>
ItemDatabase::opened(const FileLocation& location, tl::expected<std::optional<StoredText>, EKError> stored) {
    if (!stored)
        return tl::unexpected(std::move(stored.error()));
    if (!*stored)
        return std::nullopt;
    auto document = Document::parse((*stored)->text);
    if (!document)
        return tl::unexpected(
            storageError(QFile::decodeName(location.collection + '/' + location.file), document.error()));
    return OpenFile{location, (*stored)->version, std::move(*document)};
}

tl::expected<QByteArray, EKError> ItemDatabase::writableCollection(const QString& identifier) const {
    const QByteArray name = QFile::encodeName(identifier);
    const auto found = contents_.collections.find(name);
    if (found == contents_.collections.end())
        return tl::unexpected(calendarNotFoundError());
    if (!found->second.isWritable)
        return tl::unexpected(found->second.problem ? EKError{EKError::Code::storage, *found->second.problem}
                                                    : readOnlyError(found->second.title));
    return name;
}

std::optional<EKError> ItemDatabase::writeRefusal(const FileLocation& location) const {
    if (auto collection = writableCollection(QFile::decodeName(location.collection)); !collection)
        return collection.error();
    return storage_.writeRefusal(location);
}

void ItemDatabase::noteWritten(const FileLocation& location, const StoredText& stored,
                               const TimeZone& local) {
    placeEvents(local);
    const auto collection = contents_.collections.find(location.collection);
    // The item may have been removed meanwhile.
    if (collection == contents_.collections.end())
        return;
    ItemFile items = ItemReader(location.collection, local).read(stored.text, location.file);
    items.version = stored.version;
    noteBefore(location);
    collection->second.files.insert_or_assign(location.file, std::move(items));
}

tl::expected<QByteArray, WriteError> ItemDatabase::replaceFile(const OpenFile& file, const Document& document,
                                                               const TimeZone& local) {
    auto stored = storage_.replace(file.location, file.document, document, file.version);
    if (!stored)
        return tl::unexpected(std::move(stored.error()));
    noteWritten(file.location, *stored, local);
    return std::move(stored->text);
}

std::optional<WriteError> ItemDatabase::removeFile(const FileLocation& location, const Version& expected) {
    if (auto error = storage_.remove(location, expected))
        return error;
    noteBefore(location);
    if (const auto collection = contents_.collections.find(location.collection);
        collection != contents_.collections.end())
        collection->second.files.erase(location.file);
    return std::nullopt;
}

tl::expected<ItemDatabase::Created, EKError>
ItemDatabase::createFile(const QByteArray& collection, const QByteArray& uid, const QByteArray& preferredName,
                         const Document& document, const TimeZone& local) {
    auto created = storage_.create(collection, uid, preferredName, document);
    if (created)
        noteWritten(created->location, created->stored, local);
    return created;
}

void ItemDatabase::takeBack(const Created& created) {
    (void)removeFile(created.location, created.stored.version);
}

std::optional<WriteError> ItemDatabase::removeFromFile(const OpenFile& file, QByteArrayView name,
                                                       const icalendar::ItemComponents& item,
                                                       const TimeZone& local) {
    if (file.isAlone)
        return removeFile(file.location, file.version);
    Document rest = file.document;
    icalendar::removeItem(rest, name, item);
    return failureOf(replaceFile(file, rest, local));
}

tl::expected<ItemDatabase::WrittenItem, WriteError>
ItemDatabase::move(const OpenFile& from, SecondStep step, const QByteArray& target, const QByteArray& uid,
                   const Document& document, const std::function<std::optional<WriteError>()>& leave,
                   const TimeZone& local) {
    const StorageHold steps = storage_.beginTwoSteps(from.location, from.document.text(), step);
    auto created = createFile(target, uid, step == SecondStep::removes ? from.location.file : QByteArray(),
                              document, local);
    if (!created)
        return tl::unexpected(WriteError(std::move(created.error())));
    if (auto error = leave()) {
        takeBack(*created);
        return tl::unexpected(std::move(*error));
    }
    return WrittenItem{std::move(created->location), std::move(created->uid),
                       std::move(created->stored.text)};
}

}  // namespace kestrant::items
