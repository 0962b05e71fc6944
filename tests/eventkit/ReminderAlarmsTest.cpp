#include "eventkit/model/ReminderAlarms.h"

#include "eventkit/model/ReminderChanges.h"
#include "support/ReminderBuilders.h"

#include <gtest/gtest.h>

#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using Parts = DateComponents;

constexpr auto zone = "Europe/Paris";
const TimeZone paris{*TimeZone::named(zone)};
const Instant ten = at(zone, {2026, 3, 27}, {10, 0});

TEST(ReminderAlarms, RingWhereTheirDateIs) {
    struct Case {
        const char* what;
        AlarmDates dates;
        EKAlarm alarm;
        std::optional<Instant> expected;
    };
    const AlarmDates both{Parts::fromDateTime({2026, 3, 27}, {8, 0}),
                          Parts::fromDateTime({2026, 3, 27}, {10, 0})};
    const AlarmDates changeOfClocks{{}, Parts::fromDateTime({2026, 3, 29}, {9, 0})};
    EKAlarm atPlace = EKAlarm::at(ten);
    atPlace.structuredLocation = EKStructuredLocation{QStringLiteral("Home")};
    const EKAlarm quarterBefore{.relativeOffset = -15min};
    const EKAlarm beforeStart{.relativeOffset = -15min, .followsStart = true};
    const Case cases[] = {
        {"its own instant", {}, EKAlarm::at(ten), ten},
        {"before the due date", both, quarterBefore, ten - 15min},
        {"before the start", both, beforeStart, ten - 2h - 15min},
        {"before the only date, a start", {both.start, {}}, quarterBefore, ten - 2h - 15min},
        {"before the only date, a due date", {{}, both.due}, beforeStart, ten - 15min},
        {"before a whole day",
         {{}, Parts::fromDate({2026, 3, 27})},
         quarterBefore,
         at(zone, {2026, 3, 26}, {23, 45})},
        {"a day before, by the clock",
         changeOfClocks,
         {.relativeOffset = -24h, .relativeDays = -1},
         at(zone, {2026, 3, 28}, {9, 0})},
        {"24 hours before", changeOfClocks, {.relativeOffset = -24h}, at(zone, {2026, 3, 28}, {8, 0})},
        {"an offset from nothing", {}, quarterBefore, {}},
        {"a placeholder", both, EKAlarm{}, {}},
        {"a place", both, atPlace, {}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(ringInstant(each.alarm, each.dates, paris), each.expected) << each.what;
}

TEST(ReminderAlarms, AreTheSameWhereverTheirDateHasBeenMoved) {
    EKReminderData reminder = aReminder("r").due({2026, 3, 27}, {10, 0});
    reminder.alarms = {EKAlarm{.relativeOffset = -15min}};
    EKReminderData moved = reminder;
    placeAlarms(reminder, paris);
    EXPECT_EQ(reminder.alarms[0].absoluteDate, ten - 15min);
    moved.dueDateComponents = Parts::fromDate({2026, 4, 1});
    placeAlarms(moved, paris);
    EXPECT_NE(moved.alarms[0].absoluteDate, reminder.alarms[0].absoluteDate);
    EXPECT_EQ(moved.alarms, reminder.alarms);
    EXPECT_NE(EKAlarm::at(ten), EKAlarm::at(ten + 1s));
}

TEST(StartFitting, KeepsTheDayOfAStartThatIsNotTheDueDate) {
    struct Case {
        const char* what;
        std::optional<Parts> start;
        std::optional<Parts> before;
        std::optional<Parts> due;
        std::optional<Parts> expected;
    };
    const Parts noon = Parts::fromDateTime({2026, 3, 28}, {12, 0});
    const Parts nine = Parts::fromDateTime({2026, 3, 25}, {9, 0});
    const Case cases[] = {
        {"to a day", nine, noon, Parts::fromDate({2026, 3, 30}), Parts::fromDate({2026, 3, 25})},
        {"to another time", nine, noon, Parts::fromDateTime({2026, 3, 30}, {12, 0}), nine},
        {"to a time, from a day", Parts::fromDate({2026, 3, 25}), Parts::fromDate({2026, 3, 28}), noon,
         Parts::fromDateTime({2026, 3, 25}, {0, 0})},
        {"to a day before it", nine, noon, Parts::fromDate({2026, 3, 24}), Parts::fromDate({2026, 3, 24})},
        {"to an hour before it", nine, noon, Parts::fromDateTime({2026, 3, 25}, {8, 0}),
         Parts::fromDateTime({2026, 3, 25}, {8, 0})},
        {"the due date itself follows", noon, noon, Parts::fromDate({2026, 4, 30}),
         Parts::fromDate({2026, 4, 30})},
        {"by the person's day", Parts::fromDateTime({2026, 3, 24}, {23, 30}, TimeZone::named("UTC")), noon,
         Parts::fromDate({2026, 3, 30}), Parts::fromDate({2026, 3, 25})},
        {"no due date any more", nine, noon, {}, nine},
        {"no start", {}, noon, nine, {}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(startFitting(each.start, each.before, each.due, paris), each.expected) << each.what;
}

}  // namespace
}  // namespace kestrant
