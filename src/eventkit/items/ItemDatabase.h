#pragma once

#include "eventkit/icalendar/Todo.h"
#include "eventkit/items/ItemChange.h"
#include "eventkit/items/ItemSnapshot.h"
#include "eventkit/items/ItemStorage.h"
#include "eventkit/model/EKEventStore.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant::items {

/// A reminder as it was read, null for a new one, and as it was edited.
struct ReminderEdit {
    std::shared_ptr<const EKReminderData> base;
    EKReminderData edited;
};

/// How many files of a collection hold items of each kind, and how many cannot be shown.
struct Holdings {
    int withReminders = 0;
    int withEvents = 0;
    int withProblems = 0;

    void add(const ItemFile& file) { count(file, 1); }
    void remove(const ItemFile& file) { count(file, -1); }

  private:
    void count(const ItemFile& file, int times) {
        withReminders += file.reminders.empty() ? 0 : times;
        withEvents += file.holdsEvents ? times : 0;
        withProblems += file.problem ? times : 0;
    }
};

/// A database of iCalendar texts, read and written at once. Every write begins
/// with a look at what is stored: what was changed there meanwhile is kept, or
/// the write is refused where both sides changed the same. Thread: any one at a
/// time; blocks for the storage.
class ItemDatabase {
  public:
    /// The storage must live as long.
    explicit ItemDatabase(ItemStorage& storage) : storage_(storage) {}

    /// Opens the storage and reads everything.
    [[nodiscard]] std::optional<EKError> open(const TimeZone& local);
    [[nodiscard]] bool isOpen() const { return isOpen_; }

    /// Reads what changed; true when anything came out differently.
    bool refresh(const Changes& changes, const TimeZone& local);
    /// Places the events in another calendar of the person; true when it is
    /// another one.
    bool adopt(const TimeZone& local);

    [[nodiscard]] EKReminders reminders(const EKPredicate& predicate, const TimeZone& local);

    /// The occurrences that match; what is farthest from `now` is left out where there are too many. A file
    /// whose series is too costly is named among the snapshot's problems from then on, until it changes.
    [[nodiscard]] EKEvents events(const EKEventPredicate& predicate, Instant now);

    [[nodiscard]] const std::shared_ptr<const Snapshot>& snapshot() const { return snapshot_; }
    [[nodiscard]] std::optional<ItemStorage::ScheduledCheck> recheck() const { return storage_.recheck(); }

    /// `base` is null for a new reminder; `now` the time of the change.
    [[nodiscard]] tl::expected<EKSaveResult, EKError> save(const std::shared_ptr<const EKReminderData>& base,
                                                           const EKReminderData& edited, Instant now,
                                                           const TimeZone& local);
    /// The same for several reminders, each by itself; the results are in their
    /// order.
    [[nodiscard]] std::vector<tl::expected<EKSaveResult, EKError>>
    saveAll(const std::vector<ReminderEdit>& edits, Instant now, const TimeZone& local);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> remove(const QString& identifier,
                                                             const TimeZone& local);
    /// Takes a change back; `identifier` is what the reminder or event is called now.
    [[nodiscard]] tl::expected<EKSaveResult, EKError>
    revert(const ChangeRecord& change, const QString& identifier, Instant now, const TimeZone& local);
    [[nodiscard]] tl::expected<EKCalendar, EKError> saveCalendar(const EKCalendar& calendar,
                                                                 const TimeZone& local);

    /// The same for one occurrence of an event.
    [[nodiscard]] tl::expected<EKSaveResult, EKError>
    saveEvent(const std::shared_ptr<const EKEventData>& base, EKEventData edited, Instant now,
              const TimeZone& local);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> removeEvent(const EKEventData& base, Instant now,
                                                                  const TimeZone& local);

  private:
    struct OpenFile;
    struct OpenReminder;
    struct OpenEvent;
    struct Revision;
    struct WrittenRevision;
    template <typename Data>
    struct Wanted;
    using Created = ItemStorage::Created;
    /// Where an item is written.
    struct WrittenItem {
        FileLocation location;
        QByteArray key;
        /// All of the file.
        QByteArray text;
    };

