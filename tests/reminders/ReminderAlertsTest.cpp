#include "reminders/ReminderAlerts.h"

#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <chrono>
#include <limits>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr auto paris = "Europe/Paris";
const ZoneCalendar calendar(*TimeZone::named(paris));
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
        EXPECT_EQ(alarmInstant({param.due, param.schedule}, calendar), param.expected) << param.what;
    EXPECT_EQ(alarmInstant({std::nullopt, RelativeToDueTime{0}}, calendar), std::nullopt);
    EXPECT_EQ(alarmInstant({tenOClock, std::nullopt}, calendar), std::nullopt);
    EXPECT_EQ(alarmInstant({DateComponents{.year = 2026, .hour = 10}, RelativeToDueTime{0}}, calendar),
              std::nullopt);
}

class ReplacingAnAlarm : public testing::Test {
  protected:
    void replace(const ReminderDueAlert& before, const ReminderDueAlert& after) {
        replaceAlarm(reminder, before, after, calendar);
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
    reminder.alarms = {alarmAtTen(-900s + 1s), alarmAtTen(-900s - 1s - 1us), alarmAtTen(1h)};
    replace(quarter, hour);
    EXPECT_THAT(reminder.alarms, ElementsAre(alarmAtTen(-900s - 1s - 1us), alarmAtTen(1h), alarmAtTen(-1h)));
    const auto once = reminder;
    replace(hour, hour);
    EXPECT_EQ(reminder, once);
}

TEST_F(ReplacingAnAlarm, KeepsTheAlarmAsItStandsWhenItsInstantDoesNotChange) {
    EKAlarm source = alarmAtTen(-900s);
    source.sourceText = "BEGIN:VALARM...";
    reminder.alarms = {source};
    replace(quarter, quarter);
    EXPECT_THAT(reminder.alarms, ElementsAre(source));
}

TEST_F(ReplacingAnAlarm, KeepsAlarmsAtPlacesAndRelativeOnes) {
    EKAlarm place = alarmAtTen(-900s);
    place.structuredLocation = EKStructuredLocation{QStringLiteral("Home")};
    const EKAlarm relative{.relativeOffset = -900s};
    reminder.alarms = {place, relative};
    replace(none, quarter);
    EXPECT_THAT(reminder.alarms, ElementsAre(place, relative, alarmAtTen(-900s)));
    replace(quarter, none);
    EXPECT_THAT(reminder.alarms, ElementsAre(place, relative));
}

TEST_F(ReplacingAnAlarm, AddsNoneBesideOneThatRingsAtThatMomentAlready) {
    reminder.alarms = {alarmAtTen(-1h + 1s)};
    replace(none, hour);
    EXPECT_EQ(reminder.alarms.size(), 1U);
}

TEST(ReminderAlerts, ReadsTheFirstAbsoluteAlarmWithoutAPlace) {
    EKAlarm place = EKAlarm::at(at(paris, {2026, 3, 12}, {8, 0}));
    place.structuredLocation = EKStructuredLocation{QStringLiteral("Home")};
    EKReminderData timed = aReminder("r").due({2026, 3, 12}, {10, 0});
    EXPECT_EQ(alertSchedule(timed, calendar), std::nullopt);
    timed.alarms = {place, EKAlarm{.relativeOffset = -5min}, EKAlarm::at(at(paris, {2026, 3, 12}, {9, 59})),
                    EKAlarm::at(at(paris, {2026, 3, 12}, {9, 0}))};
    EXPECT_EQ(alertSchedule(timed, calendar), ReminderAlertSchedule(RelativeToDueTime{-60}));

    EKReminderData wholeDays = aReminder("r").due({2026, 3, 30}).alarmAt(at(paris, {2026, 3, 28}, {18, 5}));
    EXPECT_EQ(alertSchedule(wholeDays, calendar), ReminderAlertSchedule(DayRelativeToDueDate{-2, 18, 5}));
    wholeDays.dueDateComponents.reset();
    EXPECT_EQ(alertSchedule(wholeDays, calendar), std::nullopt);
}

TEST(ReminderAlerts, EveryScheduleIsToldInWords) {
    struct Case {
        ReminderAlertSchedule schedule;
        TextPair expected;
    };
    const Case cases[] = {
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
    for (const Case& each : cases)
        EXPECT_EQ(label(each.schedule), each.expected) << each.expected.english.toStdString();
}

}  // namespace
}  // namespace kestrant
