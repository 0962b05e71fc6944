#include "ui/WithEvents.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

using CalendarProgram = WithEvents<Program>;

TEST(CalendarViewModel, ShowsTheDaysWithTheirRows) {
    CalendarProgram program;
    program.addAllDay("Birthday", 0);
    program.add("Piano", 0, {14, 0}, 60);
    program.add("Market", 0, {9, 0}, 60);
    program.add("Party", 1, {23, 0}, 120);
    program.Program::add(QStringLiteral("Water the plants"), 1, {9, 0});
    program.load();
    EXPECT_THAT(program.lines(),
                ElementsAre(QStringLiteral("# TODAY · SAT 21"), QStringLiteral("all day Birthday"),
                            QStringLiteral("14:00 – 15:00 Piano"), QStringLiteral("# TOMORROW · SUN 22"),
                            QStringLiteral("09:00 Water the plants"),
                            QStringLiteral("23:00 – Mon 01:00 Party"), QStringLiteral("# MON 23"),
                            QStringLiteral("until 01:00 Party")));
    program.preferences.setLanguage(Language::french);
    program.settle();
    EXPECT_THAT(
        program.lines(),
        ElementsAre(QStringLiteral("# AUJOURD’HUI · SAM. 21"), QStringLiteral("toute la journée Birthday"),
                    QStringLiteral("14:00 – 15:00 Piano"), QStringLiteral("# DEMAIN · DIM. 22"),
                    QStringLiteral("09:00 Water the plants"), QStringLiteral("23:00 – lun. 01:00 Party"),
                    QStringLiteral("# LUN. 23"), QStringLiteral("jusqu’à 01:00 Party")));
}

TEST(CalendarViewModel, TellsARowInWords) {
    CalendarProgram program;
    EKEventData piano = program.event("Piano  lesson\n")
                            .lasting(program.time.now() - std::chrono::minutes(30), std::chrono::hours(1));
    piano.location = QStringLiteral("Music school,\n2 Hill Road");
    program.database.putEvent(piano);
    program.load();
    const CalendarRow row = program.days.rows()->rowAt(1);
    EXPECT_EQ(row.title, QStringLiteral("Piano lesson"));
    EXPECT_EQ(row.place, QStringLiteral("Music school, 2 Hill Road"));
    EXPECT_EQ(row.color, QColor(0x30, 0xd1, 0x58));
    EXPECT_EQ(row.spokenText,
              QStringLiteral("Piano lesson, 14:00 – 15:00, now, Music school, 2 Hill Road, Home, Saturday, "
                             "November 21, 2026"));
}

TEST(CalendarViewModel, FollowsTheTimeOfDay) {
    CalendarProgram program;
    program.add("Market", 0, {9, 0}, 60);
    program.add("Piano", 0, {15, 0}, 60);
    program.add("Dinner", 0, {19, 0}, 60);
    program.Program::add(QStringLiteral("Call"), 0, {10, 0});
    program.load();
    program.days.setShowsAllEvents(true);
    program.settle();
    EXPECT_TRUE(program.row("Market").isOver);
    EXPECT_FALSE(program.row("Call").isOver);
    EXPECT_TRUE(program.row("Call").isOverdue);
    EXPECT_EQ(program.row("Piano").nowLine, QStringLiteral("above"));
    EXPECT_EQ(program.panel.nextEventText(), QStringLiteral("15:00"));

    program.time.advance(std::chrono::minutes(45));
    EXPECT_TRUE(program.row("Piano").isNow);
    EXPECT_EQ(program.row("Piano").nowLine, QString());
    EXPECT_NEAR(program.row("Piano").progress, 0.25, 0.001);
    EXPECT_EQ(program.panel.nextEventText(), QStringLiteral("19:00"));

    program.time.advance(std::chrono::hours(1));
    EXPECT_TRUE(program.row("Piano").isOver);
    EXPECT_EQ(program.row("Dinner").nowLine, QStringLiteral("above"));
    program.time.advance(std::chrono::hours(5));
    EXPECT_EQ(program.row("Dinner").nowLine, QStringLiteral("below"));
    EXPECT_EQ(program.panel.nextEventText(), QString());
}

TEST(CalendarViewModel, TellsTheNextEventOnlyWhileItsTimeCannotBeTakenForAnotherDays) {
    CalendarProgram program;
    program.add("Breakfast", 1, {8, 0}, 60);
    program.load();
    EXPECT_EQ(program.panel.nextEventText(), QString());
    program.time.advance(std::chrono::hours(6));
    program.interaction.pointerEntered();
    EXPECT_EQ(program.panel.nextEventText(), QStringLiteral("08:00"));
    program.preferences.showCalendar.set(false);
    EXPECT_EQ(program.panel.nextEventText(), QString());
}

