#include "reminders/alerts/DueAlerts.h"

#include "eventkit/icalendar/ReminderSeries.h"
#include "reminders/model/ReminderAlerts.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr auto paris = "Europe/Paris";
const TimeZone zone(*TimeZone::named(paris));
const Instant ten = at(paris, {2026, 3, 27}, {10, 0});

TEST(DueAlerts, TheLatestAlarmThatIsDueRingsAndTheNextOneIsAwaited) {
    EKReminderData reminder =
        aReminder("r").alarmAt(ten).alarmAt(ten - 1h).alarmAt(ten + 1h).alarmAt(ten + 2h);
    EXPECT_EQ(dueAlert(reminder, ten - 2h, ten, zone), ten);
    EXPECT_EQ(dueAlert(reminder, ten - 2h, ten - 1s, zone), ten - 1h);
    EXPECT_EQ(dueAlert(reminder, ten, ten + 30min, zone), std::nullopt) << "it has rung";
    EXPECT_EQ(nextAlert(reminder, ten, zone), ten + 1h);
    EXPECT_EQ(nextAlert(reminder, ten + 2h, zone), std::nullopt);
    reminder.alarms[0].acknowledgedDate = ten;
    reminder.alarms[2].acknowledgedDate = ten;
    EXPECT_EQ(dueAlert(reminder, ten - 2h, ten, zone), ten - 1h) << "the last one was dealt with";
    EXPECT_EQ(nextAlert(reminder, ten, zone), ten + 1h) << "dealt with an earlier date of a series";
}

class DealingWithAlerts : public testing::Test {
  protected:
    void snooze(Instant now, Instant until) { snoozeAlert(reminder, until, now, "NEW", zone); }
    EKReminderData reminder = aReminder("r").due({2026, 3, 27}, {10, 0}).alarmAt(ten).alarmAt(ten + 1h);
};

TEST_F(DealingWithAlerts, AcknowledgesWhatHasRung) {
    acknowledgeAlerts(reminder, ten + 5min, zone);
    EXPECT_EQ(reminder.alarms[0].acknowledgedDate, ten + 5min);
    EXPECT_EQ(reminder.alarms[1].acknowledgedDate, std::nullopt);
    const auto once = reminder;
    acknowledgeAlerts(reminder, ten + 10min, zone);
    EXPECT_EQ(reminder, once);
}

TEST_F(DealingWithAlerts, SnoozesByAnAlarmThatRefersToTheOneThatRang) {
    snooze(ten, ten + 10min);
    ASSERT_EQ(reminder.alarms.size(), 3U);
    EXPECT_EQ(reminder.alarms[0].acknowledgedDate, ten);
    EXPECT_EQ(reminder.alarms[0].identifier, "NEW");
    EXPECT_EQ(reminder.alarms[2].absoluteDate, ten + 10min);
    EXPECT_EQ(reminder.alarms[2].snoozedAlarm, "NEW");
    EXPECT_EQ(dueAlert(reminder, ten - 1h, ten + 9min, zone), std::nullopt);
    EXPECT_EQ(alertSchedule(reminder, zone), ReminderAlertSchedule(RelativeToDueTime{0}))
        << "the schedule is the person's own";

    snooze(ten + 10min, ten + 20min);
    ASSERT_EQ(reminder.alarms.size(), 3U) << "another repetition takes the place of the first";
    EXPECT_EQ(reminder.alarms[2].absoluteDate, ten + 20min);
    EXPECT_EQ(reminder.alarms[2].snoozedAlarm, "NEW");
    acknowledgeAlerts(reminder, ten + 20min, zone);
    EXPECT_EQ(reminder.alarms.size(), 2U);
}

TEST_F(DealingWithAlerts, SnoozesTheLatestInWhateverOrderTheyStand) {
    for (const std::size_t latest : {1U, 0U}) {
        EKReminderData snoozed = reminder;
        snoozeAlert(snoozed, ten + 3h, ten + 2h, "NEW", zone);
        EXPECT_EQ(snoozed.alarms[latest].identifier, "NEW");
        std::swap(reminder.alarms[0], reminder.alarms[1]);
    }
}

TEST_F(DealingWithAlerts, ThereIsNothingToSnoozeBeforeItRings) {
    const auto before = reminder;
    snooze(ten - 1s, ten + 10min);
    EXPECT_EQ(reminder, before);
}

TEST_F(DealingWithAlerts, AnotherDateLeavesNoSnoozeBehind) {
    const ReminderDueAlert atDue{reminder.dueDateComponents, RelativeToDueTime{0}};
    snooze(ten, ten + 10min);
    EKReminderData moved = reminder;
    replaceAlarm(moved, atDue, {DateComponents::fromDateTime({2026, 3, 28}, {10, 0}), RelativeToDueTime{0}},
                 zone);
    EKAlarm acknowledged = reminder.alarms[0];
    acknowledged.absoluteDate = at(paris, {2026, 3, 28}, {10, 0});
    EXPECT_THAT(moved.alarms, ElementsAre(acknowledged, EKAlarm::at(ten + 1h)));

    reminder.recurrenceRules = {EKRecurrenceRule::parse(QStringLiteral("FREQ=DAILY"))};
    reminder.isCompleted = true;
    const EKReminderData next = completeOccurrence(reminder, {}, ten, zone).series;
    EXPECT_EQ(next.alarms.size(), 2U);
    EXPECT_EQ(nextAlert(next, ten + 2h, zone), ten + 24h);
}

TEST(DueAlerts, SnoozingLastsAsItsNameSays) {
    EXPECT_EQ(snoozedUntil(AlertAnswer::snoozeTenMinutes, ten, zone), ten + 10min);
    EXPECT_EQ(snoozedUntil(AlertAnswer::snoozeOneHour, ten, zone), ten + 1h);
    EXPECT_EQ(snoozedUntil(AlertAnswer::snoozeUntilTomorrow, at(paris, {2026, 3, 28}, {23, 59}), zone),
              at("UTC", {2026, 3, 29}, {7, 0}))
        << "the clocks change in that night";
    EXPECT_EQ(snoozedUntil(AlertAnswer::dismiss, ten, zone), std::nullopt);
}

}  // namespace
}  // namespace kestrant
