#include "calendar/CalendarEditing.h"

#include "calendar/CalendarRows.h"
#include "support/EventBuilders.h"

#include <gmock/gmock.h>

#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using Code = CalendarError::Code;

const TimeZone zone(*TimeZone::named("Europe/Paris"));

Instant paris(QDate day, QTime time = {0, 0}) {
    return at("Europe/Paris", day, time);
}

struct Span {
    Instant start;
    Instant end;
    bool operator==(const Span&) const = default;
};

TEST(NewEvent, LastsHalfAnHourOrADayAtLeast) {
    const Instant ten = paris({2026, 3, 28}, {10, 0});
    const Instant saturday = paris({2026, 3, 28});
    const Instant sunday = paris({2026, 3, 29});
    const Instant monday = paris({2026, 3, 30});
    struct Case {
        const char* name;
        bool isAllDay;
        Span asked;
        Span given;
    };
    for (const Case& param : {
             Case{"too short", false, {ten, ten + 10min}, {ten, ten + 30min}},
             Case{"long enough", false, {ten, ten + 2h}, {ten, ten + 2h}},
             Case{"backwards", false, {ten, ten - 2h}, {ten, ten + 30min}},
             Case{"a day without length", true, {saturday, saturday}, {saturday, sunday}},
             Case{"a day of 23 hours", true, {sunday, sunday}, {sunday, monday}},
             Case{"a day with times", true, {ten, ten + 2h}, {saturday, sunday}},
             Case{"two days", true, {saturday, monday}, {saturday, monday}},
         }) {
        const auto data = newEventData({.title = QStringLiteral("x"),
                                        .startDate = param.asked.start,
                                        .endDate = param.asked.end,
                                        .isAllDay = param.isAllDay},
                                       zone);
        ASSERT_TRUE(data) << param.name;
        EXPECT_EQ((Span{data->startDate, data->endDate}), param.given) << param.name;
        EXPECT_EQ(data->timeZone.has_value(), !param.isAllDay) << param.name;
    }
}

TEST(EventEdit, IsRefusedOrBroughtIntoForm) {
    const Instant ten = paris({2026, 3, 28}, {10, 0});
    const Instant saturday = paris({2026, 3, 28});
    const Instant sunday = paris({2026, 3, 29});
    struct Case {
        const char* name;
        bool isAllDay;
        Span asked;
        tl::expected<Span, Code> given;
    };
    for (const Case& param : {
             Case{"timed", false, {ten, ten + 1min}, Span{ten, ten + 1min}},
             Case{"no length", false, {ten, ten}, tl::unexpected(Code::invalidDateRange)},
             Case{"backwards", false, {ten, ten - 1min}, tl::unexpected(Code::invalidDateRange)},
             Case{"an unchanged day", true, {saturday, sunday}, Span{saturday, sunday}},
             Case{"times within a day", true, {ten, ten + 2h}, Span{saturday, sunday}},
             Case{"times of two days", true, {ten, ten + 24h}, Span{saturday, sunday}},
             Case{"backwards within a day", true, {ten, ten - 2h}, Span{saturday, sunday}},
             Case{"days backwards", true, {sunday, saturday}, tl::unexpected(Code::invalidDateRange)},
         }) {
        const auto result = validated({.title = QStringLiteral(" x "),
                                       .startDate = param.asked.start,
                                       .endDate = param.asked.end,
                                       .isAllDay = param.isAllDay},
                                      zone);
        ASSERT_EQ(result.has_value(), param.given.has_value()) << param.name;
        if (!result) {
            EXPECT_EQ(result.error().code, param.given.error()) << param.name;
            continue;
        }
        EXPECT_EQ((Span{result->startDate, result->endDate}), *param.given) << param.name;
        EXPECT_EQ(result->title, QStringLiteral("x"));
    }
    EXPECT_EQ(validated({.title = QStringLiteral(" \n\t")}, zone).error().code, Code::emptyTitle);
}

TEST(EventEdit, OfNothingChangesNothing) {
    EKEventData timed = anEvent("a").lasting(paris({2026, 3, 28}, {10, 0}), 1h);
    timed.timeZone = TimeZone::named("America/New_York");
    timed.notes = QStringLiteral("n");
    for (const EKEventData& event : {timed, EKEventData(anEvent("b").allDay({2026, 3, 28}, {2026, 3, 30}))}) {
        EKEventData saved = event;
        apply(*validated(editDetails(event), zone), zone, saved);
        EXPECT_EQ(saved, event);
    }
}

TEST(EventEdit, WritesATimeInTheOwnZoneAndBlankTextsAsAbsent) {
    EKEventData event = anEvent("a").allDay({2026, 3, 28}, {2026, 3, 29});
    event.location = QStringLiteral("Here");
    CalendarEventEditDetails details = editDetails(event);
    details.isAllDay = false;
    details.location = QStringLiteral("  ");
    details.notes = QStringLiteral(" n ");
    apply(*validated(details, zone), zone, event);
    EXPECT_EQ(event.timeZone, TimeZone::named("Europe/Paris"));
    EXPECT_EQ(event.location, std::nullopt);
    EXPECT_EQ(event.notes, QStringLiteral("n"));
    details.isAllDay = true;
    apply(*validated(details, zone), zone, event);
    EXPECT_EQ(event.timeZone, std::nullopt);
}

TEST(EventBehindARow, IsRecognisedByItsStartUnlessItIsTheOnlyOne) {
    const Instant start = paris({2026, 3, 28}, {10, 0});
    const CalendarEventItem row = eventRow(anEvent("a").lasting(start, 1h), nullptr, Language::english);
    struct Case {
        Duration moved;
        bool isSame;
    };
    for (const Case& param :
         {Case{4min, true}, Case{-4min, true}, Case{299s, true}, Case{300s, false}, Case{-6min, false}}) {
        EKEventData found = anEvent("a").lasting(start + param.moved, 1h);
        EXPECT_TRUE(isEventBehind(row, found));
        EXPECT_EQ(isOccurrenceBehind(row, found), param.isSame);
        found.occurrenceDate = start;
        EXPECT_EQ(isEventBehind(row, found), param.isSame) << "one of extra dates recurs without a rule";
        found.recurrenceRules = {EKRecurrenceRule::every(EKRecurrenceFrequency::daily)};
        EXPECT_EQ(isEventBehind(row, found), param.isSame);
    }
    EXPECT_FALSE(isOccurrenceBehind(row, anEvent("other").lasting(start, 1h)));
    EXPECT_EQ(searchIntervalFor(row), (DateInterval{start - 2min, start + 62min}));
}

}  // namespace
}  // namespace kestrant
