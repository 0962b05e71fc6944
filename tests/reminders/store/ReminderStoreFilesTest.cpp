#include "eventkit/model/OpenReminders.h"
#include "eventkit/vdir/VdirEventStore.h"
#include "foundation/NotificationCenter.h"
#include "foundation/SerialWorker.h"
#include "preferences/Localization.h"
#include "reminders/flags/EventStoreScriptHost.h"
#include "reminders/flags/FlaggedReminderAutomation.h"
#include "reminders/store/ReminderStore.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <map>

namespace kestrant {
namespace {

using testing::IsEmpty;

/// The reminders of the panel over a folder of files, with flags set by script, as they are in the program.
class ReminderStoreFiles : public testing::Test {
  protected:
    ReminderStoreFiles() {
        write("list/a.ics",
              "SUMMARY:Call the plumber\r\nX-OWN;A=b:kept\r\nDUE;TZID=Europe/Paris:20260328T090000\r\n"
              "BEGIN:VALARM\r\nACTION:AUDIO\r\nTRIGGER;VALUE=DATE-TIME:20260328T080000Z\r\n"
              "END:VALARM\r\n");
        write("list/series.ics", "SUMMARY:Water the plants\r\nDUE;VALUE=DATE:20260327\r\nRRULE:FREQ=DAILY\r\n"
                                 "RDATE;VALUE=DATE:20260328\r\nSTATUS:IN-PROCESS\r\n");
        QDir(folder.path()).mkpath(QStringLiteral("other"));
    }
    void open() {
        store.requestAccess();
        EXPECT_TRUE(scheduler.runUntil([&] { return store.hasLoaded(); }));
        settle();
    }
    void write(const char* name, const QByteArray& lines) {
        const QFileInfo path(folder.filePath(QString::fromUtf8(name)));
        QDir().mkpath(path.path());
        QFile file(path.filePath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:" + path.baseName().toUtf8() +
                   "\r\nCREATED:20260101T000000Z\r\n" + lines + "END:VTODO\r\nEND:VCALENDAR\r\n");
    }
    /// Waits until everything that was begun has ended.
    void settle() {
        bool idle = false;
        store.whenIdle([&] { idle = true; });
        EXPECT_TRUE(scheduler.runUntil([&] { return idle; }));
    }
    /// All files with their lines, but for the marks of a revision.
    [[nodiscard]] std::map<QString, QByteArrayList> files() const {
        std::map<QString, QByteArrayList> result;
        QDirIterator iterator(folder.path(), QDir::Files, QDirIterator::Subdirectories);
        while (iterator.hasNext()) {
            QFile file(iterator.next());
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            for (const QByteArray& line : file.readAll().split('\n')) {
                if (!line.startsWith("DTSTAMP") && !line.startsWith("LAST-MODIFIED") &&
                    !line.startsWith("SEQUENCE"))
                    result[QDir(folder.path()).relativeFilePath(file.fileName())].append(line);
            }
        }
        return result;
    }

    QTemporaryDir folder;
    QTemporaryDir ledgerFolder;
    ManualScheduler scheduler{at("Europe/Paris", {2026, 3, 27}, {12, 0})};
    MovableTimeZone currentZone;
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English, QLocale::UnitedStates); }};
    Localization localization{preferences};
    NotificationCenter notifications;
    CompletionLedgerRepository ledger{ledgerFolder.filePath(QStringLiteral("ledger.json"))};
    VdirEventStore database{folder.path(), scheduler, scheduler, currentZone};
    OpenReminders openReminders{database, scheduler};
    ReminderActionHistory history{scheduler, scheduler};
    EventStoreScriptHost host{database, openReminders, scheduler};
    SerialWorker queue;
    FlaggedReminderAutomation automation{host, queue, scheduler};
    ReminderStore store{{.eventStore = database,
                         .openReminders = openReminders,
                         .scheduler = scheduler,
                         .clock = scheduler,
                         .currentZone = currentZone,
                         .defaults = defaults,
                         .localization = localization,
                         .notifications = notifications,
                         .ledger = ledger,
                         .history = &history,
                         .flags = &automation}};
};

