#include "eventkit/icalendar/ReminderSeries.h"

#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

const TimeZone paris{*TimeZone::named("Europe/Paris")};
/// Nothing is overdue yet.
const Instant early{};

EKReminderData dueDaily(QDate day) {
    return aReminder("x").due(day, {9, 0}, "Europe/Paris").repeating("FREQ=DAILY;COUNT=10");
}

TEST(ReminderSeriesTest, PassesOverWhatIsLeftOutAndCountsIt) {
    SeriesDates dates;
    dates.excludedTimes = {{QDate(2026, 3, 28), QTime(9, 0)}};
    dates.excludedDays = {QDate(2026, 3, 29)};
    const CompletedOccurrence step = completeOccurrence(dueDaily({2026, 3, 27}), dates, early, paris);
    EXPECT_EQ(step.series.dueDateComponents,
              DateComponents::fromDateTime({2026, 3, 30}, {9, 0}, TimeZone::named("Europe/Paris")));
    EXPECT_EQ(step.series.recurrenceRules[0].text, "FREQ=DAILY;COUNT=7");
}

TEST(ReminderSeriesTest, TakesExtraDatesInTheirOrder) {
    SeriesDates dates;
    dates.extraTimes = {{QDate(2026, 3, 27), QTime(15, 0)}, {QDate(2026, 3, 27), QTime(8, 0)}};
    const CompletedOccurrence step = completeOccurrence(dueDaily({2026, 3, 27}), dates, early, paris);
    EXPECT_EQ(step.series.dueDateComponents,
              DateComponents::fromDateTime({2026, 3, 27}, {15, 0}, TimeZone::named("Europe/Paris")));
    EXPECT_TRUE(step.keepsAnchor);
    EXPECT_EQ(step.series.recurrenceRules[0].text, "FREQ=DAILY;COUNT=10");
}

TEST(ReminderSeriesTest, KeepsTheLocalTimeWhenTheClocksChange) {
    struct Case {
        const char* zone;
        QTime time;
        QDate day;
        const char* expectedInstant;
    };
    const Case cases[] = {
        {"Europe/Paris", {2, 30}, {2026, 3, 28}, "2026-03-29T01:30:00Z"},   // in the gap: 03:30
        {"Europe/Paris", {2, 30}, {2026, 10, 24}, "2026-10-25T00:30:00Z"},  // the first of two
        {"UTC", {8, 0}, {2026, 3, 28}, "2026-03-29T08:00:00Z"},
        {"", {9, 0}, {2026, 3, 28}, "2026-03-29T07:00:00Z"},  // floating: the person's clock
        {"America/Sao_Paulo", {0, 0}, {2018, 11, 3}, "2018-11-04T03:00:00Z"},
    };
    for (const Case& each : cases) {
        EKReminderData data = aReminder("x").due(each.day, each.time, each.zone).repeating("FREQ=DAILY");
        data.isCompleted = true;
        const CompletedOccurrence step = completeOccurrence(data, {}, early, paris);
        EXPECT_EQ(step.series.dueDateComponents->time(), each.time);
        EXPECT_EQ(toIso8601(*paris.instantFrom(*step.series.dueDateComponents)), each.expectedInstant);
    }
}

TEST(ReminderSeriesTest, MovesDatesInDifferentZonesByTheSameLocalTime) {
    EKReminderData data = aReminder("x").due({2026, 3, 28}, {8, 0}, "UTC").repeating("FREQ=DAILY");
    data.startDateComponents =
        DateComponents::fromDateTime({2026, 3, 28}, {8, 0}, TimeZone::named("Europe/Paris"));
    const CompletedOccurrence step = completeOccurrence(data, {}, early, paris);
    // Paris has changed to summer time in between.
    EXPECT_EQ(step.series.dueDateComponents,
              DateComponents::fromDateTime({2026, 3, 29}, {7, 0}, TimeZone::named("UTC")));
}

TEST(ReminderSeriesTest, CompletesForGoodWhatHasNoNextDate) {
    const EKReminderData cases[] = {
        aReminder("x").due({2026, 3, 27}).repeating("FREQ=DAILY;UNTIL=20260327"),
        aReminder("x").due({2026, 3, 27}).repeating("not understood"),
        aReminder("x").repeating("FREQ=DAILY"),
    };
    for (EKReminderData data : cases) {
        data.isCompleted = true;
        const CompletedOccurrence step = completeOccurrence(data, {}, early, paris);
        EXPECT_EQ(step.series, data);
        EXPECT_FALSE(step.copy.has_value());
    }
}

