#include "eventkit/memory/MemoryStorage.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace kestrant::items {

StoredText* MemoryStorage::find(const FileLocation& location) {
    const auto folder = folders_.find(location.collection);
    if (folder == folders_.end())
        return nullptr;
    const auto file = folder->second.files.find(location.file);
    return file == folder->second.files.end() ? nullptr : &file->second;
}

bool MemoryStorage::readsOnlyFilesNamed(const Changes& changes) const {
    return !changes.everything && !changes.collections &&
           std::all_of(changes.files.begin(), changes.files.end(), [](const auto& named) {
               return !named.second.empty() && !named.second.contains(QByteArray());
           });
}

bool MemoryStorage::update(StorageContents& contents, const Changes& changes, const TimeZone& local) {
    contents.defaultForEvents = defaultForEvents_;
    const bool areKnown = std::all_of(changes.files.begin(), changes.files.end(), [&](const auto& named) {
        return contents.collections.contains(named.first);
    });
    if (areKnown && readsOnlyFilesNamed(changes)) {
        for (const auto& [name, files] : changes.files) {
            auto& known = contents.collections.at(name).files;
            const ItemReader reader(name, local);
            for (const QByteArray& file : files) {
                const StoredText* stored = find({name, file});
                if (!stored) {
                    known.erase(file);
                    continue;
                }
                known[file] = reader.read(stored->text, file);
                known[file].version = stored->version;
            }
        }
        return true;
    }
    auto former = std::exchange(contents.collections, {});
    for (const auto& [name, folder] : folders_) {
        Collection& collection = contents.collections[name];
        collection = folder.properties;
        auto& known = former[name].files;
        const ItemReader reader(name, local);
        for (const auto& [file, stored] : folder.files) {
            ItemFile& items = known[file];
            if (items.version != stored.version) {
                items = reader.read(stored.text, file);
                items.version = stored.version;
            }
            collection.files.emplace(file, std::move(items));
        }
    }
    return true;
}

tl::expected<std::optional<StoredText>, EKError> MemoryStorage::read(const FileLocation& location) {
    const StoredText* stored = find(location);
    return stored ? std::optional(*stored) : std::nullopt;
}

tl::expected<StoredText, WriteError> MemoryStorage::replace(const FileLocation& location,
                                                            const icalendar::Document&,
                                                            const icalendar::Document& after,
                                                            const Version& expected) {
    StoredText* present = find(location);
    if (!present || present->version != expected)
        return tl::unexpected(ChangedMeanwhile());
    *present = stored(after.text());
    return *present;
}

std::optional<WriteError> MemoryStorage::remove(const FileLocation& location, const Version& expected) {
    const StoredText* present = find(location);
    if (!present || present->version != expected)
        return ChangedMeanwhile();
    drop(location);
    return std::nullopt;
}

tl::expected<ItemStorage::Created, EKError> MemoryStorage::create(const QByteArray& collection,
                                                                  const QByteArray& uid,
                                                                  const QByteArray& preferredName,
                                                                  const icalendar::Document& document) {
    const QByteArray kept = keepsUids_ ? uid : newUid();
    FileLocation location{collection, preferredName.isEmpty() || !keepsUids_ ? kept + ".ics" : preferredName};
    while (find(location))
        location.file.prepend('_');
    QByteArray text = document.text();
    text.replace("UID:" + uid, "UID:" + kept);
    put(location, text);
    return Created{location, kept, *find(location)};
}

tl::expected<QByteArray, EKError> MemoryStorage::saveCollection(const StorageContents& contents,
                                                                const EKCalendar& calendar) {
    EKCalendar wanted = calendar;
    if (!wanted.color)
        wanted.color = unusedColor(contents);
    return putCollection(wanted);
}

QByteArray MemoryStorage::putCollection(const EKCalendar& calendar) {
    QByteArray name = QFile::encodeName(calendar.calendarIdentifier);
    if (name.isEmpty())
        name = "list-" + QByteArray::number(++lastCollection_);
    Collection& properties = folders_[name].properties;
    if (!properties.order)
        properties.order = static_cast<int>(folders_.size());
    properties.title = calendar.title;
    properties.color = calendar.color;
    properties.isWritable = calendar.allowsContentModifications;
    properties.isAnswering = calendar.isAnswering;
    properties.holdsOnly.reset();
    if (calendar.allowsReminders != calendar.allowsEvents)
        properties.holdsOnly = calendar.allowsReminders ? EKEntityType::reminder : EKEntityType::event;
    return name;
}

void MemoryStorage::put(const FileLocation& location, const QByteArray& text) {
    folders_[location.collection].files[location.file] = stored(text);
}

void MemoryStorage::drop(const FileLocation& location) {
    if (const auto folder = folders_.find(location.collection); folder != folders_.end())
        folder->second.files.erase(location.file);
}

}  // namespace kestrant::items
