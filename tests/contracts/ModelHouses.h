#pragma once

#include "EventStoreHouses.h"
#include "eventkit/items/ItemDatabase.h"
#include "eventkit/items/ItemEventStore.h"
#include "eventkit/vdir/VdirStorage.h"
#include "foundation/CurrentTimeZone.h"

#include <QDirIterator>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {

/// A folder of files in which others can come between reading a file and writing it.
class InterruptedStore final : public items::ItemEventStore {
  public:
    InterruptedStore(const QString& root, Scheduler& scheduler, const Clock& clock,
                     const CurrentTimeZone& currentZone)
        : ItemEventStore(
              scheduler, clock, currentZone,
              [&](items::StorageObserver observer) {
                  return std::make_unique<Storage>(*this, QFile::encodeName(root),
                                                   std::move(observer.changed));
              },
              std::make_unique<items::SingleQueue>()) {}

    /// Runs once, after the next file was read. To be set while nothing is under way.
    std::function<void()> interruption;

  private:
    struct Storage final : vdir::VdirStorage {
        Storage(InterruptedStore& owner, QByteArray root, std::function<void(const items::Changes&)> observer)
            : VdirStorage(std::move(root), std::move(observer))
            , store(owner) {}

        tl::expected<std::optional<items::StoredText>, EKError>
        read(const items::FileLocation& place) override {
            auto result = VdirStorage::read(place);
            if (const auto interrupt = std::exchange(store.interruption, nullptr))
                interrupt();
            return result;
        }

        InterruptedStore& store;
    };
};
using InterruptedHouse = FolderHouse<InterruptedStore>;

#if defined KESTRANT_ON_CALDAV
using ModelHouses = ::testing::Types<CalDavHouse>;
#elif defined KESTRANT_WITH_EVOLUTION
using ModelHouses = ::testing::Types<MemoryHouse, InterruptedHouse, EvolutionHouse>;
#else
using ModelHouses = ::testing::Types<MemoryHouse, InterruptedHouse>;
#endif

/// Everything that a second reader of the data finds.
struct FreshRead {
    std::vector<EKReminderData> reminders;
    std::vector<EKEventData> events;
    /// The values of a property that this program does not know, by the reminder's identifier.
    std::map<QString, QString> unknown;
};

/// What other programs do to the data of a house. Nothing waits until the store has noticed it.
class OtherProgram {
  public:
    using Edit = std::function<void(EKReminderData&)>;

    OtherProgram() = default;
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;
    virtual ~OtherProgram() = default;

    /// Adds a reminder; returns its identifier.
    virtual QString add(const EKReminderData& data) = 0;
    virtual void change(const QString& identifier, const Edit& edit) = 0;
    virtual void remove(const QString& identifier) = 0;
    /// Writes the text again as it is, or with this priority and this value of an unknown property unless it
    /// is 0. False where there is no text.
    virtual bool rewrite(const QString&, unsigned) { return false; }
    /// Puts the second reminder into the file of the first; false where that cannot be.
    virtual bool join(const QString&, const QString&) { return false; }
    /// Saves an occurrence as `edit` leaves it, or removes it where that returns false; false where there is
    /// none.
    virtual bool changeEvent(const std::function<bool(const EKEventData&)>& isIt,
                             const std::function<bool(EKEventData&)>& edit) = 0;
    /// Does something once the database has read the next file and before it writes; without a function no
    /// more.
    virtual void interruptWith(std::function<void()>) {}
    /// From now on what comes back or is moved gets another identifier, as some services do it.
    virtual void renewIdentifiers() {}
    /// Absent where nobody else can read.
    virtual std::optional<FreshRead> read() = 0;
};

template <typename House>
struct Others;

template <>
struct Others<MemoryHouse> : OtherProgram {
    /// Runs, and steps of each, where nothing else is asked for.
    static constexpr unsigned runs = 100;
    static constexpr std::size_t steps = 40;
    static constexpr bool readsFast = true;

    explicit Others(MemoryHouse& used) : house(used) {}

    MemoryHouse& house;

    QString add(const EKReminderData& data) override { return house.store.putReminder(data); }
    void change(const QString& identifier, const Edit& edit) override {
        EKReminderData data = *house.store.reminder(identifier);
        edit(data);
        house.store.putReminder(data);
    }
    void remove(const QString& identifier) override { house.store.dropReminder(identifier); }
    bool changeEvent(const std::function<bool(const EKEventData&)>&,
                     const std::function<bool(EKEventData&)>&) override {
        return false;
    }
    void renewIdentifiers() override { house.store.setKeepsIdentifiers(false); }
    std::optional<FreshRead> read() override { return std::nullopt; }
};

