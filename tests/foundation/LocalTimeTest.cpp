#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"

#include <QDateTime>

#include <gmock/gmock.h>

#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

constexpr auto paris = "Europe/Paris";
constexpr auto saoPaulo = "America/Sao_Paulo";
constexpr auto lordHowe = "Australia/Lord_Howe";
constexpr auto stJohns = "America/St_Johns";
constexpr auto apia = "Pacific/Apia";

Instant utc(const char* text) {
    return parseIso8601(QLatin1String(text).toString()).value();
}

struct LocalTimeCase {
    const char* what;
    const char* zone;
    const char* local;
    const char* keepOffset;
    /// Where it is another one.
    const char* nextExisting = keepOffset;
};

TEST(LocalTimes, DenoteTheirInstantsAlsoWhereTheClockSkipsOrRepeatsThem) {
    const LocalTimeCase cases[] = {
        {"winter", paris, "2026-01-15T12:00", "2026-01-15T11:00:00Z"},
        {"summer", paris, "2026-07-15T12:00", "2026-07-15T10:00:00Z"},
        {"gap", paris, "2026-03-29T02:30", "2026-03-29T01:30:00Z", "2026-03-29T01:00:00Z"},
        {"start of the gap", paris, "2026-03-29T02:00", "2026-03-29T01:00:00Z"},
        {"end of the gap", paris, "2026-03-29T03:00", "2026-03-29T01:00:00Z"},
        {"before the gap", paris, "2026-03-29T01:59", "2026-03-29T00:59:00Z"},
        {"fold", paris, "2026-10-25T02:30", "2026-10-25T00:30:00Z"},
        {"after the fold", paris, "2026-10-25T03:00", "2026-10-25T02:00:00Z"},
        {"skipped midnight", saoPaulo, "2018-11-04T00:00", "2018-11-04T03:00:00Z"},
        {"after midnight", saoPaulo, "2018-11-04T00:20", "2018-11-04T03:20:00Z", "2018-11-04T03:00:00Z"},
        {"fold", saoPaulo, "2018-02-17T23:30", "2018-02-18T01:30:00Z"},
        {"no DST since 2019", saoPaulo, "2030-01-15T12:00", "2030-01-15T15:00:00Z"},
        {"gap of half an hour", lordHowe, "2026-10-04T02:15", "2026-10-03T15:45:00Z", "2026-10-03T15:30:00Z"},
        {"fold of half an hour", lordHowe, "2026-04-05T01:45", "2026-04-04T14:45:00Z"},
        {"half an hour after it", lordHowe, "2026-04-05T02:00", "2026-04-04T15:30:00Z"},
        {"skipped day", apia, "2011-12-30T12:00", "2011-12-30T22:00:00Z", "2011-12-30T10:00:00Z"},
        {"after the listed transitions", paris, "2045-07-01T12:00", "2045-07-01T10:00:00Z"},
        {"gap by rule", paris, "2050-03-27T02:30", "2050-03-27T01:30:00Z", "2050-03-27T01:00:00Z"},
        {"gap by rule", lordHowe, "2060-10-03T02:15", "2060-10-02T15:45:00Z", "2060-10-02T15:30:00Z"},
        {"gap in the far future", paris, "3000-03-30T02:30", "3000-03-30T01:30:00Z", "3000-03-30T01:00:00Z"},
        {"fold in the far future", paris, "9999-10-31T02:30", "9999-10-31T00:30:00Z"},
        {"local mean time", paris, "1800-01-01T00:09", "1799-12-31T23:59:39Z"},
        {"first year", paris, "0001-01-02T00:00", "0001-01-01T23:50:39Z"},
        {"UTC", "UTC", "2026-03-29T02:30", "2026-03-29T02:30:00Z"},
        {"fixed offset", "UTC+05:45", "2026-03-29T02:30", "2026-03-28T20:45:00Z"},
    };
    for (const LocalTimeCase& testCase : cases) {
        const TimeZone zone = *TimeZone::named(testCase.zone);
        const QDateTime local =
            QDateTime::fromString(QLatin1String(testCase.local).toString() + u'Z', Qt::ISODate);
        const auto at = [&](GapPolicy policy) {
            return toIso8601(zone.instantAt(local.date(), local.time(), policy));
        };
        EXPECT_EQ(at(GapPolicy::keepOffset), testCase.keepOffset) << testCase.zone << ", " << testCase.what;
        EXPECT_EQ(at(GapPolicy::nextExisting), testCase.nextExisting)
            << testCase.zone << ", " << testCase.what;
    }
}

TEST(LocalTimes, OfInstantsLeadBackToThemExceptInTheSecondPassOfAFold) {
    for (const char* name : {paris, saoPaulo, lordHowe, stJohns, apia, "Africa/Casablanca"}) {
        const TimeZone zone = *TimeZone::named(name);
        for (const int year : {2010, 2011, 2018, 2038}) {
            const Instant start = zone.startOfDay(QDate(year, 1, 1));
            for (Instant instant = start; instant < start + 366 * 24h; instant += 30min) {
                const Instant back = zone.instantAt(zone.dayOf(instant), zone.timeOf(instant));
                if (back == instant)
                    continue;
                EXPECT_LT(back, instant) << name << ' ' << toIso8601(instant).toStdString();
                EXPECT_EQ(zone.timeOf(back), zone.timeOf(instant));
                EXPECT_EQ(zone.dayOf(back), zone.dayOf(instant));
            }
        }
    }
}

