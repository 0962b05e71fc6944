#pragma once

#include "eventkit/items/CompactEvent.h"
#include "eventkit/model/EKTypes.h"
#include "foundation/TimeZone.h"

#include <QByteArray>

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace kestrant::items {

/// Tells one state of a file from another.
using Version = std::array<quint64, 3>;

/// The known content of one file: an iCalendar text that is kept and changed as a
/// whole. The text itself is not here.
struct ItemFile {
    Version version{};
    /// Each with the identifier it has if it is the only one of its UID, and with that of its list.
    std::vector<std::shared_ptr<const EKReminderData>> reminders;
    std::vector<CompactEvent> events;
    /// Also such as cannot be shown.
    bool holdsEvents = false;
    /// Why it cannot be shown; null where it can.
    std::shared_ptr<const TextPair> problem;
    /// Why it is not shown in full; null where it is, as far as that was asked for.
    std::shared_ptr<const TextPair> warning;
};

/// One collection of files: a list, a calendar, or both.
struct Collection {
    QString title;
    std::optional<Color> color;
    std::optional<int> order;
    bool isWritable = false;
    bool isAnswering = true;
    /// What it can hold; absent where what it does hold tells what it is.
    std::optional<EKEntityType> holdsOnly;
    std::optional<TextPair> problem;
    std::map<QByteArray, ItemFile> files;
};

/// What a storage holds, as it was read last. Names are the storage's own.
struct StorageContents {
    std::map<QByteArray, Collection> collections;
    /// The collections for what is new; where there is none, the first one that
    /// can be changed.
    QByteArray defaultForReminders;
    QByteArray defaultForEvents;
    std::optional<TextPair> problem;
    /// A further message for the person.
    std::optional<TextPair> notice;
};

/// The files and folders that may have changed. Files named here are read again even if they look the
/// same; an empty name stands for the collection's folder itself.
struct Changes {
    bool everything = false;
    /// Which collections there are, or what one of them is called and may be used for.
    bool collections = false;
    std::map<QByteArray, std::set<QByteArray>> files;

    void add(const Changes& other);
};

/// Where a file is.
struct FileLocation {
    QByteArray collection;
    QByteArray file;
    bool operator==(const FileLocation&) const = default;
    bool operator<(const FileLocation& other) const {
        return std::tie(collection, file) < std::tie(other.collection, other.file);
    }
};

/// Reads the files of one collection. What they have in common is kept once. Thread: any one at a time.
class ItemReader {
  public:
    ItemReader(const QByteArray& collection, const TimeZone& local);

    /// The items of a file with this text.
    [[nodiscard]] ItemFile read(const QByteArray& text, const QByteArray& file) const;

  private:
    QString calendar_;
    TimeZone local_;
};

/// A colour for a new collection: one that none of the others has, as long as there are any.
[[nodiscard]] Color unusedColor(const StorageContents& contents);

/// Whether two states of a file show the same.
[[nodiscard]] bool sameContent(const ItemFile& a, const ItemFile& b);

/// The sentence about something that is left alone; `name` is what people know
/// it by.
[[nodiscard]] TextPair unreadable(const QString& name, const TextPair& reason);
/// The sentence about a file whose series has more occurrences than can be shown.
[[nodiscard]] TextPair tooCostly(const QString& name);

}  // namespace kestrant::items