/// Another program with a database of its own over the same data, opened anew each time.
template <typename House>
struct OtherDatabase : OtherProgram {
    explicit OtherDatabase(House& used) : house(used) {}

    House& house;

    virtual void with(const std::function<void(items::ItemDatabase&)>& use) = 0;

    QString add(const EKReminderData& data) override {
        QString result;
        with([&](items::ItemDatabase& database) {
            const auto saved = database.save(nullptr, data, now(), local());
            EXPECT_TRUE(saved.has_value());
            result = saved ? saved->calendarItemIdentifier : QString();
        });
        return result;
    }
    void change(const QString& identifier, const Edit& edit) override {
        with([&](items::ItemDatabase& database) {
            const auto base = database.snapshot()->reminders.value(identifier).data;
            ASSERT_TRUE(base) << qPrintable(identifier);
            EKReminderData edited = *base;
            edit(edited);
            EXPECT_TRUE(database.save(base, edited, now(), local()).has_value());
        });
    }
    void remove(const QString& identifier) override {
        with([&](items::ItemDatabase& database) {
            EXPECT_TRUE(database.remove(identifier, local()).has_value());
        });
    }
    bool changeEvent(const std::function<bool(const EKEventData&)>& isIt,
                     const std::function<bool(EKEventData&)>& edit) override {
        bool isFound = false;
        with([&](items::ItemDatabase& database) {
            const auto found = eventsIn(database);
            const auto event =
                std::find_if(found.begin(), found.end(), [&](const auto& each) { return isIt(*each); });
            isFound = event != found.end();
            if (!isFound)
                return;
            EKEventData edited = **event;
            if (edit(edited))
                EXPECT_TRUE(database.saveEvent(*event, edited, now(), local()).has_value());
            else
                EXPECT_TRUE(database.removeEvent(**event, now(), local()).has_value());
        });
        return isFound;
    }
    std::optional<FreshRead> read() override {
        FreshRead result;
        with([&](items::ItemDatabase& database) {
            for (const auto& entry : database.snapshot()->reminders)
                result.reminders.push_back(*entry.data);
            for (const auto& event : eventsIn(database))
                result.events.push_back(*event);
        });
        return result;
    }

  private:
    [[nodiscard]] Instant now() const { return house.scheduler.now(); }
    [[nodiscard]] TimeZone local() const { return house.currentZone.zone(); }
    [[nodiscard]] std::vector<std::shared_ptr<const EKEventData>> eventsIn(items::ItemDatabase& database) {
        return database
            .events(EKEventStore::predicateForEvents(at("Europe/Paris", {2026, 3, 1}),
                                                     at("Europe/Paris", {2026, 5, 1}), {}),
                    now())
            .events;
    }
};

template <>
struct Others<InterruptedHouse> : OtherDatabase<InterruptedHouse> {
    static constexpr unsigned runs = 6;
    static constexpr std::size_t steps = 40;
    static constexpr bool readsFast = true;

    using OtherDatabase::OtherDatabase;

