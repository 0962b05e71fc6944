#include "reminders/alerts/DueAlertRinger.h"

#include "RecordingNotifier.h"
#include "reminders/store/ReminderStoreFixture.h"

namespace kestrant {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Operation = InMemoryEventStore::Operation;

const QString a = QStringLiteral("a");
/// Ten minutes after the start.
const Instant soon = at("Europe/Paris", {2026, 3, 27}, {12, 10});

class DueAlertRingerTest : public ReminderStoreTest {
  protected:
    void start() {
        if (!store)
            loadedStore();
        ringer.emplace(DueAlertServices{.eventStore = database,
                                        .openReminders = *openReminders,
                                        .reminders = *store,
                                        .notifier = notifier,
                                        .scheduler = scheduler,
                                        .clock = scheduler,
                                        .currentZone = currentZone,
                                        .defaults = defaults,
                                        .localization = localization});
        QObject::connect(&*ringer, &DueAlertRinger::openRequested, &*ringer,
                         [this](const QString& id) { opened.push_back(id.toStdString()); });
        QObject::connect(&*ringer, &DueAlertRinger::rang, &*ringer,
                         [this](const QString& id) { told.push_back(id.toStdString()); });
        scheduler.runPosted();
    }
    /// A program that starts, sees a reminder and rings it.
    void ringA() {
        put(aReminder("a").due({2026, 3, 27}, {12, 10}).alarmAt(soon));
        start();
        scheduler.advance(soon - scheduler.now());
        ASSERT_TRUE(notifier.onShow.contains(a));
    }
    void answer(AlertAnswer given) {
        notifier.answer(a, given);
        scheduler.advance(1s);
    }

