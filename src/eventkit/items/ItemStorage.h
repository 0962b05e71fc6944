#pragma once

#include "eventkit/icalendar/Document.h"
#include "eventkit/items/StorageContents.h"
#include "foundation/Instant.h"

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace kestrant::items {

/// A file as it is kept at one moment.
struct StoredText {
    Version version{};
    QByteArray text;
};

/// Nothing was written, because the file has changed since it was read.
struct ChangedMeanwhile {};
using WriteError = std::variant<ChangedMeanwhile, EKError>;

/// Notifications from a storage. Thread: any.
struct StorageObserver {
    /// Called after other programs have changed something.
    std::function<void(const Changes& changes)> changed;
    /// It has been waiting for an answer for a while, with a sentence for the
    /// person; without one when it waits no more.
    std::function<void(std::optional<TextPair> reason)> waits;
    /// What was written has not reached the servers of some lists, with a sentence for the person; without
    /// one when they can be reached again.
    std::function<void(std::optional<TextPair> reason)> unsent;
    /// Work of this queue that has begun to write has waited too long for the
    /// list with this title, and goes on waiting.
    std::function<void(const QByteArray& queue, const QString& list)> overdue;
};

/// Keeps something in a storage for as long as it lives; may be null.
using StorageHold = std::shared_ptr<void>;

/// The effect of the second step of a change on the other file.
enum class SecondStep { rewrites, removes };

/// Where the files of items are kept: a folder, a service. Thread: any one at a
/// time; may block.
class ItemStorage {
  public:
    ItemStorage() = default;
    ItemStorage(const ItemStorage&) = delete;
    ItemStorage& operator=(const ItemStorage&) = delete;
    virtual ~ItemStorage() = default;

    /// Makes ready whatever is needed; the error says why it cannot be.
    [[nodiscard]] virtual std::optional<EKError> open() = 0;

    /// The end is near: nothing waits longer than it must any more. Thread: any.
    virtual void prepareToClose() {}
    /// The end of all use.
    virtual void close() {}

    /// Brings the contents up to date. True when anything came out differently.
    [[nodiscard]] virtual bool update(StorageContents& contents, const Changes& changes,
                                      const TimeZone& local) = 0;

    /// Whether there may be items that the contents do not hold, because nobody has wanted them so far; an
    /// update of everything reads those, too.
    [[nodiscard]] virtual bool isPartlyRead() const { return false; }

    /// Whether an update for these changes reads nothing but the files that they name.
    [[nodiscard]] virtual bool readsOnlyFilesNamed(const Changes& /*changes*/) const { return false; }

    /// When to look again, and at what, because changes there are not told or it
    /// could not be read. Absent when all is well.
    struct ScheduledCheck {
        Duration after;
        Changes what;
    };
    [[nodiscard]] virtual std::optional<ScheduledCheck> recheck() const = 0;

    /// Absent when there is no such file.
    [[nodiscard]] virtual tl::expected<std::optional<StoredText>, EKError>
    read(const FileLocation& location) = 0;
    /// Why a file in a collection that may be changed may not be changed.
    [[nodiscard]] virtual std::optional<EKError> writeRefusal(const FileLocation& location) = 0;

    /// Writes a file whose text is `before` in the version `expected`, if it
    /// still is, and gives what is then kept, which may say the same in another
    /// way.
    [[nodiscard]] virtual tl::expected<StoredText, WriteError> replace(const FileLocation& location,
                                                                       const icalendar::Document& before,
                                                                       const icalendar::Document& after,
                                                                       const Version& expected) = 0;
    /// A file that is to be written as by replace().
    struct Replacement {
        FileLocation location;
        icalendar::Document before;
        icalendar::Document after;
        Version expected{};
    };
    /// The same for many files, no two of them in one place, each by itself; the
    /// results are in their order.
    [[nodiscard]] virtual std::vector<tl::expected<std::optional<StoredText>, EKError>>
    readAll(const std::vector<FileLocation>& locations);
    [[nodiscard]] virtual std::vector<tl::expected<StoredText, WriteError>>
    replaceAll(const std::vector<Replacement>& replacements);

    [[nodiscard]] virtual std::optional<WriteError> remove(const FileLocation& location,
                                                           const Version& expected) = 0;

    struct Created {
        FileLocation location;
        /// The UID that the item has now.
        QByteArray uid;
        StoredText stored;
    };
    /// Adds a file. `preferredName` (may be empty) is what it is best called.
    [[nodiscard]] virtual tl::expected<Created, EKError> create(const QByteArray& collection,
                                                                const QByteArray& uid,
                                                                const QByteArray& preferredName,
                                                                const icalendar::Document& document) = 0;

    /// Keeps other processes from changing what is in these collections, so that what is read and what is
    /// written then belong together. Several may be held, of the same collections too. Fails where another
    /// process does not let go of one of them in time.
    [[nodiscard]] virtual tl::expected<StorageHold, EKError>
    lock(const std::vector<QByteArray>& /*collections*/) {
        return StorageHold();
    }
    /// Begins a change in two steps: first files are created, then `changed`, which holds `text`, is
    /// rewritten or removed. Should the process end before the second step, whoever reads next takes the
    /// first one back; so does the end of the result where the second step has failed. Within another such
    /// change it is part of that.
    [[nodiscard]] virtual StorageHold beginTwoSteps(const FileLocation& /*changed*/,
                                                    const QByteArray& /*text*/, SecondStep /*step*/) {
        return {};
    }

    /// Makes a collection (empty identifier), or gives the one with this name,
    /// which may be changed, another title or colour; an absent colour is the
    /// storage's to choose. `calendar` has a title. The result is the
    /// collection's name; the contents are brought up to date afterwards.
    [[nodiscard]] virtual tl::expected<QByteArray, EKError> saveCollection(const StorageContents& contents,
                                                                           const EKCalendar& calendar) = 0;
};

/// A new identifier for an item.
[[nodiscard]] QByteArray newUid();

}  // namespace kestrant::items