    void with(const std::function<void(items::ItemDatabase&)>& use) override {
        vdir::VdirDatabase database(QFile::encodeName(root()));
        EXPECT_FALSE(database.open(house.currentZone.zone()));
        use(database);
    }
    /// Moves of reminders with a file of their own are renamed files, as a file manager makes them.
    void change(const QString& identifier, const Edit& edit) override {
        EKReminderData moved;
        bool isMoved = false;
        OtherDatabase::change(identifier, [&](EKReminderData& data) {
            const QString list = data.calendarIdentifier;
            edit(data);
            isMoved = list != data.calendarIdentifier && itemCount(pathOf(identifier)) == 1;
            if (!isMoved)
                return;
            moved = data;
            data.calendarIdentifier = list;
        });
        if (!isMoved)
            return;
        const QString path = pathOf(identifier);
        const QString list = root() + "/" + moved.calendarIdentifier + "/";
        // A file that others' items were taken out of may have the name of one of them.
        const QString name = QFileInfo(path).fileName();
        EXPECT_TRUE(QFile::rename(path, list + (QFile::exists(list + name) ? "moved " + name : name)));
    }
    void remove(const QString& identifier) override {
        if (const QString path = pathOf(identifier); itemCount(path) == 1)
            EXPECT_TRUE(QFile::remove(path));
        else
            OtherDatabase::remove(identifier);
    }
    /// In its place, or beside it and renamed.
    bool rewrite(const QString& identifier, unsigned priority) override {
        const QString path = pathOf(identifier);
        QByteArray text = textOf(path);
        if (priority) {
            const qsizetype uid = text.indexOf("UID:" + identifier.toUtf8() + "\r\n");
            const qsizetype begin = text.lastIndexOf("BEGIN:VTODO\r\n", uid);
            const qsizetype end = text.indexOf("END:VTODO\r\n", uid);
            QList<QByteArray> lines = text.mid(begin, end - begin).split('\n');
            lines.removeIf([](const QByteArray& line) {
                return line.startsWith("PRIORITY:") || line.startsWith(unknownProperty);
            });
            const QByteArray value = QByteArray::number(priority) + '\r';
            lines.insert(1, "PRIORITY:" + value);
            lines.insert(2, unknownProperty + value);
            text.replace(begin, end - begin, lines.join('\n'));
        }
        write(path, text, priority % 2);
        return true;
    }
    bool join(const QString& identifier, const QString& other) override {
        const QString path = pathOf(identifier);
        const QString from = pathOf(other);
        if (path == from || QFileInfo(path).path() != QFileInfo(from).path())
            return false;
        QByteArray text = textOf(path);
        const QByteArray added = textOf(from);
        const bool hasZone = text.contains("BEGIN:VTIMEZONE") || !added.contains("BEGIN:VTIMEZONE");
        const qsizetype begin = added.indexOf(hasZone ? "BEGIN:VTODO\r\n" : "BEGIN:V", 10);
        const QByteArray end = "END:VCALENDAR";
        text.insert(text.lastIndexOf(end), added.mid(begin, added.lastIndexOf(end) - begin));
        write(path, text, false);
        EXPECT_TRUE(QFile::remove(from));
        return true;
    }
    void interruptWith(std::function<void()> act) override { house.store.interruption = std::move(act); }
    std::optional<FreshRead> read() override {
        FreshRead result = *OtherDatabase::read();
        for (const EKReminderData& reminder : result.reminders) {
            const QByteArray text = textOf(pathOf(reminder.calendarItemIdentifier));
            const qsizetype uid = text.indexOf("UID:" + reminder.calendarItemIdentifier.toUtf8() + "\r\n");
            const qsizetype begin = text.lastIndexOf("BEGIN:VTODO\r\n", uid);
            const QByteArray todo = text.mid(begin, text.indexOf("END:VTODO\r\n", uid) - begin);
            if (const qsizetype found = todo.indexOf(unknownProperty); found >= 0)
                result.unknown[reminder.calendarItemIdentifier] =
                    QString::fromLatin1(todo.mid(found + unknownProperty.size(), 1));
        }
        return result;
    }

  private:
    inline static const QByteArray unknownProperty = "X-OTHERS:";

    [[nodiscard]] static QByteArray textOf(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
        return file.readAll();
    }
    [[nodiscard]] static qsizetype itemCount(const QString& path) {
        return textOf(path).count("BEGIN:VTODO");
    }
    static void write(const QString& path, const QByteArray& text, bool inPlace) {
        QFile target(inPlace ? path : path + ".tmp");
        EXPECT_TRUE(target.open(QIODevice::WriteOnly));
        target.write(text);
        target.close();
        if (!inPlace) {
            EXPECT_EQ(::rename(QFile::encodeName(target.fileName()).constData(),
                               QFile::encodeName(path).constData()),
                      0);
        }
    }
    [[nodiscard]] QString root() const { return house.folder.path() + "/calendars"; }
    [[nodiscard]] QString pathOf(const QString& identifier) const {
        for (QDirIterator files(root(), {"*.ics"}, QDir::Files, QDirIterator::Subdirectories);
             files.hasNext();) {
            QFile file(files.next());
            if (file.open(QIODevice::ReadOnly) &&
                file.readAll().contains("UID:" + identifier.toUtf8() + "\r\n"))
                return file.fileName();
        }
        return {};
    }
};

#ifdef KESTRANT_WITH_EVOLUTION
template <>
struct Others<EvolutionHouse> : OtherDatabase<EvolutionHouse> {
    static constexpr unsigned runs = 3;
    static constexpr std::size_t steps = 40;
    static constexpr bool readsFast = false;

    using OtherDatabase::OtherDatabase;

    void with(const std::function<void(items::ItemDatabase&)>& use) override {
        EvolutionHouse::Other other(house.currentZone.zone());
        use(other.database);
    }
};
#endif

}  // namespace kestrant