    /// Brings the snapshot up to the contents. What that costs depends on the files that changed, as
    /// long as they are few and known.
    void rebuildSnapshot();
    [[nodiscard]] std::shared_ptr<const Snapshot> wholeSnapshot();
    /// The snapshot with nothing but the changed files exchanged; null where that does not do.
    [[nodiscard]] std::shared_ptr<const Snapshot> withChangedFiles();
    /// Remembers what is known of a file that is about to change.
    void noteBefore(const FileLocation& location);
    /// The same for all of the files, if nothing else is going to change; whether that is so.
    [[nodiscard]] bool noteFiles(const Changes& changes);
    [[nodiscard]] bool canBeReadStill(const Changes& changes) const;
    bool placeEvents(const TimeZone& local);
    /// Whether none had to be renamed for the sake of another one.
    static bool addReminders(Snapshot& snapshot, const FileLocation& location, const ItemFile& items);
    bool addEvents(Snapshot& snapshot, const FileLocation& location, const ItemFile& items) const;
    /// The identifier of the first item with this key in a file; empty when there is none.
    template <typename Entries>
    [[nodiscard]] static QString identifierIn(const Entries& entries, const FileLocation& location,
                                              const QByteArray& key) {
        const QString alone = QString::fromUtf8(key);
        for (const QString& identifier : {alone, identifierByLocation(alone, location, 0)}) {
            if (const auto* const entry = entries.find(identifier); entry && locationOf(*entry) == location)
                return identifier;
        }
        return {};
    }

    /// Opens a file; absent when there is none.
    [[nodiscard]] tl::expected<std::optional<OpenFile>, EKError> openFile(const FileLocation& location) const;
    /// The parsed file at a place.
    [[nodiscard]] static tl::expected<std::optional<OpenFile>, EKError>
    opened(const FileLocation& location, tl::expected<std::optional<StoredText>, EKError> stored);
    template <typename Item>
    [[nodiscard]] static std::optional<std::pair<OpenFile, Item>>
    findIn(std::optional<OpenFile> file, const QString& identifier, const TimeZone& local);
    template <typename Item>
    [[nodiscard]] tl::expected<std::pair<OpenFile, Item>, EKError> openWith(const QString& identifier,
                                                                            const TimeZone& local);
    [[nodiscard]] tl::expected<OpenReminder, EKError> openItem(const QString& identifier,
                                                               const TimeZone& local);
    [[nodiscard]] tl::expected<OpenEvent, EKError> openEvent(const EKEventData& base, const TimeZone& local);
    [[nodiscard]] std::optional<EKError> writeRefusal(const FileLocation& location) const;
    [[nodiscard]] tl::expected<QByteArray, EKError> writableCollection(const QString& identifier) const;

