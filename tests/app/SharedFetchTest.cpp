#include "calendar/CalendarStore.h"
#include "completion/CompletionLedgerRepository.h"
#include "foundation/NotificationCenter.h"
#include "foundation/SerialWorker.h"
#include "preferences/Localization.h"
#include "reminders/alerts/DueAlertRinger.h"
#include "reminders/alerts/RecordingNotifier.h"
#include "reminders/flags/EventStoreScriptHost.h"
#include "reminders/flags/FlaggedReminderAutomation.h"
#include "reminders/store/ReminderStore.h"
#include "support/CountingEventStore.h"
#include "support/ManualExecutor.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <chrono>
#include <optional>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

/// Everything of the program that wants the open reminders: the list, its flags, the calendar and the alerts.
class SharedFetchTest : public testing::Test {
  protected:
    SharedFetchTest() {
        database.putCalendar({.calendarIdentifier = QStringLiteral("list"), .allowsEvents = true});
        put("a");
        scheduler.advance(1s);
        store.requestAccess();
        days.requestAccess();
        settle();
        ringer.emplace(DueAlertServices{.eventStore = database,
                                        .openReminders = openReminders,
                                        .reminders = store,
                                        .notifier = notifier,
                                        .scheduler = scheduler,
                                        .clock = scheduler,
                                        .currentZone = currentZone,
                                        .defaults = defaults,
                                        .localization = localization});
        settle();
    }
    /// Flagged, due and with an alarm in a minute, so that everybody shows it.
    void put(const char* id) {
        EKReminderData reminder = aReminder(id).due({2026, 3, 27}, {12, 1}).alarmAt(scheduler.now() + 1min);
        reminder.isFlagged = true;
        database.putReminder(reminder);
    }
    /// Lets everything that was begun, and what is to begin within a second, come to its end.
    void settle() {
        scheduler.advance(1s);
        ASSERT_TRUE(scheduler.runUntil([this] { return !store.isFlagLoading(); }));
        scheduler.advance(1s);
    }

    QTemporaryDir folder;
    ManualScheduler scheduler{at("Europe/Paris", {2026, 3, 27}, {12, 0})};
    MovableTimeZone currentZone;
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English, QLocale::UnitedStates); }};
    Localization localization{preferences};
    NotificationCenter notifications;
    CompletionLedgerRepository ledger{folder.filePath(QStringLiteral("ledger.json"))};
    CountingEventStore database{scheduler, scheduler, currentZone};
    OpenReminders openReminders{database, scheduler};
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
                         .flags = &automation}};
    ManualExecutor executor;
    CalendarStore days{{.eventStore = database,
                        .openReminders = openReminders,
                        .scheduler = scheduler,
                        .clock = scheduler,
                        .currentZone = currentZone,
                        .preferences = preferences,
                        .notifications = notifications,
                        .executor = executor,
                        .locale = [] { return QLocale(QLocale::English, QLocale::UnitedStates); },
                        .clearReminderDueDate = {}}};
    RecordingNotifier notifier{scheduler};
    std::optional<DueAlertRinger> ringer;
};

TEST_F(SharedFetchTest, TheStartAndEachChangeCostOneFetchOfTheOpenReminders) {
    EXPECT_EQ(database.openFetches, 1);
    EXPECT_EQ(store.filterCounts().flagged, 1);
    EXPECT_EQ(days.upcomingEvents().size(), 1);

    database.openFetches = 0;
    put("b");
    settle();
    EXPECT_EQ(database.openFetches, 1) << "a change by another program";
    EXPECT_EQ(store.filterCounts().flagged, 2);
    EXPECT_EQ(days.upcomingEvents().size(), 2);

    database.openFetches = 0;
    scheduler.advance(1min);
    EXPECT_EQ(notifier.onShow.size(), 2U);
    EXPECT_EQ(database.openFetches, 0) << "nothing has changed when an alert falls due";

    store.rename(QStringLiteral("a"), QStringLiteral("Other"), {});
    settle();
    EXPECT_EQ(database.openFetches, 1) << "a change from here";
    store.toggleFlag(QStringLiteral("a"), {});
    ASSERT_TRUE(scheduler.runUntil([this] { return store.pendingFlagIDs().isEmpty(); }));
    settle();
    EXPECT_EQ(database.openFetches, 2) << "the reminder to flag is found among those that are known";
    store.setSelectedListID(QStringLiteral("list"));
    days.reload();
    settle();
    EXPECT_EQ(database.openFetches, 2) << "nothing has changed";
}

}  // namespace
}  // namespace kestrant
