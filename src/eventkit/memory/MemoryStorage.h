#pragma once

#include "eventkit/items/ItemStorage.h"

#include <functional>
#include <map>
#include <optional>

namespace kestrant::items {

/// Files of items in memory. Only its owner changes anything besides the database, and then tells the
/// database what to read again. Thread: any one at a time; never blocks.
class MemoryStorage final : public ItemStorage {
  public:
    [[nodiscard]] std::optional<EKError> open() override { return std::nullopt; }
    [[nodiscard]] bool update(StorageContents& contents, const Changes& changes,
                              const TimeZone& local) override;
    [[nodiscard]] bool readsOnlyFilesNamed(const Changes& changes) const override;
    [[nodiscard]] std::optional<ScheduledCheck> recheck() const override { return std::nullopt; }
    [[nodiscard]] tl::expected<std::optional<StoredText>, EKError>
    read(const FileLocation& location) override;
    [[nodiscard]] std::optional<EKError> writeRefusal(const FileLocation&) override { return std::nullopt; }
    [[nodiscard]] tl::expected<StoredText, WriteError> replace(const FileLocation& location,
                                                               const icalendar::Document& before,
                                                               const icalendar::Document& after,
                                                               const Version& expected) override;
    [[nodiscard]] std::optional<WriteError> remove(const FileLocation& location,
                                                   const Version& expected) override;
    [[nodiscard]] tl::expected<Created, EKError> create(const QByteArray& collection, const QByteArray& uid,
                                                        const QByteArray& preferredName,
                                                        const icalendar::Document& document) override;
    [[nodiscard]] tl::expected<QByteArray, EKError> saveCollection(const StorageContents& contents,
                                                                   const EKCalendar& calendar) override;

    /// Adds or replaces a collection; an empty identifier is filled in. Collections keep the order in which
    /// they were added. The result is its name.
    QByteArray putCollection(const EKCalendar& calendar);
    /// Removes a collection with its files.
    void dropCollection(const QByteArray& collection) { folders_.erase(collection); }
    /// Chooses the collection for new events.
    void setDefaultForEvents(const QByteArray& collection) { defaultForEvents_ = collection; }
    /// Whether what is created keeps its UID; some services give one of their own.
    void setKeepsUids(bool keeps) { keepsUids_ = keeps; }
    /// Adds or replaces a file; the collection comes into being with it.
    void put(const FileLocation& location, const QByteArray& text);
    void drop(const FileLocation& location);

  private:
    struct Folder {
        /// Without its files.
        Collection properties;
        std::map<QByteArray, StoredText> files;
    };

    [[nodiscard]] StoredText* find(const FileLocation& location);
    [[nodiscard]] StoredText stored(const QByteArray& text) { return {{++lastVersion_}, text}; }

    std::map<QByteArray, Folder> folders_;
    QByteArray defaultForEvents_;
    bool keepsUids_ = true;
    quint64 lastVersion_ = 0;
    int lastCollection_ = 0;
};

}  // namespace kestrant::items