struct DayCase {
    const char* zone;
    QDate day;
    const char* start;
    Duration length;
};

TEST(Days, BeginAtTheirFirstInstantAndAreAsLongAsTheyAre) {
    const DayCase cases[] = {
        {paris, {2026, 3, 27}, "2026-03-26T23:00:00Z", 24h},
        {paris, {2026, 3, 29}, "2026-03-28T23:00:00Z", 23h},
        {paris, {2026, 10, 25}, "2026-10-24T22:00:00Z", 25h},
        {saoPaulo, {2018, 11, 4}, "2018-11-04T03:00:00Z", 23h},
        {saoPaulo, {2018, 2, 17}, "2018-02-17T02:00:00Z", 25h},
        {lordHowe, {2026, 4, 5}, "2026-04-04T13:00:00Z", 24h + 30min},
        {stJohns, {2010, 11, 7}, "2010-11-07T02:30:00Z", 25h},
    };
    for (const DayCase& testCase : cases) {
        const TimeZone zone = *TimeZone::named(testCase.zone);
        const Instant start = zone.startOfDay(testCase.day);
        EXPECT_EQ(toIso8601(start), testCase.start) << testCase.zone;
        EXPECT_EQ(zone.startOfDay(testCase.day.addDays(1)) - start, testCase.length) << testCase.zone;
        EXPECT_EQ(zone.dayOf(start), testCase.day) << testCase.zone;
        EXPECT_EQ(zone.dayOf(start - 1us), testCase.day.addDays(-1)) << testCase.zone;
    }
}

TEST(Years, RunFromNewYearToNewYear) {
    const TimeZone zone = *TimeZone::named(paris);
    const DateInterval year{utc("2025-12-31T23:00:00Z"), utc("2026-12-31T23:00:00Z")};
    EXPECT_EQ(zone.yearContaining(year.start), year);
    EXPECT_EQ(zone.yearContaining(year.end - 1us), year);
    EXPECT_EQ(zone.yearContaining(year.end).start, year.end);
}

struct ComponentsCase {
    const char* what;
    DateComponents components;
    std::optional<const char*> instant;
};

TEST(DateComponentsInParis, DenoteInstants) {
    const QDate day(2026, 3, 27);
    const QTime time(14, 30);
    const auto timed = [&](const char* zone) {
        return DateComponents::fromDateTime(day, time, TimeZone::named(zone));
    };
    DateComponents hourOnly = DateComponents::fromDate(day);
    hourOnly.hour = 14;
    DateComponents leapSecond = timed("");
    leapSecond.second = 60;
    const ComponentsCase cases[] = {
        {"whole day", DateComponents::fromDate(day), "2026-03-26T23:00:00Z"},
        {"floating", timed(""), "2026-03-27T13:30:00Z"},
        {"own zone", timed("Europe/Paris"), "2026-03-27T13:30:00Z"},
        {"other zone", timed("America/New_York"), "2026-03-27T18:30:00Z"},
        {"UTC", timed("UTC"), "2026-03-27T14:30:00Z"},
        {"Windows name", timed("Pacific Standard Time"), "2026-03-27T21:30:00Z"},
        {"unknown zone", timed("Atlantis/Poseidonis"), "2026-03-27T13:30:00Z"},
        {"hour alone", hourOnly, "2026-03-27T13:00:00Z"},
        {"leap second", leapSecond, "2026-03-27T13:30:59Z"},
        {"no such day", {.year = 2026, .month = 2, .day = 29}, {}},
        {"no day", {.year = 2026, .month = 2}, {}},
        {"no such time", {.year = 2026, .month = 2, .day = 1, .hour = 24}, {}},
        {"time without a day", {.hour = 12}, {}},
        {"year 0", {.year = 0, .month = 1, .day = 1}, {}},
        {"year 10000", {.year = 10000, .month = 1, .day = 1}, {}},
    };
    const TimeZone zone = *TimeZone::named(paris);
    for (const ComponentsCase& testCase : cases) {
        const auto instant = zone.instantFrom(testCase.components);
        EXPECT_EQ(instant ? std::optional(toIso8601(*instant)) : std::nullopt,
                  testCase.instant ? std::optional(QString(QLatin1String(*testCase.instant))) : std::nullopt)
            << testCase.what;
    }
}

TEST(DateComponentsInParis, OfAnInstantNameTheZone) {
    EXPECT_EQ(TimeZone::named(paris)->componentsOf(utc("2026-03-27T13:30:05Z")),
              (DateComponents{.year = 2026,
                              .month = 3,
                              .day = 27,
                              .hour = 14,
                              .minute = 30,
                              .second = 5,
                              .timeZone = TimeZone::named("Europe/Paris")}));
}

}  // namespace
}  // namespace kestrant
