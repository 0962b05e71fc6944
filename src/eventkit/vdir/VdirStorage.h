#pragma once

#include "eventkit/items/ItemStorage.h"
#include "eventkit/vdir/FolderWatcher.h"

#include <functional>
#include <memory>
#include <vector>

namespace kestrant::vdir {

/// A folder of iCalendar files. Every write is atomic and durable.
class VdirStorage : public items::ItemStorage {
  public:
    explicit VdirStorage(QByteArray root) : root_(std::move(root)) {}
    /// Watches the folder too; `observer` is called on a thread of its own.
    VdirStorage(QByteArray root, std::function<void(const items::Changes&)> observer);

    /// Creates the folder where it is missing.
    [[nodiscard]] std::optional<EKError> open() override;
    [[nodiscard]] bool update(items::Library& library, const items::Changes& changes,
                              const ZoneCalendar& local) override;
    [[nodiscard]] std::optional<Recheck> recheck() const override;
    [[nodiscard]] tl::expected<std::optional<items::StoredText>, EKError>
    read(const items::Place& place) override;
    [[nodiscard]] std::optional<EKError> reasonNotToChange(const items::Place& place) override;
    [[nodiscard]] tl::expected<items::StoredText, items::WriteError>
    replace(const items::Place& place, const icalendar::Document& before, const icalendar::Document& after,
            const items::Version& expected) override;
    [[nodiscard]] std::optional<items::WriteError> remove(const items::Place& place,
                                                          const items::Version& expected) override;
    [[nodiscard]] tl::expected<Created, EKError> create(const QByteArray& collection, const QByteArray& uid,
                                                        const QByteArray& preferredName,
                                                        const icalendar::Document& document) override;
    [[nodiscard]] tl::expected<QByteArray, EKError> saveCollection(const items::Library& library,
                                                                   const EKCalendar& calendar) override;

  private:
    [[nodiscard]] QByteArray pathOf(const items::Place& place) const;
    [[nodiscard]] tl::expected<QByteArray, EKError> makeCollection(const QString& title) const;
    [[nodiscard]] items::StoredText storedAt(const items::Place& place, QByteArray text) const;

    QByteArray root_;
    std::unique_ptr<FolderWatcher> watcher_;
    bool isWatched_ = true;
};

}  // namespace kestrant::vdir
