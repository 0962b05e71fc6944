#include "calendar/CalendarGrouping.h"

#include "calendar/CalendarFetch.h"
#include "support/EventBuilders.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <set>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

CalendarPresent presentAt(const char* zone, QDate day, QTime time) {
    return {at(zone, day, time), *TimeZone::named(zone), Language::english,
            QLocale(QLocale::English, QLocale::UnitedStates)};
}

/// One line a day: "2026-03-27: title title!", with "!" for what happens now.
std::vector<std::string> lines(const QList<CalendarDayGroup>& groups) {
    std::vector<std::string> result;
    for (const CalendarDayGroup& group : groups) {
        QString line = group.day.toString(Qt::ISODate) +
                       (group.isToday ? QStringLiteral(" today:") : QStringLiteral(":"));
        for (const CalendarEventItem& row : group.events)
            line += u' ' + row.title + (row.isHappeningNow ? QStringLiteral("!") : QString());
        result.push_back(line.toStdString());
    }
    return result;
}

class CalendarGrouping : public testing::Test {
  protected:
    static Instant paris(QDate day, QTime time = {0, 0}) { return at("Europe/Paris", day, time); }

    void put(const EKEventData& event) { items.events.push_back(std::make_shared<const EKEventData>(event)); }
    void put(const EKReminderData& reminder) {
        items.reminders.push_back(std::make_shared<const EKReminderData>(reminder));
    }
    [[nodiscard]] QList<CalendarDayGroup> compact() const {
        return groupByDay(items, compactDays(present), CalendarMode::compact, present);
    }
    [[nodiscard]] QList<CalendarDayGroup> full(QDate first, QDate end) const {
        return groupByDay(items, {first, end}, CalendarMode::full, present);
    }

    CalendarItems items;
    /// Friday, two days before the clocks go forward.
    CalendarPresent present = presentAt("Europe/Paris", {2026, 3, 27}, {10, 0});
};

TEST_F(CalendarGrouping, AnItemIsListedOnEveryDayItTouches) {
    put(anEvent("night").lasting(paris({2026, 3, 27}, {23, 0}), paris({2026, 3, 28}, {1, 0})));
    put(anEvent("untilMidnight").lasting(paris({2026, 3, 28}, {22, 0}), paris({2026, 3, 29})));
    put(anEvent("fair").allDay({2026, 3, 26}, {2026, 3, 30}));
    put(anEvent("before").lasting(paris({2026, 3, 26}, {8, 0}), paris({2026, 3, 27})));
    put(anEvent("instant").lasting(paris({2026, 4, 1}, {0, 1}), 0s));
    put(anEvent("onTheBorder").lasting(paris({2026, 4, 1}), 0s));
    put(anEvent("late").lasting(paris({2026, 4, 2}, {23, 59}), 1h));
    put(anEvent("after").lasting(paris({2026, 4, 3}), 1h));
    EXPECT_THAT(lines(compact()),
                ElementsAre("2026-03-27 today: fair night", "2026-03-28: fair night untilMidnight",
                            "2026-03-29: fair", "2026-04-01: instant", "2026-04-02: late"));
}

TEST_F(CalendarGrouping, WhatDoesNotFitIsWhatIsFarthestFromToday) {
    // Two rows a day, five today.
    put(anEvent("fair").allDay({2026, 3, 1}, {2026, 5, 1}));
    put(anEvent("age").allDay({2020, 3, 1}, {9999, 12, 31}));
    for (int hour = 12; hour < 15; ++hour)
        put(anEvent("today").lasting(paris({2026, 3, 27}, {hour, 0}), 1h));
    struct Case {
        DayRange days;
        qsizetype most;
        DayRange expected;
    };
    const DayRange all{{2026, 3, 20}, {2026, 4, 4}};
    const DayRange before{{2026, 3, 2}, {2026, 3, 12}};
    const DayRange after{{2026, 4, 10}, {2026, 4, 20}};
    for (const Case& each :
         {Case{all, 100, all}, Case{all, 1, {{2026, 3, 27}, {2026, 3, 28}}},
          Case{all, 10, {{2026, 3, 26}, {2026, 3, 29}}}, Case{all, 13, {{2026, 3, 25}, {2026, 3, 30}}},
          Case{before, 7, {{2026, 3, 9}, {2026, 3, 12}}}, Case{after, 6, {{2026, 4, 10}, {2026, 4, 13}}}}) {
        EXPECT_EQ(daysThatFit(items, each.days, present, each.most), each.expected) << each.most;
        const auto groups = groupsThatFit(full(each.days.first, each.days.end), {2026, 3, 27}, each.most);
        EXPECT_EQ(groups, full(each.expected.first, each.expected.end)) << each.most;
    }
    EXPECT_TRUE(groupsThatFit({}, {2026, 3, 27}).isEmpty());
}

