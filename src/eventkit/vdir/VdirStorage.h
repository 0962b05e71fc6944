#pragma once

#include "eventkit/items/ItemStorage.h"
#include "eventkit/items/Journal.h"
#include "eventkit/vdir/FolderWatcher.h"
#include "foundation/FileLock.h"

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace kestrant::vdir {

/// A folder of iCalendar files. Every write is atomic and durable. Processes of this program lock the folder
/// of a list while they change something in it; what a program that does not lock puts in the place of a file
/// while it is being written is noticed, and stays.
class VdirStorage : public items::ItemStorage {
  public:
    explicit VdirStorage(QByteArray root) : root_(std::move(root)) {}
    /// Watches the folder too; `observer` is called on a thread of its own.
    VdirStorage(QByteArray root, std::function<void(const items::Changes&)> observer);

    void prepareToClose() override { isEnding_ = true; }

    /// Creates the folder where it is missing.
    [[nodiscard]] std::optional<EKError> open() override;
    [[nodiscard]] bool update(items::StorageContents& contents, const items::Changes& changes,
                              const TimeZone& local) override;
    [[nodiscard]] bool readsOnlyFilesNamed(const items::Changes& changes) const override;
    [[nodiscard]] std::optional<ScheduledCheck> recheck() const override;
    [[nodiscard]] tl::expected<std::optional<items::StoredText>, EKError>
    read(const items::FileLocation& location) override;
    [[nodiscard]] std::optional<EKError> writeRefusal(const items::FileLocation& location) override;
    [[nodiscard]] tl::expected<items::StoredText, items::WriteError>
    replace(const items::FileLocation& location, const icalendar::Document& before,
            const icalendar::Document& after, const items::Version& expected) override;
    [[nodiscard]] std::optional<items::WriteError> remove(const items::FileLocation& location,
                                                          const items::Version& expected) override;
    [[nodiscard]] tl::expected<Created, EKError> create(const QByteArray& collection, const QByteArray& uid,
                                                        const QByteArray& preferredName,
                                                        const icalendar::Document& document) override;
    [[nodiscard]] tl::expected<items::StorageHold, EKError>
    lock(const std::vector<QByteArray>& collections) override;
    [[nodiscard]] items::StorageHold beginTwoSteps(const items::FileLocation& changed, const QByteArray& text,
                                                   items::SecondStep step) override;
    [[nodiscard]] tl::expected<QByteArray, EKError> saveCollection(const items::StorageContents& contents,
                                                                   const EKCalendar& calendar) override;

  private:
    class TwoSteps;

    [[nodiscard]] QByteArray pathOf(const items::FileLocation& location) const;
    [[nodiscard]] items::StoredText storedAt(const items::FileLocation& location, QByteArray text) const;
    [[nodiscard]] tl::expected<QByteArray, EKError> makeCollection(const QString& title,
                                                                   const Color& color) const;
    /// The name for a new file, which none has now.
    [[nodiscard]] QByteArray freeName(const QByteArray& collection, const QByteArray& wanted) const;

    using Locks = std::vector<std::shared_ptr<FileLock>>;
    [[nodiscard]] tl::expected<std::shared_ptr<Locks>, FileError>
    lockFolders(const std::vector<QByteArray>& collections, FileLock::Waiting waiting);
    /// Takes back what was begun by processes that are gone. True when nothing is left to be done.
    [[nodiscard]] bool settle(const std::vector<QByteArray>& journals);
    [[nodiscard]] bool settle(const QByteArray& journalName);

    QByteArray root_;
    std::atomic<bool> isEnding_ = false;
    /// The locks that are held, by the folder's device and number.
    std::map<std::pair<dev_t, ino_t>, std::weak_ptr<FileLock>> locks_;
    std::weak_ptr<TwoSteps> twoSteps_;
    std::unique_ptr<FolderWatcher> watcher_;
    bool wasRead_ = false;
    FolderWatcher::Coverage coverage_ = FolderWatcher::Coverage::complete;
    /// Files and folders to check again without a notification.
    items::Changes unread_;
};

}  // namespace kestrant::vdir
