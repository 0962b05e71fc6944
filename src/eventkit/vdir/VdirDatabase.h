#pragma once

#include "eventkit/EKEventStore.h"
#include "eventkit/EventSeries.h"
#include "eventkit/IntervalIndex.h"
#include "eventkit/icalendar/Todo.h"
#include "eventkit/vdir/ReminderChange.h"
#include "eventkit/vdir/VdirLibrary.h"

#include <QHash>

#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace kestrant::vdir {

/// Where an item is.
struct ItemEntry {
    QByteArray version;
    QByteArray collection;
    QByteArray file;
    QByteArray key;
    int ordinal = 0;
};

struct Entry : ItemEntry {
    std::shared_ptr<const EKReminderData> data;
};

struct EventEntry : ItemEntry {
    std::shared_ptr<const EventSeries> series;
};

/// The whole database at one moment. Never changes, so any thread may read it.
struct Snapshot {
    /// In their stable order.
    std::vector<EKCalendar> calendars;
    /// By calendarItemIdentifier: the UID; where several files claim one, all but the first (by folder and
    /// file name) get an identifier with their place in it, and so does an item without UID.
    QHash<QString, Entry> reminders;
    QHash<QString, EventEntry> events;
    std::vector<TextPair> problems;

    /// One occurrence, with the version of its file.
    struct ShownEvent {
        std::shared_ptr<const EKEventData> data;
        QByteArray version;
    };
    /// The occurrences that match, each of a series by itself.
    [[nodiscard]] std::vector<ShownEvent> eventsMatching(const EKEventPredicate& predicate) const;
    /// The occurrence of an event with this occurrenceDate.
    [[nodiscard]] std::optional<ShownEvent> event(const QString& identifier,
                                                  const std::optional<Instant>& occurrenceDate) const;
    /// The first occurrence of an event.
    [[nodiscard]] std::optional<ShownEvent> firstEvent(const QString& identifier) const;

    struct RuledEvent {
        std::shared_ptr<const EventSeries> series;
        QByteArray version;
    };
    IntervalIndex<ShownEvent> singleEvents;
    IntervalIndex<RuledEvent> ruledEvents;
};

/// A folder of iCalendar files, read and written at once. Every write is atomic and durable, and begins with
/// a look at the file: what was changed there meanwhile is kept, or the write is refused where both sides
/// changed the same. Thread: any one at a time; blocks for the disk.
class VdirDatabase {
  public:
    /// `aboutToRead` is told the names of the collections before their files are read.
    VdirDatabase(QByteArray root, std::function<void(const std::vector<QByteArray>&)> aboutToRead);

    /// Creates the folder where it is missing and reads everything.
    [[nodiscard]] std::optional<EKError> open(const ZoneCalendar& local);
    [[nodiscard]] bool isOpen() const { return isOpen_; }

    /// Reads what changed; true when anything came out differently.
    bool refresh(const Changes& changes, const ZoneCalendar& local);
    /// Places the events in another calendar of the person; true when it is another one.
    bool adopt(const ZoneCalendar& local);

    [[nodiscard]] const std::shared_ptr<const Snapshot>& snapshot() const { return snapshot_; }

    /// `base` is null for a new reminder; `now` the time of the change.
    [[nodiscard]] tl::expected<EKSaveResult, EKError> save(const std::shared_ptr<const EKReminderData>& base,
                                                           const EKReminderData& edited, Instant now,
                                                           const ZoneCalendar& local);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> remove(const QString& identifier,
                                                             const ZoneCalendar& local);
    /// Takes a change back; `identifier` is what the reminder is called now.
    [[nodiscard]] tl::expected<EKSaveResult, EKError>
    revert(const ReminderChange& change, const QString& identifier, Instant now, const ZoneCalendar& local);
    [[nodiscard]] tl::expected<EKCalendar, EKError> saveCalendar(const EKCalendar& calendar,
                                                                 const ZoneCalendar& local);

    /// The same for one occurrence of an event.
    [[nodiscard]] tl::expected<EKSaveResult, EKError>
    saveEvent(const std::shared_ptr<const EKEventData>& base, EKEventData edited, Instant now,
              const ZoneCalendar& local);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> removeEvent(const EKEventData& base, Instant now,
                                                                  const ZoneCalendar& local);

  private:
    struct OpenFile;
    struct OpenItem;
    struct OpenEvent;
    struct Revision;
    struct Place {
        QByteArray collection;
        QByteArray file;
    };