TEST_F(CalendarGrouping, DatesOfASeriesThatBeginAtOneInstantHaveIdsOfTheirOwn) {
    for (const int day : {24, 25, 26}) {
        EKEventData moved = anEvent("series").lasting(paris({2026, 3, 28}, {9, 0}), 1h);
        moved.occurrenceDate = paris({2026, 3, day}, {9, 0});
        put(moved);
    }
    const QList<CalendarDayGroup> groups = compact();
    std::set<QString> ids;
    for (const CalendarEventItem& row : groups.back().events)
        ids.insert(row.id);
    EXPECT_EQ(ids.size(), 3U);
}

TEST_F(CalendarGrouping, AReminderBelongsToTheDayItIsDueOn) {
    put(aReminder("midnight").due({2026, 3, 28}, {0, 0}));
    put(aReminder("wholeDay").due({2026, 3, 27}));
    put(aReminder("earlierToday").due({2026, 3, 27}, {8, 0}));
    put(aReminder("yesterday").due({2026, 3, 26}, {23, 59}));
    put(aReminder("elsewhere").due({2026, 3, 27}, {20, 0}, "America/New_York"));
    put(aReminder("undated"));
    put(anEvent("breakfast").lasting(paris({2026, 3, 27}, {7, 0}), paris({2026, 3, 27}, {12, 0})));
    EXPECT_THAT(lines(compact()), ElementsAre("2026-03-27 today: wholeDay breakfast! earlierToday",
                                              "2026-03-28: midnight elsewhere"));
}

TEST_F(CalendarGrouping, WhatIsOverGoesFromTodayInTheCompactModeOnly) {
    put(anEvent("over").lasting(paris({2026, 3, 27}, {8, 0}), paris({2026, 3, 27}, {9, 59})));
    put(anEvent("ending").lasting(paris({2026, 3, 27}, {9, 0}), paris({2026, 3, 27}, {10, 0})));
    put(anEvent("starting").lasting(paris({2026, 3, 27}, {10, 0}), 1h));
    put(anEvent("days").lasting(paris({2026, 3, 26}, {10, 0}), paris({2026, 3, 28}, {10, 0})));
    put(anEvent("holiday").allDay({2026, 3, 27}, {2026, 3, 28}));
    EXPECT_THAT(lines(compact()),
                ElementsAre("2026-03-27 today: holiday days! ending starting!", "2026-03-28: days"));
    EXPECT_THAT(lines(full({2026, 3, 25}, {2026, 4, 2})),
                ElementsAre("2026-03-26: days", "2026-03-27 today: holiday days! over ending starting!",
                            "2026-03-28: days"));
}

TEST_F(CalendarGrouping, AnEmptyTodayIsShownOnlyAboveOtherDays) {
    EXPECT_THAT(compact(), IsEmpty());
    put(anEvent("over").lasting(paris({2026, 3, 27}, {8, 0}), 1h));
    EXPECT_THAT(compact(), IsEmpty());
    put(anEvent("sunday").lasting(paris({2026, 3, 29}, {8, 0}), 1h));
    EXPECT_THAT(lines(compact()), ElementsAre("2026-03-27 today:", "2026-03-29: sunday"));
    items.events.erase(items.events.begin());
    EXPECT_THAT(lines(full({2026, 3, 25}, {2026, 4, 2})), ElementsAre("2026-03-29: sunday"));
}