TEST_F(ReminderStoreFiles, EverythingDoneAndUndoneLeavesTheFilesAsTheyWere) {
    open();
    const QString a = QStringLiteral("a");
    const auto before = files();
    using Completion = ReminderStore::Completion;
    const std::vector<std::function<void(const Completion&)>> actions{
        [&](const Completion& done) { store.rename(a, QStringLiteral("Call the gardener"), done); },
        [&](const Completion& done) { store.toggleFlag(a, done); },
        [&](const Completion& done) {
            store.reschedule(a, at("Europe/Paris", {2026, 4, 1}, {10, 0}), true, done);
        },
        [&](const Completion& done) { store.completeNow(QStringLiteral("series"), done); },
        [&](const Completion& done) {
            store.edit(QStringLiteral("series"), *store.editDetails(QStringLiteral("series")),
                       ReminderRepeat::none, done);
        },
        [&](const Completion& done) { store.edit(a, *store.editDetails(a), ReminderRepeat::monthly, done); },
        [&](const Completion& done) { store.move(a, QStringLiteral("other"), done); },
        [&](const Completion& done) {
            store.create({.title = QStringLiteral("New"), .isFlagged = true},
                         [done](const auto&) { done({}); });
        },
        [&](const Completion& done) { store.remove(a, done); },
    };
    std::vector<std::map<QString, QByteArrayList>> states{before};
    for (const auto& action : actions) {
        bool isDone = false;
        action([&](const auto&) { isDone = true; });
        ASSERT_TRUE(scheduler.runUntil([&] { return isDone; }));
        // The flag of the new one follows a little later.
        scheduler.advance(std::chrono::milliseconds(200));
        settle();
        states.push_back(files());
        EXPECT_NE(states.back(), states[states.size() - 2]);
    }
    EXPECT_EQ(store.completionRecords().size(), 1U);
    for (std::size_t n = actions.size(); n-- > 0;) {
        history.undo([&](const auto& result) { EXPECT_TRUE(result.has_value()) << n; });
        settle();
        EXPECT_EQ(files(), states[n]) << "after undoing action " << n;
    }
    EXPECT_THAT(store.completionRecords(), IsEmpty());
    for (std::size_t n = 0; n < actions.size(); ++n) {
        history.redo([&](const auto& result) { EXPECT_TRUE(result.has_value()) << n; });
        settle();
        EXPECT_EQ(files(), states[n + 1]) << "after doing action " << n << " again";
    }
}

TEST_F(ReminderStoreFiles, RemindersOfOneIdentifierInSeveralListsHaveFlagsOfTheirOwn) {
    write("second/a.ics", "SUMMARY:second\r\n");
    write("third/a.ics", "SUMMARY:third\r\n");
    open();
    ASSERT_EQ(store.tasks().size(), 4U);
    const auto find = [&](const char* title) {
        for (const ReminderTask& task : store.tasks()) {
            if (task.title == QLatin1String(title))
                return task;
        }
        return ReminderTask{};
    };
    for (const bool flag : {true, false}) {
        bool isDone = false;
        store.setFlagged(find("third").id, flag, [&](const auto& result) { isDone = result.has_value(); });
        ASSERT_TRUE(scheduler.runUntil([&] { return isDone; }));
        settle();
        EXPECT_EQ(find("third").isFlagged, flag);
        EXPECT_FALSE(find("second").isFlagged || find("Call the plumber").isFlagged);
        EXPECT_EQ(files()[QStringLiteral("third/a.ics")].contains("X-PINNED:true\r"), flag);
        EXPECT_FALSE(files()[QStringLiteral("second/a.ics")].contains("X-PINNED:true\r"));
    }
}

}  // namespace
}  // namespace kestrant
