#include "calendar/CalendarRows.h"

#include "support/EventBuilders.h"

#include <gmock/gmock.h>

#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

const TimeZone paris(*TimeZone::named("Europe/Paris"));

TEST(EventRowID, EndsWithTheStartInSecondsWhichAlwaysHaveAFraction) {
    struct Case {
        Duration sinceEpoch;
        const char* expected;
    };
    for (const Case& param :
         {Case{1774612800s, "uid_1774612800.0"}, Case{1774612800s + 250ms, "uid_1774612800.25"},
          Case{0s, "uid_0.0"}, Case{1us, "uid_0.000001"}, Case{-62135596800s, "uid_-62135596800.0"}})
        EXPECT_EQ(eventRowID(QStringLiteral("uid"), Instant(param.sinceEpoch)).toStdString(), param.expected);
}

TEST(EventRow, TakesOverTheEventAndFillsWhatIsMissing) {
    EKEventData event = anEvent("uid").titled(QStringLiteral(" Lunch ")).lasting(Instant(3600s), 30min);
    event.eventIdentifier = QStringLiteral("event");
    event.location = QStringLiteral("Here");
    event.notes = QStringLiteral("Bring bread");
    const CalendarAppearance work{QStringLiteral("Work"), Color{1, 2, 3}};
    EXPECT_EQ(eventRow(event, &work, Language::english),
              (CalendarEventItem{.id = QStringLiteral("uid_3600.0"),
                                 .itemIdentifier = QStringLiteral("event"),
                                 .title = QStringLiteral(" Lunch "),
                                 .startDate = Instant(3600s),
                                 .endDate = Instant(5400s),
                                 .calendarTitle = QStringLiteral("Work"),
                                 .calendarColor = Color{1, 2, 3},
                                 .location = QStringLiteral("Here"),
                                 .notes = QStringLiteral("Bring bread")}));

    event.eventIdentifier.clear();
    event.title = QStringLiteral(" \n");
    const CalendarEventItem bare = eventRow(event, nullptr, Language::french);
    EXPECT_EQ(bare.itemIdentifier, QStringLiteral("uid"));
    EXPECT_EQ(bare.title, QStringLiteral("Événement sans titre"));
    EXPECT_EQ(bare.calendarColor, defaultEventColor);
}

TEST(ReminderRow, IsAHalfHourBlockOrAWholeDay) {
    const EKReminderData timed =
        aReminder("r").titled(QString()).due({2026, 3, 27}, {14, 0}).notes(QStringLiteral("n"));
    const auto due = reminderDueDate(timed, paris);
    ASSERT_EQ(due, at("Europe/Paris", {2026, 3, 27}, {14, 0}));
    EXPECT_EQ(reminderRow(timed, *due, nullptr, Language::english),
              (CalendarEventItem{.id = QStringLiteral("reminder_r"),
                                 .itemIdentifier = QStringLiteral("r"),
                                 .title = QStringLiteral("Untitled Reminder"),
                                 .startDate = *due,
                                 .endDate = *due + 1800s,
                                 .calendarTitle = QStringLiteral("Reminders"),
                                 .calendarColor = defaultReminderColor,
                                 .notes = QStringLiteral("n"),
                                 .isReminder = true}));
    const EKReminderData dateOnly = aReminder("d").due({2026, 3, 27});
    EXPECT_TRUE(reminderRow(dateOnly, *due, nullptr, Language::english).isAllDay);
    EXPECT_EQ(reminderIdentifier(QStringLiteral("reminder_reminder_x")), QStringLiteral("reminder_x"));
    EXPECT_EQ(reminderIdentifier(QStringLiteral("uid_0.0")), std::nullopt);
}

TEST(ReminderDueDate, FollowsTheZoneOfItsTimeAndNeedsAWholeDate) {
    EXPECT_EQ(reminderDueDate(aReminder("r").due({2026, 3, 27}, {9, 0}, "America/New_York"), paris),
              at("America/New_York", {2026, 3, 27}, {9, 0}));
    EXPECT_EQ(reminderDueDate(aReminder("r").due({2026, 3, 27}), paris), at("Europe/Paris", {2026, 3, 27}));
    EXPECT_EQ(reminderDueDate(aReminder("r"), paris), std::nullopt);
    EKReminderData timeAlone = aReminder("r");
    timeAlone.dueDateComponents = DateComponents{.hour = 9};
    EXPECT_EQ(reminderDueDate(timeAlone, paris), std::nullopt);
}

TEST(RowOrder, PutsWholeDaysFirstThenTheEarlierThenTheTitleAndKeepsEqualRowsInPlace) {
    const auto row = [](const char* title, Duration start, bool isAllDay = false) {
        CalendarEventItem item;
        item.title = QString::fromUtf8(title);
        item.startDate = Instant(start);
        item.isAllDay = isAllDay;
        return item;
    };
    const std::vector<CalendarEventItem> rows{
        row("Beta", 2h),  row("early", 1h), row("zoo", 9h, true), row("alpha", 2h), row("ÉTÉ", 3h),
        row("Alpha", 2h), row("été", 3h),   row("fin", 3h),       row("eau", 3h),   row("all day", 9h, true)};
    const QLocale french(QLocale::French);
    EXPECT_THAT(rowOrder(rows, TextCollation(french)), ElementsAre(9, 2, 1, 3, 5, 0, 8, 4, 6, 7));
}

}  // namespace
}  // namespace kestrant