TEST(ReminderSeriesTest, GoesOnToTheFirstDateNotBeforeToday) {
    using Parts = DateComponents;
    struct Case {
        const char* what;
        EKReminderData series;
        SeriesDates dates;
        std::optional<Parts> next;
        const char* rule;
    };
    const Instant now = at("Europe/Paris", {2026, 3, 27}, {12, 0});
    const auto weekly = [](QDate start, QDate due) {
        EKReminderData data = aReminder("x").due(due).repeating("FREQ=WEEKLY");
        data.startDateComponents = Parts::fromDate(start);
        return data;
    };
    const std::vector<Case> cases{
        {"two weeks late",
         aReminder("x").due({2026, 3, 13}).repeating("FREQ=DAILY"),
         {},
         Parts::fromDate({2026, 3, 27}),
         "FREQ=DAILY"},
        {"a time earlier today",
         aReminder("x").due({2026, 3, 13}, {9, 0}).repeating("FREQ=DAILY"),
         {},
         Parts::fromDateTime({2026, 3, 27}, {9, 0}),
         "FREQ=DAILY"},
        {"due today already",
         aReminder("x").due({2026, 3, 27}, {9, 0}).repeating("FREQ=DAILY"),
         {},
         Parts::fromDateTime({2026, 3, 28}, {9, 0}),
         "FREQ=DAILY"},
        {"due in the future",
         aReminder("x").due({2026, 4, 3}).repeating("FREQ=DAILY"),
         {},
         Parts::fromDate({2026, 4, 4}),
         "FREQ=DAILY"},
        {"in its own rhythm",
         aReminder("x").due({2026, 1, 1}).repeating("FREQ=DAILY;INTERVAL=2"),
         {},
         Parts::fromDate({2026, 3, 28}),
         "FREQ=DAILY;INTERVAL=2"},
        {"only some days",
         aReminder("x").due({2026, 3, 2}).repeating("FREQ=WEEKLY;BYDAY=MO,WE"),
         {},
         Parts::fromDate({2026, 3, 30}),
         "FREQ=WEEKLY;BYDAY=MO,WE"},
        {"passed dates count",
         aReminder("x").due({2026, 3, 23}).repeating("FREQ=DAILY;COUNT=10"),
         {},
         Parts::fromDate({2026, 3, 27}),
         "FREQ=DAILY;COUNT=6"},
        {"more than can be counted",
         aReminder("x").due({2020, 1, 1}, {9, 0}, "Europe/Paris").repeating("FREQ=SECONDLY;COUNT=200000000"),
         {},
         Parts::fromDateTime({2026, 3, 27}, {0, 0}, TimeZone::named("Europe/Paris")),
         "FREQ=SECONDLY;UNTIL=20260504T093319Z"},
        {"a rule of exceptions",
         aReminder("x").due({2026, 3, 13}).repeating("FREQ=DAILY"),
         {.exceptionRules = {"FREQ=WEEKLY;BYDAY=FR,SA"}},
         Parts::fromDate({2026, 3, 29}),
         "FREQ=DAILY"},
        {"none left to count", aReminder("x").due({2026, 3, 1}).repeating("FREQ=DAILY;COUNT=10"), {}, {}, ""},
        {"over by now", aReminder("x").due({2026, 3, 1}).repeating("FREQ=DAILY;UNTIL=20260320"), {}, {}, ""},
        {"today is left out",
         aReminder("x").due({2026, 3, 13}).repeating("FREQ=DAILY"),
         {.excludedDays = {QDate(2026, 3, 27)}},
         Parts::fromDate({2026, 3, 28}),
         "FREQ=DAILY"},
        {"an extra date first",
         aReminder("x").due({2026, 3, 1}).repeating("FREQ=MONTHLY"),
         {.extraDays = {QDate(2026, 3, 20), QDate(2026, 3, 29)}},
         Parts::fromDate({2026, 3, 29}),
         "FREQ=MONTHLY"},
        {"begun before today and due after",
         weekly({2026, 3, 9}, {2026, 3, 14}),
         {},
         Parts::fromDate({2026, 3, 28}),
         "FREQ=WEEKLY"},
        {"by the person's day, not the series' own",
         aReminder("x").due({2026, 3, 20}, {23, 30}, "America/New_York").repeating("FREQ=DAILY"),
         {},
         Parts::fromDateTime({2026, 3, 26}, {23, 30}, TimeZone::named("America/New_York")),
         "FREQ=DAILY"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        EKReminderData done = each.series;
        done.isCompleted = true;
        const CompletedOccurrence step = completeOccurrence(done, each.dates, now, paris);
        EXPECT_EQ(step.copy.has_value(), each.next.has_value());
        if (!each.next) {
            EXPECT_EQ(step.series, done) << "it is completed for good";
            continue;
        }
        EXPECT_EQ(step.series.dueDateComponents, each.next);
        EXPECT_EQ(step.series.recurrenceRules[0].text, each.rule);
        EXPECT_EQ(step.copy->dueDateComponents, each.series.dueDateComponents);
    }
}

}  // namespace
}  // namespace kestrant