    /// Carries a write out that begins with reading, with the collections of these identifiers locked; and
    /// again as often as the file changes between reading and writing it.
    template <typename Result>
    [[nodiscard]] tl::expected<Result, EKError>
    persist(const QString& title, const std::vector<QString>& collections,
            const std::function<tl::expected<Result, WriteError>()>& attempt);
    [[nodiscard]] tl::expected<EKSaveResult, WriteError>
    trySave(const EKReminderData& base, const EKReminderData& edited, Instant now, const TimeZone& local);
    /// The values to save where the item at a place is edited; absent where nothing is.
    template <typename Data>
    [[nodiscard]] tl::expected<std::optional<Wanted<Data>>, EKError>
    wanted(const FileLocation& location, const Data& base, const Data& edited, const Data& current) const;
    /// To be asked once the snapshot shows what was written.
    [[nodiscard]] EKSaveResult saved(const OpenReminder& opened, const WrittenRevision& written) const;
    [[nodiscard]] static Revision revised(const OpenReminder& opened, EKReminderData wanted, Instant now,
                                          const TimeZone& local);
    [[nodiscard]] tl::expected<WrittenRevision, WriteError> writeRevision(const OpenReminder& opened,
                                                                          const QByteArray& target,
                                                                          const Revision& revision,
                                                                          const TimeZone& local);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> saveNew(const EKReminderData& edited, Instant now,
                                                              const TimeZone& local);
    /// The result is the text that is then kept.
    [[nodiscard]] tl::expected<QByteArray, WriteError>
    replaceFile(const OpenFile& file, const icalendar::Document& document, const TimeZone& local);
    [[nodiscard]] std::optional<WriteError> removeFile(const FileLocation& location, const Version& expected);
    /// Takes an item, whose components have this name, out of its file.
    [[nodiscard]] std::optional<WriteError> removeFromFile(const OpenFile& file, QByteArrayView name,
                                                           const icalendar::ItemComponents& item,
                                                           const TimeZone& local);
    /// Creates a file in another collection for what `leave` then takes out of
    /// the file it was in; it does not stay when that fails.
    [[nodiscard]] tl::expected<WrittenItem, WriteError>
    move(const OpenFile& from, SecondStep step, const QByteArray& target, const QByteArray& uid,
         const icalendar::Document& document, const std::function<std::optional<WriteError>()>& leave,
         const TimeZone& local);
    [[nodiscard]] tl::expected<EKSaveResult, WriteError>
    tryEventSave(const EKEventData& base, const EKEventData& edited, Instant now, const TimeZone& local);
    [[nodiscard]] tl::expected<WrittenItem, WriteError> writeOccurrence(const OpenEvent& opened,
                                                                        const EKEventData& after,
                                                                        const QByteArray& target, Instant now,
                                                                        const TimeZone& local);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> saveNewEvent(EKEventData edited, Instant now,
                                                                   const TimeZone& local);
    [[nodiscard]] tl::expected<Created, EKError>
    createFile(const QByteArray& collection, const QByteArray& uid, const QByteArray& preferredName,
               const icalendar::Document& document, const TimeZone& local);
    /// Creates a file for an item and shows it.
    template <typename Item>
    [[nodiscard]] tl::expected<ItemChange, EKError>
    createItem(const QByteArray& collection, const QByteArray& key, const QByteArray& preferredName,
               const icalendar::Document& document, const TimeZone& local);
    /// Writes `document`, in which the item is `inDocument`, in the place of the file that was opened, or
    /// puts the item into another collection.
    template <typename Item>
    [[nodiscard]] tl::expected<WrittenItem, WriteError>
    storeItem(const OpenFile& opened, const Item& item, icalendar::Document document, const Item& inDocument,
              const QByteArray& target, const TimeZone& local);
    void takeBack(const Created& created);
    /// The change that was made in turn.
    template <typename Item>
    [[nodiscard]] tl::expected<ItemChange, EKError>
    revertItem(const ItemChange& change, const QString& identifier, Instant now, const TimeZone& local);
    template <typename Item>
    [[nodiscard]] tl::expected<ItemChange, EKError> bringBack(const ItemChange& change,
                                                              const TimeZone& local);
    template <typename Item>
    [[nodiscard]] tl::expected<ItemChange, WriteError>
    restore(const ItemChange& change, const QString& identifier, const OpenFile& opened, const Item& item,
            Instant now, const TimeZone& local);
    template <typename Item>
    [[nodiscard]] tl::expected<ItemChange, WriteError>
    takeAway(const ItemChange& change, const QString& identifier, const OpenFile& opened, const Item& item,
             const TimeZone& local);
    /// The collection that holds an item once a change of it is taken back; `present` is where it is now.
    /// Fails where others have moved it, or where it may not be written.
    [[nodiscard]] tl::expected<QByteArray, WriteError>
    collectionBefore(const ItemChange& change, const FileLocation& present, const QString& title) const;
    void noteWritten(const FileLocation& location, const StoredText& stored, const TimeZone& local);

    ItemStorage& storage_;
    bool isOpen_ = false;
    std::optional<TimeZone> local_;
    StorageContents contents_;
    std::shared_ptr<const Snapshot> snapshot_ = std::make_shared<const Snapshot>();
    /// The reminders of a snapshot, open and completed ones apart, since most questions are about either.
    struct Parted {
        SharedMap<Entry> of;
        EKReminders open;
        EKReminders completed;
    };
    Parted parted_;
    /// Whether items of the snapshot have identifiers with their place in them.
    bool hasNamesakes_ = false;
    /// Of the snapshot, by collection.
    std::map<QByteArray, Holdings> holdings_;
    /// The files changed since the snapshot was made, as they were then; absent where that is not known.
    std::optional<std::map<FileLocation, ItemFile>> changedFiles_;
};

}  // namespace kestrant::items
