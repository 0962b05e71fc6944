#include "ui/calendar/CalendarRowTexts.h"

#include "support/EventBuilders.h"

#include <gmock/gmock.h>

using namespace kestrant;

namespace {

const QLocale english(QLocale::English, QLocale::UnitedStates);
const QLocale french(QLocale::French, QLocale::France);
const QLocale british(QLocale::English, QLocale::UnitedKingdom);

TimeStyle style(Language language = Language::english, const QLocale& personal = british) {
    return timeStyle(*TimeZone::named("Europe/Paris"), language,
                     language == Language::french ? french : english, personal);
}

CalendarEventItem timed(QDate firstDay, QTime start, QDate lastDay, QTime end) {
    CalendarEventItem item;
    item.startDate = at("Europe/Paris", firstDay, start);
    item.endDate = at("Europe/Paris", lastDay, end);
    return item;
}

CalendarEventItem allDay(QDate firstDay, QDate end) {
    CalendarEventItem item = timed(firstDay, {0, 0}, end, {0, 0});
    item.isAllDay = true;
    return item;
}

const QDate saturday(2026, 11, 21);

TEST(CalendarRowTexts, SayWhenSomethingIsOnEachOfItsDays) {
    struct Case {
        const char* what;
        CalendarEventItem item;
        int day;
        const char* span;
        const char* brief;
        const char* french;
    };
    const auto day = [](int distance) { return saturday.addDays(distance); };
    const CalendarEventItem lesson = timed(saturday, {9, 30}, saturday, {10, 15});
    const CalendarEventItem instant = timed(saturday, {9, 30}, saturday, {9, 30});
    const CalendarEventItem toMidnight = timed(saturday, {22, 0}, day(1), {0, 0});
    const CalendarEventItem party = timed(saturday, {22, 0}, day(1), {2, 0});
    const CalendarEventItem trip = timed(saturday, {22, 0}, day(3), {8, 0});
    const CalendarEventItem longTrip = timed(saturday, {22, 0}, day(12), {8, 0});
    const CalendarEventItem birthday = allDay(saturday, day(1));
    const CalendarEventItem fair = allDay(saturday, day(3));
    const std::vector<Case> cases{
        {"one day", lesson, 0, "09:30 – 10:15", "09:30", "09:30 – 10:15"},
        {"no length", instant, 0, "09:30", "09:30", "09:30"},
        {"to midnight", toMidnight, 0, "22:00 – 00:00", "22:00", "22:00 – 00:00"},
        {"past midnight", party, 0, "22:00 – Sun 02:00", "22:00", "22:00 – dim. 02:00"},
        {"past midnight, next day", party, 1, "until 02:00", "– 02:00", "jusqu’à 02:00"},
        {"between", trip, 1, "until Tue", "all day", "jusqu’à mar."},
        {"last day", trip, 3, "until 08:00", "– 08:00", "jusqu’à 08:00"},
        {"more than a week", longTrip, 0, "22:00 – 3 Dec 08:00", "22:00", "22:00 – 3 déc. 08:00"},
        {"more than a week, between", longTrip, 1, "until 3 Dec", "all day", "jusqu’à 3 déc."},
        {"whole day", birthday, 0, "all day", "all day", "toute la journée"},
        {"whole days", fair, 0, "until Mon", "all day", "jusqu’à lun."},
        {"whole days, last", fair, 2, "all day", "all day", "toute la journée"},
    };
    for (const Case& c : cases) {
        const RowTimeTexts texts = rowTimeTexts(c.item, day(c.day), style());
        EXPECT_EQ(texts.span.toStdString(), c.span) << c.what;
        EXPECT_EQ(texts.brief.toStdString(), c.brief) << c.what;
        EXPECT_EQ(rowTimeTexts(c.item, day(c.day), style(Language::french)).span.toStdString(), c.french)
            << c.what;
    }
}

TEST(CalendarRowTexts, TellTheHalvesOfTheDayWhereThePersonCountsInThem) {
    const TimeStyle halves = style(Language::english, english);
    const auto span = [&](QTime start, QTime end) {
        return rowTimeTexts(timed(saturday, start, saturday, end), saturday, halves)
            .span.replace(QChar(QChar::Nbsp), u' ')
            .toStdString();
    };
    EXPECT_EQ(span({9, 30}, {10, 15}), "9:30 – 10:15 AM");
    EXPECT_EQ(span({11, 30}, {12, 15}), "11:30 AM – 12:15 PM");
    EXPECT_EQ(span({0, 0}, {0, 30}), "12:00 – 12:30 AM");
    EXPECT_EQ(timeText(at("Europe/Paris", saturday, {14, 0}), style(Language::french, english)),
              QStringLiteral("14:00"));
}

TEST(CalendarRowTexts, SayThatAReminderWithoutATimeTakesTheDay) {
    CalendarEventItem reminder;
    reminder.isReminder = true;
    reminder.isAllDay = true;
    reminder.startDate = at("Europe/Paris", saturday);
    reminder.endDate = reminder.startDate + std::chrono::minutes(30);
    EXPECT_EQ(rowTimeTexts(reminder, saturday, style()).span, QStringLiteral("all day"));
}

}  // namespace
