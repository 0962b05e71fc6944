#include "eventkit/items/OpenItem.h"
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
ItemDatabase::openFile(const Place& place) const {
    return opened(place, storage_.read(place));
}

tl::expected<std::optional<ItemDatabase::OpenFile>, EKError>
ItemDatabase::opened(const Place& place, tl::expected<std::optional<StoredText>, EKError> stored) {
    if (!stored)
        return tl::unexpected(std::move(stored.error()));
    if (!*stored)
        return std::nullopt;
    auto document = Document::parse((*stored)->text);
    if (!document)
        return tl::unexpected(
            storageError(QFile::decodeName(place.collection + '/' + place.file), document.error()));
    return OpenFile{place, (*stored)->version, std::move(*document)};
}

tl::expected<QByteArray, EKError> ItemDatabase::writableCollection(const QString& identifier) const {
    const QByteArray name = QFile::encodeName(identifier);
    const auto found = library_.collections.find(name);
    if (found == library_.collections.end())
        return tl::unexpected(calendarNotFoundError());
    if (!found->second.isWritable)
        return tl::unexpected(found->second.problem ? EKError{EKError::Code::storage, *found->second.problem}
                                                    : readOnlyError(found->second.title));
    return name;
}

std::optional<EKError> ItemDatabase::writeRefusal(const Place& place) const {
    if (auto collection = writableCollection(QFile::decodeName(place.collection)); !collection)
        return collection.error();
    return storage_.writeRefusal(place);
}

void ItemDatabase::noteWritten(const Place& place, const StoredText& stored, const TimeZone& local) {
    placeEvents(local);
    const auto collection = library_.collections.find(place.collection);
    // The item may have been removed meanwhile.
    if (collection == library_.collections.end())
        return;
    ItemFile items = ItemReader(place.collection, local).read(stored.text, place.file);
    items.version = stored.version;
    noteBefore(place);
    collection->second.files.insert_or_assign(place.file, std::move(items));
}

tl::expected<QByteArray, WriteError> ItemDatabase::replaceFile(const OpenFile& file, const Document& document,
                                                               const TimeZone& local) {
    auto stored = storage_.replace(file.place, file.document, document, file.version);
    if (!stored)
        return tl::unexpected(std::move(stored.error()));
    noteWritten(file.place, *stored, local);
    return std::move(stored->text);
}

std::optional<WriteError> ItemDatabase::removeFile(const Place& place, const Version& expected) {
    if (auto error = storage_.remove(place, expected))
        return error;
    noteBefore(place);
    if (const auto collection = library_.collections.find(place.collection);
        collection != library_.collections.end())
        collection->second.files.erase(place.file);
    return std::nullopt;
}

tl::expected<ItemDatabase::Created, EKError>
ItemDatabase::createFile(const QByteArray& collection, const QByteArray& uid, const QByteArray& preferredName,
                         const Document& document, const TimeZone& local) {
    auto created = storage_.create(collection, uid, preferredName, document);
    if (created)
        noteWritten(created->place, created->stored, local);
    return created;
}

void ItemDatabase::takeBack(const Created& created) {
    (void)removeFile(created.place, created.stored.version);
}

std::optional<WriteError> ItemDatabase::removeFromFile(const OpenFile& file, QByteArrayView name,
                                                       const icalendar::ItemComponents& item,
                                                       const TimeZone& local) {
    if (file.isAlone)
        return removeFile(file.place, file.version);
    Document rest = file.document;
    icalendar::removeItem(rest, name, item);
    return failureOf(replaceFile(file, rest, local));
}

tl::expected<ItemDatabase::WrittenItem, WriteError>
ItemDatabase::move(const OpenFile& from, SecondStep step, const QByteArray& target, const QByteArray& uid,
                   const Document& document, const std::function<std::optional<WriteError>()>& leave,
                   const TimeZone& local) {
    const StorageHold steps = storage_.beginTwoSteps(from.place, from.document.text(), step);
    auto created = createFile(target, uid, step == SecondStep::removes ? from.place.file : QByteArray(),
                              document, local);
    if (!created)
        return tl::unexpected(WriteError(std::move(created.error())));
    if (auto error = leave()) {
        takeBack(*created);
        return tl::unexpected(std::move(*error));
    }
    return WrittenItem{std::move(created->place), std::move(created->uid), std::move(created->stored.text)};
}

}  // namespace kestrant::items
