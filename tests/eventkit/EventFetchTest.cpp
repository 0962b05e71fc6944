#include "eventkit/items/EventFetch.h"

#include "VdirFolder.h"
#include "eventkit/vdir/VdirDatabase.h"
#include "support/EventBuilders.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const TimeZone paris{*TimeZone::named("Europe/Paris")};
const Instant now = at("UTC", {2026, 3, 27}, {12, 0});
constexpr Duration year = std::chrono::days(365);

class EventFetchTest : public ::testing::Test {
  protected:
    void put(const QByteArray& name, const QByteArray& lines) {
        folder.put("work/" + name + ".ics", "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:" + name + "\n" + lines +
                                                "END:VEVENT\nEND:VCALENDAR\n");
    }
    void open() { ASSERT_FALSE(database.open(paris).has_value()); }
    [[nodiscard]] items::EventsFound fetch(Instant from, Instant to,
                                           const items::FetchBudget& budget = {}) const {
        return items::fetchEvents(*database.snapshot(), {from, to, {}}, now, budget);
    }

    VdirFolder folder;
    vdir::VdirDatabase database{folder.nativeRoot()};
};

QByteArray manyTimes(int count, int minutes) {
    QByteArray result;
    for (int i = 0; i < count; ++i)
        result +=
            toIso8601(at("UTC", {2026, 3, 1}) + i * minutes * 1min).remove('-').remove(':').toLatin1() + ',';
    return result.chopped(1);
}