TEST_F(CalendarGrouping, RowsLookLikeTheirCalendar) {
    items.calendars.insert(QStringLiteral("calendar"), {QStringLiteral("Work"), Color{1, 2, 3}});
    items.calendars.insert(QStringLiteral("list"), {QStringLiteral("Home"), std::nullopt});
    put(anEvent("e").lasting(present.now, 1h));
    put(aReminder("r").due({2026, 3, 27}, {18, 0}));
    const auto rows = compact().front().events;
    EXPECT_EQ(rows[0].calendarTitle, QStringLiteral("Work"));
    EXPECT_EQ(rows[0].calendarColor, (Color{1, 2, 3}));
    EXPECT_EQ(rows[1].calendarTitle, QStringLiteral("Home"));
}

TEST_F(CalendarGrouping, AnEventOfManyDaysIsCutToTheInterval) {
    put(anEvent("year").allDay({2025, 12, 1}, {2027, 1, 5}));
    put(anEvent("backwards").lasting(paris({2026, 3, 28}, {9, 0}), -2h));
    const auto groups = full({2026, 1, 1}, {2027, 1, 1});
    EXPECT_EQ(groups.size(), 365);
    EXPECT_EQ(groups.front().day, QDate(2026, 1, 1));
    EXPECT_EQ(groups.back().day, QDate(2026, 12, 31));
    EXPECT_EQ(groups[86].events.size(), 2) << "an end before the start counts as no length";
}

TEST(CalendarDays, BeginAndEndWithTheLocalDayWhateverItsLength) {
    struct Case {
        const char* zone;
        QDate day;
        Duration length;
    };
    for (const Case& param :
         {Case{"Europe/Paris", {2026, 3, 29}, 23h}, Case{"Europe/Paris", {2026, 10, 25}, 25h},
          Case{"America/Sao_Paulo", {2018, 11, 4}, 23h},
          Case{"Australia/Lord_Howe", {2026, 4, 5}, 24h + 30min}}) {
        const CalendarPresent present = presentAt(param.zone, param.day.addDays(-1), {12, 0});
        const Instant start = at(param.zone, param.day);
        const Instant end = at(param.zone, param.day.addDays(1));
        ASSERT_EQ(end - start, param.length);
        CalendarItems items;
        for (const EKEventData& event : {EKEventData(anEvent("evening").lasting(start - 1s, 1s)),
                                         EKEventData(anEvent("first").lasting(start, 1s)),
                                         EKEventData(anEvent("last").lasting(end - 1s, 1s)),
                                         EKEventData(anEvent("morning").lasting(end, 1s))})
            items.events.push_back(std::make_shared<const EKEventData>(event));
        const auto groups = groupByDay(items, compactDays(present), CalendarMode::compact, present);
        const auto iso = [](QDate day) { return day.toString(Qt::ISODate).toStdString(); };
        EXPECT_THAT(lines(groups),
                    ElementsAre(iso(param.day.addDays(-1)) + " today: evening",
                                iso(param.day) + ": first last", iso(param.day.addDays(1)) + ": morning"))
            << param.zone;
        EXPECT_EQ(groups[1].date, start) << param.zone;
    }
}

