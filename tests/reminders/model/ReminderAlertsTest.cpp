#include "reminders/model/ReminderAlerts.h"

#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <chrono>
#include <limits>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr auto paris = "Europe/Paris";
const TimeZone zone(*TimeZone::named(paris));
const DateComponents wholeDay = DateComponents::fromDate({2026, 3, 12});
const DateComponents tenOClock = DateComponents::fromDateTime({2026, 3, 12}, {10, 0});

TEST(ReminderAlerts, TheAlarmRingsWhereTheScheduleFitsTheDueDate) {
    struct Case {
        const char* what;
        DateComponents due;
        ReminderAlertSchedule schedule;
        std::optional<Instant> expected;
    };
    const double huge = std::numeric_limits<double>::max();
    const std::vector<Case> cases{
        {"15 minutes before", tenOClock, RelativeToDueTime{-900}, at(paris, {2026, 3, 12}, {9, 45})},
        {"an offset after", tenOClock, RelativeToDueTime{60}, at(paris, {2026, 3, 12}, {10, 1})},
        {"relative on a whole day", wholeDay, RelativeToDueTime{-900}, {}},
        {"an offset beyond all time", tenOClock, RelativeToDueTime{-huge}, {}},
        {"no number", tenOClock, RelativeToDueTime{std::numeric_limits<double>::quiet_NaN()}, {}},
        {"same day", wholeDay, DayRelativeToDueDate{0, 23, 59}, at(paris, {2026, 3, 12}, {23, 59})},
        {"day before", wholeDay, DayRelativeToDueDate{-1, 9, 0}, at(paris, {2026, 3, 11}, {9, 0})},
        {"two days before", wholeDay, DayRelativeToDueDate{-2, 9, 0}, {}},
        {"day after", wholeDay, DayRelativeToDueDate{1, 9, 0}, {}},
        {"hour 24", wholeDay, DayRelativeToDueDate{0, 24, 0}, {}},
        {"negative hour", wholeDay, DayRelativeToDueDate{0, -1, 0}, {}},
        {"minute 60", wholeDay, DayRelativeToDueDate{0, 9, 60}, {}},
        {"day schedule on a time", tenOClock, DayRelativeToDueDate{0, 9, 0}, {}},
        {"no such day", DateComponents::fromDateTime({2026, 3, 12}, {10, 0}, TimeZone::named("Mars/Base")),
         RelativeToDueTime{0}, at(paris, {2026, 3, 12}, {10, 0})},
        {"a time that is skipped", DateComponents::fromDate({2026, 3, 29}), DayRelativeToDueDate{0, 2, 30},
         at(paris, {2026, 3, 29}, {3, 0})},
        {"a time that comes twice", DateComponents::fromDate({2026, 10, 25}), DayRelativeToDueDate{0, 2, 30},
         at("UTC", {2026, 10, 25}, {0, 30})},
        {"the day before a change of clocks", DateComponents::fromDate({2026, 3, 30}),
         DayRelativeToDueDate{-1, 9, 0}, at("UTC", {2026, 3, 29}, {7, 0})},
    };
    for (const Case& param : cases)
        EXPECT_EQ(alarmInstant({param.due, param.schedule}, zone), param.expected) << param.what;
    EXPECT_EQ(alarmInstant({std::nullopt, RelativeToDueTime{0}}, zone), std::nullopt);
    EXPECT_EQ(alarmInstant({tenOClock, std::nullopt}, zone), std::nullopt);
    EXPECT_EQ(alarmInstant({DateComponents{.year = 2026, .hour = 10}, RelativeToDueTime{0}}, zone),
              std::nullopt);
}

class ReplacingAnAlarm : public testing::Test {
  protected:
    void replace(const ReminderDueAlert& before, const ReminderDueAlert& after) {
        replaceAlarm(reminder, before, after, zone);
    }
    static EKAlarm alarmAtTen(Duration offset) {
        return EKAlarm::at(at(paris, {2026, 3, 12}, {10, 0}) + offset);
    }

    const ReminderDueAlert none{tenOClock, std::nullopt};
    const ReminderDueAlert quarter{tenOClock, RelativeToDueTime{-900}};
    const ReminderDueAlert hour{tenOClock, RelativeToDueTime{-3600}};
    EKReminderData reminder;
};

TEST_F(ReplacingAnAlarm, MovesItsOwnAlarmWithinASecondAndNoOther) {
    reminder.alarms = {alarmAtTen(-900s - 1s - 1us), alarmAtTen(-900s + 1s), alarmAtTen(1h)};
    replace(quarter, hour);
    EXPECT_THAT(reminder.alarms, ElementsAre(alarmAtTen(-900s - 1s - 1us), alarmAtTen(-1h), alarmAtTen(1h)));
    const auto once = reminder;
    replace(hour, hour);
    EXPECT_EQ(reminder, once);
    replace(hour, {tenOClock, RelativeToDueTime{3600}});
    EXPECT_THAT(reminder.alarms, ElementsAre(alarmAtTen(-900s - 1s - 1us), alarmAtTen(1h)))
        << "one rings at that moment already";
}