TEST_F(EventFetchTest, NoSeriesTakesMoreThanItsShare) {
    struct Case {
        const char* what;
        QByteArray lines;
        bool isCostly;
    };
    const QByteArray start = "DTSTART:20200101T000000Z\n";
    const QByteArray everySecond =
        "FREQ=YEARLY;BYDAY=MO,TU,WE,TH,FR,SA,SU;BYHOUR=0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,"
        "16,17,18,19,20,21,22,23;BYMINUTE=0,10,20,30,40,50;BYSECOND=0,1,2,3,4,5,6,7,8,9\n";
    const Case cases[] = {
        {"a huge count", start + "RRULE:FREQ=DAILY;COUNT=2147483647\n", false},
        {"a huge count of seconds", start + "RRULE:FREQ=SECONDLY;COUNT=2147483647\n", true},
        {"many extra dates", start + "RRULE:FREQ=MINUTELY;INTERVAL=9999\nRDATE:" + manyTimes(1000, 7) + "\n",
         false},
        {"very many extra dates", start + "RDATE:" + manyTimes(100'000, 1) + "\n", true},
        {"very many exceptions", start + "RRULE:FREQ=HOURLY\nEXDATE:" + manyTimes(100'000, 1) + "\n", true},
        {"no dates", start + "RRULE:FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30\n", false},
        {"no dates, hard to see", start + "RRULE:FREQ=SECONDLY;INTERVAL=60;BYSECOND=30\n", true},
        {"many dates that ended shortly before",
         "DTSTART:20260326T120000Z\nRRULE:FREQ=SECONDLY;UNTIL=20260326T122000Z\n", false},
        {"full lists", start + "RRULE:" + everySecond, true},
        {"an end that is far away", start + "DTEND:99991231T000000Z\nRRULE:FREQ=DAILY\n", false},
        {"many rules", start + QByteArray("RRULE:FREQ=HOURLY\nEXRULE:FREQ=HOURLY;INTERVAL=3\n").repeated(300),
         true},
    };
    for (const Case& each : cases) {
        put("a", each.lines);
        open();
        const auto answer = fetch(now - year, now + year);
        EXPECT_EQ(!answer.costly.empty(), each.isCostly) << each.what;
        EXPECT_EQ(answer.found.isCut, each.isCostly) << each.what;
        EXPECT_LE(answer.steps, 3 * EventSeries::mostSteps) << each.what;
        EXPECT_LE(answer.found.events.size() * sizeof(EKEventData), 5'000'000U) << each.what;
    }
}

TEST_F(EventFetchTest, WhatIsLeftOutIsWhatIsFarthestFromThePresent) {
    put("dense", "DTSTART:20200101T000000Z\nDURATION:PT1M\nRRULE:FREQ=MINUTELY\n");
    put("weekly", "DTSTART:20200101T000000Z\nDURATION:PT1H\nRRULE:FREQ=WEEKLY\n");
    put("single", "DTSTART:20260601T000000Z\nDURATION:PT1H\n");
    open();
    const auto rowsOf = [](const items::EventsFound& answer, const char* name) {
        return std::count_if(answer.found.events.begin(), answer.found.events.end(),
                             [&](const auto& data) { return data->eventIdentifier == QLatin1String(name); });
    };
    const auto near = fetch(now - 2h, now + 1h);
    EXPECT_EQ(rowsOf(near, "dense"), 180);
    EXPECT_FALSE(near.found.isCut);
    const auto whole = fetch(now - year, now + year);
    EXPECT_TRUE(whole.found.isCut);
    ASSERT_THAT(whole.costly, SizeIs(1));
    EXPECT_EQ(whole.costly[0]->identifier(), "dense");
    EXPECT_EQ(rowsOf(whole, "weekly"), 104);
    EXPECT_EQ(rowsOf(whole, "single"), 1);
    Instant first = Instant::max();
    Instant last = Instant::min();
    for (const auto& data : whole.found.events) {
        if (data->eventIdentifier == QLatin1String("dense")) {
            first = std::min(first, data->startDate);
            last = std::max(last, data->startDate);
        }
    }
    EXPECT_NEAR(static_cast<double>((last - now).count()), static_cast<double>((now - first).count()), 120e6);
    EXPECT_EQ(rowsOf(whole, "dense"), (last - first) / 1min + 1) << "without a hole";
    // A page further on has none of what the whole has cut off before.
    EXPECT_EQ(rowsOf(fetch(now + year, now + 4 * year), "dense"), 0);
    // An answer of few holds the nearest ones of all.
    const auto few = fetch(now - year, now + year, {.events = 10});
    EXPECT_THAT(few.found.events, SizeIs(10));
    EXPECT_TRUE(few.found.isCut);
    for (const auto& data : few.found.events)
        EXPECT_LE(std::chrono::abs(data->startDate - now), 10min);
}

TEST_F(EventFetchTest, ManySeriesShareWhatAnAnswerMaySpend) {
    for (int i = 0; i < 40; ++i)
        put("dense" + QByteArray::number(i), "DTSTART:20200101T000000Z\nRRULE:FREQ=MINUTELY\n");
    for (int i = 0; i < 20; ++i)
        put("never" + QByteArray::number(i),
            "DTSTART:20200101T000000Z\nRRULE:FREQ=SECONDLY;INTERVAL=60;BYSECOND=30\n");
    put("weekly", "DTSTART:20200103T090000Z\nDURATION:PT1H\nRRULE:FREQ=WEEKLY\n");
    open();
    const items::FetchBudget budget;
    const auto answer = fetch(now - year, now + year);
    EXPECT_EQ(answer.found.events.size(), budget.events);
    EXPECT_LE(answer.steps, budget.steps + EventSeries::mostSteps * 2);
    EXPECT_TRUE(std::any_of(answer.found.events.begin(), answer.found.events.end(), [](const auto& data) {
        return data->eventIdentifier == QLatin1String("weekly");
    }));
}

TEST_F(EventFetchTest, NamesACostlyFileOnceUntilItChanges) {
    put("dense", "DTSTART:20200101T000000Z\nRRULE:FREQ=MINUTELY\n");
    open();
    EXPECT_THAT(database.snapshot()->problems, IsEmpty());
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(database.events({now - year, now + year, {}}, now).isCut);
    ASSERT_THAT(database.snapshot()->problems, SizeIs(1));
    EXPECT_TRUE(database.snapshot()->problems[0].english.startsWith("“work/dense.ics” repeats too often"));
    put("dense", "DTSTART:20200101T000000Z\nRRULE:FREQ=WEEKLY\n");
    EXPECT_TRUE(database.refresh({.everything = true}, paris));
    EXPECT_FALSE(database.events({now - year, now + year, {}}, now).isCut);
    EXPECT_THAT(database.snapshot()->problems, IsEmpty());
}

}  // namespace
}  // namespace kestrant