/// The rules day by day and item by item, as slow as they are plain.
QList<CalendarDayGroup> plainGrouping(const CalendarItems& items, const DayRange& days, CalendarMode mode,
                                      const CalendarPresent& present) {
    const TextCollation collation(present.locale);
    const QDate today = present.zone.dayOf(present.now);
    QList<CalendarDayGroup> groups;
    for (QDate day = days.first; day < days.end; day = day.addDays(1)) {
        const Instant start = present.zone.startOfDay(day);
        const Instant end = present.zone.startOfDay(day.addDays(1));
        CalendarDayGroup group{day, start, headerTitle(day, today, present.language), day == today, {}};
        for (const auto& event : items.events) {
            const bool isOver = !event->isAllDay && event->endDate < present.now;
            if (event->startDate >= end || event->endDate <= start ||
                (mode == CalendarMode::compact && group.isToday && isOver))
                continue;
            group.events.push_back(eventRow(*event, nullptr, present.language));
            group.events.back().isHappeningNow = group.isToday && !event->isAllDay &&
                                                 event->startDate <= present.now &&
                                                 event->endDate > present.now;
        }
        for (const auto& reminder : items.reminders) {
            const auto due = reminderDueDate(*reminder, present.zone);
            if (due && *due >= start && *due < end)
                group.events.push_back(reminderRow(*reminder, *due, nullptr, present.language));
        }
        std::stable_sort(group.events.begin(), group.events.end(), [&](const auto& a, const auto& b) {
            if (a.isAllDay != b.isAllDay)
                return a.isAllDay;
            if (a.startDate != b.startDate)
                return a.startDate < b.startDate;
            return collation.compare(a.title, b.title) < 0;
        });
        if (!group.events.isEmpty() || (mode == CalendarMode::compact && group.isToday))
            groups.push_back(group);
    }
    if (groups.size() == 1 && groups.front().events.isEmpty())
        groups.clear();
    return groups;
}

TEST(CalendarGroupingOfAnything, FollowsTheRulesDayByDay) {
    std::mt19937 random(20260327);
    const auto number = [&](int from, int to) { return std::uniform_int_distribution<>(from, to)(random); };
    struct Case {
        const char* zone;
        QDate today;
    };
    for (const Case& param : {Case{"Europe/Paris", {2026, 3, 27}}, Case{"America/Sao_Paulo", {2018, 11, 2}},
                              Case{"Asia/Kathmandu", {2026, 1, 1}}}) {
        for (int round = 0; round < 20; ++round) {
            const CalendarPresent present = presentAt(param.zone, param.today, QTime(number(0, 23), 30));
            const auto someInstant = [&] {
                return at(param.zone, param.today.addDays(number(-12, 12)),
                          QTime(number(0, 23), number(0, 1) * 30));
            };
            CalendarItems items;
            for (int index = 0; index < 150; ++index) {
                const QString title = QString(QChar(u"aAbBéÉ "[number(0, 6)]));
                EventBuilder event = anEvent("e").titled(title);
                if (number(0, 3) == 0) {
                    const QDate first = param.today.addDays(number(-12, 12));
                    event.allDay(first, first.addDays(number(1, 5)), param.zone);
                } else {
                    event.lasting(someInstant(),
                                  std::chrono::minutes(number(0, 4) == 0 ? 0 : number(0, 100) * 30));
                }
                items.events.push_back(std::make_shared<const EKEventData>(event));
                ReminderBuilder reminder = aReminder("r").titled(title);
                const DateComponents due = present.zone.componentsOf(someInstant());
                if (number(0, 1) == 0)
                    reminder.due(due.date());
                else
                    reminder.due(due.date(), due.time());
                items.reminders.push_back(std::make_shared<const EKReminderData>(reminder));
            }
            const DayRange days{param.today.addDays(-7), param.today.addDays(9)};
            EXPECT_TRUE(groupByDay(items, days, CalendarMode::full, present) ==
                        plainGrouping(items, days, CalendarMode::full, present))
                << param.zone << " in round " << round;
            EXPECT_TRUE(groupByDay(items, compactDays(present), CalendarMode::compact, present) ==
                        plainGrouping(items, compactDays(present), CalendarMode::compact, present))
                << param.zone << " in round " << round;
        }
    }
}

TEST_F(CalendarGrouping, MergedGroupsAreOneADayWithoutDoubles) {
    put(anEvent("b").lasting(paris({2026, 3, 28}, {9, 0}), 1h));
    put(anEvent("long").lasting(paris({2026, 3, 28}, {12, 0}), 48h));
    const auto earlier = full({2026, 3, 28}, {2026, 3, 30});
    put(anEvent("a").lasting(paris({2026, 3, 28}, {9, 0}), 1h));
    put(anEvent("z").lasting(paris({2026, 4, 2}, {9, 0}), 1h));
    const auto all = full({2026, 3, 28}, {2026, 4, 3});
    EXPECT_TRUE(merged(earlier, all, present.locale) == all);
    EXPECT_TRUE(merged(all, earlier, present.locale) == all);
    EXPECT_TRUE(merged({}, earlier, present.locale) == earlier);
}