    void rebuildSnapshot();
    bool placeEvents(const ZoneCalendar& local);
    static void addReminders(Snapshot& snapshot, const Place& place, const ItemFile& items);
    void addEvents(Snapshot& snapshot, const Place& place, const ItemFile& items) const;
    [[nodiscard]] QByteArray pathOf(const Place& place) const;
    template <typename Entries>
    [[nodiscard]] static QString identifierIn(const Entries& entries, const Place& place,
                                              const QByteArray& key) {
        for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry) {
            if (entry->file == place.file && entry->collection == place.collection && entry->key == key &&
                entry->ordinal == 0)
                return entry.key();
        }
        return {};
    }

    /// Opens an item's file; absent when there is none.
    [[nodiscard]] tl::expected<std::optional<OpenFile>, EKError> openFileOf(const ItemEntry& entry) const;
    template <typename Item, typename Entries>
    [[nodiscard]] tl::expected<std::pair<OpenFile, Item>, EKError>
    openWith(Entries Snapshot::*entries,
             std::vector<Item> (*read)(const icalendar::Document&, const ZoneCalendar&),
             const QString& identifier, const ZoneCalendar& local);
    [[nodiscard]] tl::expected<OpenItem, EKError> openItem(const QString& identifier,
                                                           const ZoneCalendar& local);
    [[nodiscard]] tl::expected<OpenEvent, EKError> openEvent(const EKEventData& base,
                                                             const ZoneCalendar& local);
    [[nodiscard]] std::optional<EKError> reasonNotToChange(const Place& place) const;
    [[nodiscard]] tl::expected<QByteArray, EKError> writableCollection(const QString& identifier) const;

    /// Nothing was written because the file is not what it was when it was read.
    struct ChangedMeanwhile {};
    using WriteError = std::variant<ChangedMeanwhile, EKError>;
    /// Carries a write out, and again as often as the file changes between reading and writing it.
    [[nodiscard]] tl::expected<EKSaveResult, EKError>
    persist(const QString& title, const std::function<tl::expected<EKSaveResult, WriteError>()>& attempt);
    [[nodiscard]] tl::expected<EKSaveResult, WriteError>
    trySave(const EKReminderData& base, const EKReminderData& edited, Instant now, const ZoneCalendar& local);
    [[nodiscard]] static Revision revised(const OpenItem& opened, EKReminderData wanted, Instant now,
                                          const ZoneCalendar& local);
    [[nodiscard]] tl::expected<Place, WriteError> writeRevision(const OpenItem& opened,
                                                                const QByteArray& target,
                                                                const Revision& revision,
                                                                const ZoneCalendar& local);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> saveNew(const EKReminderData& edited, Instant now,
                                                              const ZoneCalendar& local);
    [[nodiscard]] std::optional<WriteError> replaceFile(const Place& place,
                                                        const icalendar::Document& document,
                                                        const FileStamp& expected, const ZoneCalendar& local);
    [[nodiscard]] std::optional<WriteError> removeFile(const Place& place, const FileStamp& expected);
    /// Takes an item, whose components have this name, out of its file.
    [[nodiscard]] std::optional<WriteError> takeOut(const OpenFile& file, QByteArrayView name,
                                                    const icalendar::ItemComponents& item,
                                                    const ZoneCalendar& local);
    /// Creates a file in another collection for what `leave` then takes out of the one it was in; it does not
    /// stay when that fails.
    [[nodiscard]] tl::expected<Place, WriteError>
    move(const QByteArray& target, const QByteArray& preferredName, const icalendar::Document& document,
         const std::function<std::optional<WriteError>()>& leave, const ZoneCalendar& local);
    [[nodiscard]] tl::expected<EKSaveResult, WriteError>
    tryEventSave(const EKEventData& base, const EKEventData& edited, Instant now, const ZoneCalendar& local);
    struct WrittenItem {
        Place place;
        QByteArray key;
    };
    [[nodiscard]] tl::expected<WrittenItem, WriteError> writeOccurrence(const OpenEvent& opened,
                                                                        const EKEventData& after,
                                                                        const QByteArray& target, Instant now,
                                                                        const ZoneCalendar& local);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> saveNewEvent(EKEventData edited, Instant now,
                                                                   const ZoneCalendar& local);
    [[nodiscard]] tl::expected<Place, EKError> createFile(const QByteArray& collection,
                                                          const QByteArray& preferredName,
                                                          const icalendar::Document& document,
                                                          const ZoneCalendar& local);
    void takeBack(const Place& place);
    /// What was done in turn.
    [[nodiscard]] tl::expected<ItemChange, EKError>
    revertItem(const ItemChange& change, const QString& identifier, Instant now, const ZoneCalendar& local);
    [[nodiscard]] tl::expected<ItemChange, WriteError> restore(const ItemChange& change, OpenItem& opened,
                                                               Instant now, const ZoneCalendar& local);
    [[nodiscard]] tl::expected<ItemChange, WriteError> takeAway(const ItemChange& change, OpenItem& opened,
                                                                const ZoneCalendar& local);
    [[nodiscard]] tl::expected<ItemChange, EKError> bringBack(const ItemChange& change,
                                                              const ZoneCalendar& local);
    void noteWritten(const Place& place, const QByteArray& text, const ZoneCalendar& local);

    QByteArray root_;
    std::function<void(const std::vector<QByteArray>&)> aboutToRead_;
    bool isOpen_ = false;
    std::optional<ZoneCalendar> local_;
    Library library_;
    std::shared_ptr<const Snapshot> snapshot_ = std::make_shared<const Snapshot>();
};

}  // namespace kestrant::vdir