TEST_F(ReplacingAnAlarm, KeepsTheAlarmAsItStandsWhenItsInstantDoesNotChange) {
    EKAlarm source = alarmAtTen(-900s);
    source.sourceText = "BEGIN:VALARM...";
    reminder.alarms = {source};
    replace(quarter, quarter);
    replace(quarter, {DateComponents::fromDateTime({2026, 3, 12}, {10, 45}), RelativeToDueTime{-3600}});
    EXPECT_THAT(reminder.alarms, ElementsAre(source));
}

TEST_F(ReplacingAnAlarm, LeavesAlarmsAtPlacesAlone) {
    EKAlarm place = alarmAtTen(-900s);
    place.structuredLocation = EKStructuredLocation{QStringLiteral("Home")};
    reminder.alarms = {place};
    replace(none, quarter);
    EXPECT_THAT(reminder.alarms, ElementsAre(place, alarmAtTen(-900s)));
    replace(quarter, none);
    EXPECT_THAT(reminder.alarms, ElementsAre(place));
}

/// What becomes of the alarms of a reminder with this alert when alert and due date are changed.
TEST(ReminderAlerts, WhatIsShownCanBeTakenAwayReplacedAndMoved) {
    struct Case {
        const char* what;
        EKReminderData reminder;
        ReminderDueAlert wanted;
        std::vector<EKAlarm> expected;
    };
    using Parts = DateComponents;
    const auto with = [](EKReminderData data, std::vector<EKAlarm> alarms) {
        data.alarms = std::move(alarms);
        return data;
    };
    const auto march = [](int day, QTime time) { return EKAlarm::at(at(paris, {2026, 3, day}, time)); };
    const EKReminderData timed = aReminder("r").due({2026, 3, 12}, {10, 0});
    const EKReminderData dayLong = aReminder("r").due({2026, 3, 12});
    EKReminderData started = timed;
    started.startDateComponents = Parts::fromDateTime({2026, 3, 10}, {8, 0});
    EKReminderData startsWhenDue = timed;
    startsWhenDue.startDateComponents = timed.dueDateComponents;
    const Parts elevenOClock = Parts::fromDateTime({2026, 3, 20}, {11, 0});
    const Parts otherDay = Parts::fromDate({2026, 3, 20});
    const EKAlarm before{.relativeOffset = -15min, .sourceText = "BEGIN:VALARM..."};
    const EKAlarm beforeStart{.relativeOffset = -15min, .followsStart = true};
    const EKAlarm dayBefore{.relativeOffset = -24h, .relativeDays = -1};
    EKAlarm described = march(9, {9, 0});
    described.sourceText = "BEGIN:VALARM...";
    EKAlarm describedLater = described;
    describedLater.absoluteDate = march(17, {9, 0}).absoluteDate;
    EKAlarm snoozed = before;
    snoozed.identifier = "A";
    snoozed.acknowledgedDate = at(paris, {2026, 3, 12}, {9, 46});
    EKAlarm again = march(12, {9, 56});
    again.snoozedAlarm = "A";
    const RelativeToDueTime quarterBefore{-900};
    const Case cases[] = {
        {"none in place of a relative one", with(timed, {before}), {tenOClock, {}}, {}},
        {"another in place of a relative one",
         with(timed, {before}),
         {tenOClock, RelativeToDueTime{-300}},
         {march(12, {9, 55})}},
        {"a relative one follows",
         with(timed, {before, march(1, {9, 0})}),
         {elevenOClock, quarterBefore},
         {before, march(1, {9, 0})}},
        {"it follows a start that moves along",
         with(startsWhenDue, {beforeStart}),
         {elevenOClock, quarterBefore},
         {beforeStart}},
        {"it keeps its distance where the start stays",
         with(started, {beforeStart}),
         {elevenOClock, RelativeToDueTime{-(2 * 86400 + 2 * 3600 + 900)}},
         {march(18, {8, 45})}},
        {"over a change of clocks",
         with(timed, {dayBefore}),
         {Parts::fromDateTime({2026, 3, 29}, {9, 0}), RelativeToDueTime{-86400}},
         {dayBefore}},
        {"two at one instant are one",
         with(timed, {before, march(12, {9, 45})}),
         {elevenOClock, quarterBefore},
         {before}},
        {"and go together", with(timed, {march(12, {9, 45}), before}), {tenOClock, {}}, {}},
        {"the wanted one is there, and follows",
         with(timed, {march(12, {9, 55}), before}),
         {elevenOClock, quarterBefore},
         {before}},
        {"what was snoozed goes along",
         with(timed, {snoozed, again}),
         {elevenOClock, quarterBefore},
         {snoozed}},
        {"what was snoozed stays with an unchanged alert",
         with(timed, {snoozed, again}),
         {tenOClock, quarterBefore},
         {snoozed, again}},
        {"three days before, taken away", with(dayLong, {described}), {wholeDay, {}}, {}},
        {"three days before, replaced",
         with(dayLong, {described, march(1, {9, 0})}),
         {wholeDay, DayRelativeToDueDate{0, 8, 0}},
         {march(12, {8, 0}), march(1, {9, 0})}},
        {"three days before, moved",
         with(dayLong, {described}),
         {otherDay, DayRelativeToDueDate{-3, 9, 0}},
         {describedLater}},
        {"with seconds, unchanged",
         with(dayLong, {march(12, {9, 0, 30})}),
         {wholeDay, DayRelativeToDueDate{0, 9, 0}},
         {march(12, {9, 0, 30})}},
        {"with seconds, moved",
         with(dayLong, {march(12, {9, 0, 30})}),
         {otherDay, DayRelativeToDueDate{0, 9, 0}},
         {march(20, {9, 0, 30})}},
        {"with seconds, taken away", with(dayLong, {march(12, {9, 0, 30})}), {wholeDay, {}}, {}},
        {"no due date any more", with(timed, {march(12, {9, 45}), before, dayBefore}), {{}, {}}, {}},
        {"an alert that does not fit", with(timed, {before}), {otherDay, quarterBefore}, {}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        EKReminderData changed = each.reminder;
        replaceAlarm(changed, {changed.dueDateComponents, alertSchedule(changed, zone)}, each.wanted, zone);
        EXPECT_EQ(changed.alarms, each.expected);
    }
}

TEST(ReminderAlerts, ReadsTheFirstAlarmThatRingsByDate) {
    EKAlarm place = EKAlarm::at(at(paris, {2026, 3, 12}, {8, 0}));
    place.structuredLocation = EKStructuredLocation{QStringLiteral("Home")};
    EKAlarm again = place;
    again.structuredLocation.reset();
    again.snoozedAlarm = "A";
    EKReminderData timed = aReminder("r").due({2026, 3, 12}, {10, 0});
    EXPECT_EQ(alertSchedule(timed, zone), std::nullopt);
    timed.alarms = {place, again, EKAlarm{}, EKAlarm{.relativeOffset = -5min},
                    EKAlarm::at(at(paris, {2026, 3, 12}, {9, 59}))};
    EXPECT_EQ(alertSchedule(timed, zone), ReminderAlertSchedule(RelativeToDueTime{-300}));
    timed.alarms.erase(timed.alarms.begin() + 3);
    EXPECT_EQ(alertSchedule(timed, zone), ReminderAlertSchedule(RelativeToDueTime{-60}));

    EKReminderData wholeDays = aReminder("r").due({2026, 3, 30}).alarmAt(at(paris, {2026, 3, 28}, {18, 5}));
    EXPECT_EQ(alertSchedule(wholeDays, zone), ReminderAlertSchedule(DayRelativeToDueDate{-2, 18, 5}));
    wholeDays.dueDateComponents.reset();
    EXPECT_EQ(alertSchedule(wholeDays, zone), std::nullopt);
}

TEST(ReminderAlerts, EveryScheduleIsToldInWords) {
    const std::pair<ReminderAlertSchedule, TextPair> cases[] = {
        {RelativeToDueTime{0}, text("At due time", "À l’heure")},
        {RelativeToDueTime{-900}, text("15 min before", "15 min avant")},
        {RelativeToDueTime{-5400}, text("90 min before", "90 min avant")},
        {RelativeToDueTime{-7200}, text("2 hr before", "2 h avant")},
        {RelativeToDueTime{-3 * 86400}, text("3 days before", "3 jours avant")},
        {RelativeToDueTime{600}, text("10 min after", "10 min après")},
        {RelativeToDueTime{-20}, text("1 min before", "1 min avant")},
        {DayRelativeToDueDate{0, 9, 0}, text("On day of event at 09:00", "Le jour même à 09:00")},
        {DayRelativeToDueDate{-1, 18, 30}, text("Day before at 18:30", "La veille à 18:30")},
        {DayRelativeToDueDate{-2, 9, 5}, text("2 days before at 09:05", "2 jours avant à 09:05")},
        {DayRelativeToDueDate{1, 9, 0}, text("1 day after at 09:00", "1 jour après à 09:00")},
    };
    for (const auto& [schedule, expected] : cases)
        EXPECT_EQ(label(schedule), expected) << expected.english.toStdString();
}

}  // namespace
}  // namespace kestrant