TEST_F(CalendarGrouping, ARemovedRowTakesItsEmptyDaysAlong) {
    put(anEvent("trip").allDay({2026, 3, 28}, {2026, 3, 30}));
    put(anEvent("sunday").lasting(paris({2026, 3, 29}, {9, 0}), 1h));
    const QString trip = eventRowID(QStringLiteral("trip"), paris({2026, 3, 28}));
    const auto left = withoutRow(compact(), trip, CalendarMode::compact);
    EXPECT_THAT(lines(left), ElementsAre("2026-03-27 today:", "2026-03-29: sunday"));
    const QString sunday = eventRowID(QStringLiteral("sunday"), paris({2026, 3, 29}, {9, 0}));
    EXPECT_THAT(withoutRow(left, sunday, CalendarMode::compact), IsEmpty());
}

TEST_F(CalendarGrouping, RowsMovedToALaterMomentAreThoseGroupedThen) {
    put(anEvent("a").lasting(paris({2026, 3, 27}, {9, 0}), paris({2026, 3, 27}, {11, 0})));
    put(anEvent("b").lasting(paris({2026, 3, 27}, {11, 0}), 30min));
    put(anEvent("days").lasting(paris({2026, 3, 26}, {9, 0}), paris({2026, 3, 28}, {9, 0})));
    put(aReminder("r").due({2026, 3, 27}, {10, 30}));
    const DayRange days{{2026, 3, 26}, {2026, 4, 1}};
    for (const CalendarMode mode : {CalendarMode::compact, CalendarMode::full}) {
        const DayRange range = mode == CalendarMode::compact ? compactDays(present) : days;
        CalendarPresent later = present;
        auto groups = groupByDay(items, range, mode, present);
        std::vector<Instant> moments;
        while (const auto moment = nextMomentOfChange(groups, later.now)) {
            if (*moment >= paris({2026, 3, 28}))
                break;
            moments.push_back(*moment);
            later.now = *moment;
            groups = atMoment(groups, *moment, mode);
            EXPECT_TRUE(groups == groupByDay(items, range, mode, later)) << toIso8601(*moment).toStdString();
        }
        EXPECT_THAT(moments,
                    testing::IsSupersetOf({paris({2026, 3, 27}, {11, 0}), paris({2026, 3, 27}, {11, 30}),
                                           paris({2026, 3, 27}, {11, 30}) + 1us}));
    }
}

TEST_F(CalendarGrouping, TheNextEventIsTimedAndYetToStart) {
    put(anEvent("running").lasting(paris({2026, 3, 27}, {9, 0}), 10h));
    put(anEvent("holiday").allDay({2026, 3, 28}, {2026, 3, 29}));
    put(aReminder("reminder").due({2026, 3, 27}, {11, 0}));
    EXPECT_EQ(nextEvent(compact(), present.now), std::nullopt);
    put(anEvent("later").lasting(paris({2026, 3, 28}, {9, 0}), 1h));
    put(anEvent("next").lasting(paris({2026, 3, 27}, {18, 0}), 1h));
    EXPECT_EQ(nextEvent(compact(), present.now)->title, QStringLiteral("next"));
}

TEST(HeaderTitle, NamesTodayAndTomorrowInEitherLanguage) {
    struct Case {
        QDate day;
        const char* english;
        const char* french;
    };
    const QDate today(2026, 3, 31);
    for (const Case& param :
         {Case{{2026, 3, 31}, "TODAY · TUE 31", "AUJOURD’HUI · MAR. 31"},
          Case{{2026, 4, 1}, "TOMORROW · WED 1", "DEMAIN · MER. 1"}, Case{{2026, 4, 2}, "THU 2", "JEU. 2"},
          Case{{2026, 3, 30}, "MON 30", "LUN. 30"}}) {
        EXPECT_EQ(headerTitle(param.day, today, Language::english).toStdString(), param.english);
        EXPECT_EQ(headerTitle(param.day, today, Language::french).toStdString(), param.french);
    }
}

}  // namespace
}  // namespace kestrant