    RecordingNotifier notifier{scheduler};
    std::optional<DueAlertRinger> ringer;
    std::vector<std::string> opened;
    std::vector<std::string> told;
};

TEST_F(DueAlertRingerTest, RingsAtTheInstantAndOffersWhatCanBeDone) {
    put(aReminder("a").due({2026, 3, 27}, {12, 10}).alarmAt(soon).alarmAt(soon + 24h));
    start();
    scheduler.advance(soon - scheduler.now() - 1us);
    EXPECT_THAT(notifier.rung, IsEmpty());
    scheduler.advance(1us);
    const UserNotification& shown = notifier.onShow.at(a);
    EXPECT_EQ(shown.title, a);
    EXPECT_EQ(shown.body, QStringLiteral("Today 12:10\u00a0PM · list"));
    using Action = UserNotification::Action;
    EXPECT_THAT(
        shown.actions,
        ElementsAre(Action{AlertAnswer::complete, QStringLiteral("Complete")},
                    Action{AlertAnswer::snoozeTenMinutes, QStringLiteral("Snooze 10 minutes")},
                    Action{AlertAnswer::snoozeOneHour, QStringLiteral("Snooze 1 hour")},
                    Action{AlertAnswer::snoozeUntilTomorrow, QStringLiteral("Snooze until tomorrow")}));
    preferences.setLanguage(Language::french);
    scheduler.advance(24h);
    EXPECT_EQ(notifier.onShow.at(a).body, QStringLiteral("Hier 12:10 · list"));
    EXPECT_EQ(notifier.onShow.at(a).actions.back().label, QStringLiteral("Rappeler demain"));
    EXPECT_EQ(notifier.rung.size(), 2U);
}

TEST_F(DueAlertRingerTest, NothingRingsTwiceWhateverHappens) {
    ringA();
    store->rename(a, QStringLiteral("renamed"), nullptr);
    scheduler.advance(1s);
    ringer->systemDidWake();
    scheduler.jumpWall(-1h);
    ringer->systemDidWake();
    scheduler.advance(2h);
    ringer.reset();
    EXPECT_THAT(notifier.onShow, IsEmpty()) << "its actions would lead nowhere";
    start();
    scheduler.advance(25h);
    EXPECT_THAT(notifier.rung, ElementsAre("a"));
}

TEST_F(DueAlertRingerTest, WhatFellDueMeanwhileRingsOnceOnReturn) {
    put(aReminder("old").alarmAt(now() - 1h));
    start();
    EXPECT_THAT(notifier.rung, IsEmpty()) << "before the first start of all";
    put(aReminder("a").alarmAt(soon).alarmAt(soon + 1h));
    put(aReminder("b").alarmAt(soon + 5min));
    scheduler.advance(1s);
    scheduler.jumpWall(2h);
    ringer->systemDidWake();
    scheduler.runPosted();
    EXPECT_THAT(notifier.rung, ElementsAre("b", "a"));
    ringer.reset();
    put(aReminder("c").alarmAt(scheduler.now() + 1h));
    put(aReminder("d").alarmAt(scheduler.now() + 1h).completedAt(scheduler.now()));
    scheduler.jumpWall(2h);
    start();
    EXPECT_THAT(notifier.rung, ElementsAre("b", "a", "c"));
    put(aReminder("synchronised late").alarmAt(scheduler.now() - 1h));
    put(aReminder("ancient").alarmAt(scheduler.now() - 24h * 31));
    scheduler.advance(1s);
    EXPECT_THAT(notifier.rung, ElementsAre("b", "a", "c", "synchronised late"));
}

TEST_F(DueAlertRingerTest, WhatSomebodyElseHasDealtWithIsTakenAway) {
    struct Case {
        const char* what;
        std::function<void(EKReminderData&)> elsewhere;
        bool staysOnShow;
    };
    const Case cases[] = {
        {"completed", [](EKReminderData& data) { data.isCompleted = true; }, false},
        {"acknowledged", [](EKReminderData& data) { data.alarms[0].acknowledgedDate = soon; }, false},
        {"another date", [](EKReminderData& data) { data.alarms[0].absoluteDate = soon + 24h; }, false},
        {"another title", [](EKReminderData& data) { data.title = QStringLiteral("x"); }, true},
    };
    for (const Case& each : cases) {
        notifier.onShow.clear();
        ringer.reset();
        defaults.remove(QStringLiteral("reminderAlerts.rung"));
        scheduler.jumpWall(now() - scheduler.now());
        ringA();
        EKReminderData data = stored("a");
        each.elsewhere(data);
        put(data);
        scheduler.advance(1s);
        EXPECT_EQ(notifier.onShow.contains(a), each.staysOnShow) << each.what;
    }
    database.dropReminder(a);
    scheduler.advance(1s);
    EXPECT_THAT(notifier.onShow, IsEmpty());
}

TEST_F(DueAlertRingerTest, SnoozingIsWrittenAndRingsAgain) {
    ringA();
    answer(AlertAnswer::snoozeTenMinutes);
    const EKReminderData snoozed = stored("a");
    ASSERT_EQ(snoozed.alarms.size(), 2U);
    EXPECT_EQ(snoozed.alarms[0].acknowledgedDate, soon);
    EXPECT_EQ(snoozed.alarms[1].absoluteDate, soon + 10min);
    EXPECT_EQ(snoozed.alarms[1].snoozedAlarm, snoozed.alarms[0].identifier);
    EXPECT_EQ(store->task(a)->dueAlertSchedule, ReminderAlertSchedule(RelativeToDueTime{0}));
    scheduler.advance(10min);
    EXPECT_THAT(notifier.rung, ElementsAre("a", "a"));
    answer(AlertAnswer::snoozeUntilTomorrow);
    EXPECT_EQ(stored("a").alarms[1].absoluteDate, paris({2026, 3, 28}, {9, 0}));
    scheduler.advance(24h);
    EXPECT_EQ(notifier.rung.size(), 3U);
}

TEST_F(DueAlertRingerTest, AnswersReachTheReminder) {
    ringA();
    answer(AlertAnswer::dismiss);
    EXPECT_EQ(stored("a").alarms[0].acknowledgedDate, soon);
    scheduler.advance(1h);
    put(aReminder("a").alarmAt(scheduler.now()));
    scheduler.advance(1s);
    answer(AlertAnswer::open);
    EXPECT_THAT(opened, ElementsAre("a"));
    EXPECT_TRUE(stored("a").alarms[0].acknowledgedDate.has_value());
    put(aReminder("a").alarmAt(scheduler.now()));
    scheduler.advance(1s);
    answer(AlertAnswer::complete);
    EXPECT_TRUE(stored("a").isCompleted);
    EXPECT_EQ(reported, 1);
    EXPECT_THAT(recorded(), ElementsAre("Complete reminder"));
    answer(AlertAnswer::snoozeOneHour);
    EXPECT_TRUE(stored("a").isCompleted) << "too late";
}

TEST_F(DueAlertRingerTest, AnAnswerThatCannotBeCarriedOutComesBackWithTheReason) {
    ringA();
    for (const AlertAnswer given : {AlertAnswer::snoozeOneHour, AlertAnswer::complete}) {
        database.setFailure(Operation::save, diskFull());
        answer(given);
        EXPECT_EQ(notifier.onShow.at(a).body, QStringLiteral("The disk is full."));
        EXPECT_EQ(notifier.onShow.at(a).actions.size(), 4U);
    }
    database.setFailure(Operation::save, std::nullopt);
    answer(AlertAnswer::snoozeOneHour);
    EXPECT_EQ(stored("a").alarms.size(), 2U);
    EXPECT_THAT(notifier.onShow, IsEmpty());
}

TEST_F(DueAlertRingerTest, AServiceThatIsAbsentLosesNothingAndOneThatDiesDoesNotRingAgain) {
    notifier.isPresent = false;
    put(aReminder("a").alarmAt(soon));
    put(aReminder("b").alarmAt(soon + 90s));
    start();
    scheduler.advance(10min + 5s);
    EXPECT_THAT(notifier.rung, IsEmpty());
    EXPECT_THAT(told, ElementsAre("a")) << "once, however often it is tried";
    notifier.isPresent = true;
    scheduler.advance(1min);
    EXPECT_THAT(notifier.rung, ElementsAre("a")) << "within the minute";
    notifier.die();
    notifier.isPresent = true;
    scheduler.advance(1h);
    EXPECT_THAT(notifier.rung, ElementsAre("a", "b"));
}

TEST_F(DueAlertRingerTest, AnotherZoneMovesWhatIsBoundToADayThere) {
    EKReminderData reminder = aReminder("a").due({2026, 3, 27}, {21, 30});
    reminder.alarms.push_back({.relativeOffset = -1h});
    put(reminder);
    start();
    scheduler.advance(1h);
    EXPECT_THAT(notifier.rung, IsEmpty());
    currentZone.moveTo("Asia/Tokyo");
    scheduler.runPosted();
    EXPECT_THAT(notifier.rung, ElementsAre("a")) << "it is nine in the evening there";
}

}  // namespace
}  // namespace kestrant