TEST(CalendarViewModel, SaysWhatIsShownInsteadOfRows) {
    CalendarProgram program;
    EXPECT_EQ(program.days.content(), QStringLiteral("loading"));
    program.database.setAuthorizationStatus(EKAuthorizationStatus::notDetermined);
    program.database.setFailure(InMemoryEventStore::Operation::requestAccess,
                                EKError{EKError::Code::storage, text("Unreadable.", "Illisible.")});
    program.calendarStore.requestAccess();
    EXPECT_EQ(program.days.content(), QStringLiteral("requesting"));
    program.settle();
    EXPECT_EQ(program.days.content(), QStringLiteral("failed"));
    EXPECT_EQ(program.days.failureText(), QStringLiteral("Unreadable."));

    program.database.setFailure(InMemoryEventStore::Operation::requestAccess, {});
    program.days.retry();
    program.settle();
    EXPECT_EQ(program.days.content(), QStringLiteral("empty"));
    program.add("Piano", 1, {14, 0}, 60);
    program.settle();
    EXPECT_EQ(program.days.content(), QStringLiteral("rows"));

    program.database.setAuthorizationStatus(EKAuthorizationStatus::denied);
    program.calendarStore.requestAccess();
    EXPECT_EQ(program.days.content(), QStringLiteral("denied"));
}

TEST(CalendarViewModel, BeginsANewDayAtMidnight) {
    CalendarProgram program;
    program.add("Piano", 1, {14, 0}, 60);
    program.load();
    EXPECT_EQ(program.days.today(), program.isoDay(0));
    QSignalSpy changed(&program.days, &CalendarViewModel::weekChanged);
    program.time.advance(std::chrono::hours(10));
    EXPECT_EQ(program.days.today(), program.isoDay(1));
    EXPECT_GE(changed.count(), 1);
    EXPECT_THAT(program.lines(),
                ElementsAre(QStringLiteral("# TODAY · SUN 22"), QStringLiteral("14:00 – 15:00 Piano")));
}

TEST(CalendarViewModel, OffersEveryDayOfTheWeekToCardsThatAreCarried) {
    CalendarProgram program;
    program.add("Piano", 2, {14, 0}, 60);
    for (int event = 0; event < 9; ++event)
        program.add(qPrintable(QString::number(event)), 3, {14, 0}, 60);
    program.load();
    const QVariantList week = program.days.week();
    ASSERT_EQ(week.size(), 7);
    QStringList days;
    QList<qsizetype> colors;
    for (const QVariant& each : week) {
        days.append(each.toMap().value(QStringLiteral("day")).toString());
        colors.append(each.toMap().value(QStringLiteral("colors")).toList().size());
    }
    EXPECT_EQ(days.first(), program.isoDay(0));
    EXPECT_EQ(days.last(), program.isoDay(6));
    EXPECT_THAT(colors, ElementsAre(0, 0, 1, 4, 0, 0, 0));
}

TEST(CalendarViewModel, HandsOutTheItemsOfRowsAndNothingForHeadings) {
    CalendarProgram program;
    program.add("Piano", 1, {14, 0}, 60);
    program.load();
    ASSERT_EQ(program.lines().size(), 3);
    EXPECT_FALSE(program.days.row(0).isValid());
    EXPECT_EQ(program.days.row(2).value<CalendarEventItem>().title, QStringLiteral("Piano"));
    EXPECT_FALSE(program.days.row(99).isValid());
}

TEST(RemindersViewModel, MovesARemindersDayAndKeepsItsTime) {
    struct Case {
        const char* what;
        std::optional<int> day;
        QTime time;
        QTime timeAfter;
    };
    const std::vector<Case> cases{
        {"timed", 0, {17, 0}, {17, 0}}, {"whole day", 0, {}, {}}, {"without a date", {}, {}, {}}};
    for (const Case& c : cases) {
        CalendarProgram program;
        const QString id = program.Program::add(QString::fromUtf8(c.what), c.day, c.time);
        program.load();
        program.reminders.moveToDay(id, program.isoDay(3));
        program.settle();
        const auto due = program.database.reminder(id)->dueDateComponents;
        ASSERT_TRUE(due) << c.what;
        EXPECT_EQ(due->date(), program.day(3)) << c.what;
        EXPECT_EQ(due->time(), c.timeAfter) << c.what;
    }
}

TEST(RemindersViewModel, NamesTheDaysToMoveTo) {
    CalendarProgram program;
    EXPECT_EQ(program.reminders.dayNamed(QStringLiteral("today")), program.isoDay(0));
    EXPECT_EQ(program.reminders.dayNamed(QStringLiteral("tomorrow")), program.isoDay(1));
    EXPECT_EQ(program.reminders.dayNamed(QStringLiteral("nextWeek")), program.isoDay(2));
    program.time.advance(std::chrono::hours(48));
    EXPECT_EQ(program.reminders.dayNamed(QStringLiteral("nextWeek")), program.isoDay(9));
}

}  // namespace
