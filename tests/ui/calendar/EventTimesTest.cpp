#include "ui/calendar/EventTimes.h"

#include "ui/Program.h"

#include <gmock/gmock.h>

#include <functional>

using namespace kestrant;
using namespace kestrant::test;

namespace {

struct Form : Program {
    EventTimes times{time, currentZone, localizer};

    [[nodiscard]] Instant paris(QDate day, QTime at = {0, 0}) const {
        return currentZone.zone().instantAt(day, at);
    }
    /// "2026-11-21 14:00 - 2026-11-21 15:00"
    [[nodiscard]] std::string shown() {
        const auto side = [&](DayPicker* day, const QString& at) {
            return day->isoDay() + (times.isAllDay() ? QString() : u' ' + at);
        };
        return (side(times.startDay(), times.startTime()) + QStringLiteral(" - ") +
                side(times.endDay(), times.endTime()))
            .toStdString();
    }
};

const QDate saturday(2026, 11, 21);

TEST(EventTimes, LeaveWhatIsNotChangedExactlyAsItIs) {
    Form form;
    const auto utc = [](const char16_t* text) { return *parseIso8601(text); };
    const std::vector<EventTimes::Span> spans{
        {form.paris(saturday, {14, 0}), form.paris(saturday, {15, 0}), false},
        {form.paris(saturday, {14, 0, 17}), form.paris(saturday, {15, 59, 59}), false},
        {form.paris(saturday, {14, 0}), form.paris(saturday, {14, 0}), false},
        // The repeated hour: from its first half into its second, and within the second.
        {utc(u"2026-10-25T00:50:00Z"), utc(u"2026-10-25T01:10:00Z"), false},
        {utc(u"2026-10-25T01:10:00Z"), utc(u"2026-10-25T01:40:00Z"), false},
        {form.paris(saturday), form.paris({2026, 11, 24}), true},
        {form.paris({2026, 10, 25}), form.paris({2026, 10, 26}), true},
        {utc(u"1969-12-31T22:30:00Z"), utc(u"1970-01-01T10:00:00Z"), false},
    };
    for (const EventTimes::Span& span : spans) {
        form.times.show(span);
        // Looking at the other form of the event changes nothing either.
        form.times.setAllDay(!span.isAllDay);
        form.times.setAllDay(span.isAllDay);
        form.times.setStartTime(form.times.startTime() + u' ');
        const auto result = form.times.span();
        ASSERT_TRUE(result.has_value()) << form.shown();
        EXPECT_EQ(*result, span) << form.shown();
    }
}

TEST(EventTimes, MoveTheEndAlongWithTheStart) {
    struct Case {
        const char* before;
        EventTimes::Span span;
        std::function<void(EventTimes&)> change;
        const char* after;
    };
    Form form;
    const auto day = [](const char* iso) {
        return [iso](EventTimes& times) { times.startDay()->setIsoDay(QString::fromUtf8(iso)); };
    };
    const auto time = [](const char* typed) {
        return [typed](EventTimes& times) { times.setStartTime(QString::fromUtf8(typed)); };
    };
    const EventTimes::Span hour{form.paris(saturday, {14, 0}), form.paris(saturday, {15, 0}), false};
    const EventTimes::Span overnight{form.paris(saturday, {22, 0}), form.paris({2026, 11, 22}, {1, 30}),
                                     false};
    const EventTimes::Span weekend{form.paris({2026, 10, 16}, {18, 0}), form.paris({2026, 10, 18}, {16, 0}),
                                   false};
    const EventTimes::Span days{form.paris(saturday), form.paris({2026, 11, 24}), true};
    const std::vector<Case> cases{
        {"later day", hour, day("2026-11-30"), "2026-11-30 14:00 - 2026-11-30 15:00"},
        {"earlier time", hour, time("9h30"), "2026-11-21 09:30 - 2026-11-21 10:30"},
        {"across midnight", hour, time("23:30"), "2026-11-21 23:30 - 2026-11-22 00:30"},
        {"back over midnight", overnight, time("20"), "2026-11-21 20:00 - 2026-11-21 23:30"},
        {"into a change of the clock", weekend, day("2026-10-23"), "2026-10-23 18:00 - 2026-10-25 16:00"},
        {"whole days", days, day("2026-12-30"), "2026-12-30 - 2027-01-01"},
        {"the end alone", hour, [](EventTimes& times) { times.setEndTime(QStringLiteral("1800")); },
         "2026-11-21 14:00 - 2026-11-21 18:00"},
        {"both typed at once", hour,
         [](EventTimes& times) {
             times.setStartTime(QStringLiteral("16"));
             times.setEndTime(QStringLiteral("16:45"));
         },
         "2026-11-21 16:00 - 2026-11-21 16:45"},
    };
    for (const Case& c : cases) {
        form.times.show(c.span);
        c.change(form.times);
        form.times.applyTyped();
        EXPECT_EQ(form.shown(), c.after) << c.before;
    }
}

TEST(EventTimes, KeepTheTimesOfDayWhileTheEventIsAWholeDay) {
    Form form;
    form.times.show({form.paris(saturday, {14, 0}), form.paris(saturday, {15, 15}), false});
    form.times.setAllDay(true);
    EXPECT_EQ(*form.times.span(), (EventTimes::Span{form.paris(saturday), form.paris({2026, 11, 22}), true}));
    form.times.startDay()->setIsoDay(QStringLiteral("2026-11-28"));
    form.times.setAllDay(false);
    EXPECT_EQ(form.shown(), "2026-11-28 14:00 - 2026-11-28 15:15");

    // One that has none is given some.
    form.times.show({form.paris(saturday), form.paris({2026, 11, 23}), true});
    EXPECT_EQ(form.shown(), "2026-11-21 - 2026-11-22");
    form.times.setAllDay(false);
    EXPECT_EQ(form.shown(), "2026-11-21 09:00 - 2026-11-22 10:00");
}

TEST(EventTimes, NeverEndBeforeTheyBeginForHavingBeenAWholeDay) {
    Form form;
    form.times.show({form.paris(saturday, {22, 0}), form.paris({2026, 11, 22}, {1, 0}), false});
    form.times.setAllDay(true);
    form.times.endDay()->setIsoDay(QStringLiteral("2026-11-21"));
    form.times.setAllDay(false);
    EXPECT_EQ(form.shown(), "2026-11-21 22:00 - 2026-11-22 01:00");
}

TEST(EventTimes, SayWhatIsWrongAndKeepItAsItWasWritten) {
    struct Case {
        std::function<void(EventTimes&)> change;
        const char* reason;
        const char* shown;
    };
    Form form;
    const std::vector<Case> cases{
        {[](EventTimes& times) { times.setStartTime(QStringLiteral("soon")); }, "Enter the time like 9:30.",
         "2026-11-21 soon - 2026-11-21 15:00"},
        {[](EventTimes& times) { times.setEndTime(QString()); }, "Enter the time like 9:30.",
         "2026-11-21 14:00 - 2026-11-21 "},
        {[](EventTimes& times) { times.setEndTime(QStringLiteral("13:59")); },
         "The end must be after the start.", "2026-11-21 14:00 - 2026-11-21 13:59"},
        {[](EventTimes& times) {
             times.setAllDay(true);
             times.endDay()->setIsoDay(QStringLiteral("2026-11-20"));
         },
         "The end must be after the start.", "2026-11-21 - 2026-11-20"},
    };
    for (const Case& c : cases) {
        form.times.show({form.paris(saturday, {14, 0}), form.paris(saturday, {15, 0}), false});
        c.change(form.times);
        const auto span = form.times.span();
        ASSERT_FALSE(span.has_value()) << c.shown;
        EXPECT_EQ(span.error().english.toStdString(), c.reason);
        EXPECT_EQ(form.shown(), c.shown);
    }
    // A time of day that cannot be read does not matter to a whole day.
    form.times.setAllDay(false);
    form.times.setStartTime(QStringLiteral("soon"));
    form.times.endDay()->setIsoDay(QStringLiteral("2026-11-21"));
    form.times.setAllDay(true);
    EXPECT_TRUE(form.times.span().has_value());
}

TEST(EventTimes, BeginWithTheNextHalfHour) {
    struct Case {
        Duration later;
        const char* shown;
    };
    const std::vector<Case> cases{
        {Duration(0), "2026-11-21 15:00 - 2026-11-21 16:00"},
        {std::chrono::minutes(31), "2026-11-21 15:30 - 2026-11-21 16:30"},
        {std::chrono::minutes(29), "2026-11-21 15:00 - 2026-11-21 16:00"},
        {std::chrono::hours(9) + std::chrono::minutes(10), "2026-11-22 00:00 - 2026-11-22 01:00"},
    };
    for (const Case& c : cases) {
        Form form;
        form.time.jumpWall(c.later);
        form.times.showNextHalfHour();
        EXPECT_EQ(form.shown(), c.shown);
    }
}

}  // namespace
