#include "ui/Program.h"
#include "ui/TimeOfDay.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

TEST(TimeOfDay, IsReadAsPeopleTypeIt) {
    struct Case {
        const char16_t* typed;
        QTime time;
    };
    const std::vector<Case> cases{
        {u"9", QTime(9, 0)},
        {u"9:30", QTime(9, 30)},
        {u" 09.05 ", QTime(9, 5)},
        {u"9h", QTime(9, 0)},
        {u"9h30", QTime(9, 30)},
        {u"9 h 30", QTime(9, 30)},
        {u"930", QTime(9, 30)},
        {u"1830", QTime(18, 30)},
        {u"0:00", QTime(0, 0)},
        {u"23:59", QTime(23, 59)},
        {u"9 pm", QTime(21, 0)},
        {u"12am", QTime(0, 0)},
        {u"12:15 PM", QTime(12, 15)},
        {u"", {}},
        {u"24", {}},
        {u"9:60", {}},
        {u"9:3", {}},
        {u"13 pm", {}},
        {u"noon", {}},
        {u"-1", {}},
        {u"12345", {}},
    };
    for (const Case& c : cases) {
        const auto time = timeOfDay(c.typed);
        EXPECT_EQ(time.value_or(QTime()), c.time) << QString::fromUtf16(c.typed).toStdString();
    }
}

TEST(QuickAddViewModel, SavesWhatItShows) {
    Program program;
    program.load();
    program.quickAdd.begin();
    program.quickAdd.setTitle(QStringLiteral("  Call Ilse "));
    program.quickAdd.setPriority(QStringLiteral("high"));
    program.quickAdd.setListId(program.work);
    program.quickAdd.setDueDay(QStringLiteral("2026-11-24"));
    program.quickAdd.setTimeText(QStringLiteral("9h30"));
    EXPECT_EQ(program.quickAdd.dueText(), QStringLiteral("Tue 24 Nov 09:30"));
    EXPECT_EQ(program.quickAdd.listTitle(), QStringLiteral("Work"));

    QSignalSpy added(&program.quickAdd, &QuickAddViewModel::added);
    program.quickAdd.submit();
    program.settle();
    EXPECT_EQ(added.count(), 1);
    ASSERT_EQ(program.database.reminders().size(), 1u);
    const EKReminderData saved = program.database.reminders().front();
    EXPECT_EQ(saved.title, QStringLiteral("Call Ilse"));
    EXPECT_EQ(saved.priority, 1);
    EXPECT_EQ(saved.calendarIdentifier, program.work);
    EXPECT_EQ(saved.dueDateComponents->date(), QDate(2026, 11, 24));
    EXPECT_EQ(saved.dueDateComponents->time(), QTime(9, 30));
    EXPECT_EQ(program.quickAdd.title(), QString());
}

TEST(QuickAddViewModel, GoesIntoTheListThatIsShownWhateverThatIs) {
    Program program;
    program.load();
    EXPECT_EQ(program.quickAdd.listId(), program.home);
    program.store.setDefaultListID(program.work);
    EXPECT_EQ(program.quickAdd.listId(), program.work);
    program.reminders.setSelectedListId(program.home);
    program.settle();
    EXPECT_EQ(program.quickAdd.listId(), program.home);
}

TEST(QuickAddViewModel, KeepsWhatWasWrittenWhenItCannotBeSaved) {
    Program program;
    program.load();
    program.database.setFailure(InMemoryEventStore::Operation::save,
                                EKError{EKError::Code::storage, text("Disk full.", "Disque plein.")});
    program.quickAdd.setTitle(QStringLiteral("Call"));
    program.quickAdd.setDueDay(QStringLiteral("2026-11-24"));
    program.quickAdd.submit();
    program.settle();
    EXPECT_EQ(program.quickAdd.errorText(), QStringLiteral("Disk full."));
    program.preferences.setLanguage(Language::french);
    EXPECT_EQ(program.quickAdd.errorText(), QStringLiteral("Disque plein."));

    program.quickAdd.begin();
    EXPECT_EQ(program.quickAdd.title(), QStringLiteral("Call"));
    EXPECT_EQ(program.quickAdd.dueDay(), QStringLiteral("2026-11-24"));
    program.quickAdd.setTitle(QStringLiteral("Call Ilse"));
    EXPECT_EQ(program.quickAdd.errorText(), QString());
}

TEST(QuickAddViewModel, RefusesATimeThatIsNoneAndATimeWithoutADay) {
    Program program;
    program.load();
    program.quickAdd.setTitle(QStringLiteral("Call"));
    program.quickAdd.setTimeText(QStringLiteral("soon"));
    program.quickAdd.submit();
    EXPECT_EQ(program.quickAdd.errorText(), QStringLiteral("Enter the time like 9:30."));
    program.quickAdd.setTimeText(QStringLiteral("9"));
    program.quickAdd.submit();
    program.settle();
    EXPECT_EQ(program.quickAdd.errorText(),
              QStringLiteral("Choose a due date for the time or notification."));
    EXPECT_TRUE(program.database.reminders().empty());
}

TEST(QuickAddViewModel, ShowsMonthsFromTheLanguagesFirstDayOfTheWeek) {
    Program program;
    const auto firstShown = [&program] {
        return program.quickAdd.days().first().toMap().value(QStringLiteral("iso")).toString();
    };
    EXPECT_EQ(program.quickAdd.monthTitle(), QStringLiteral("November 2026"));
    EXPECT_EQ(firstShown(), QStringLiteral("2026-11-01"));
    program.preferences.setLanguage(Language::french);
    EXPECT_EQ(program.quickAdd.monthTitle(), QStringLiteral("Novembre 2026"));
    EXPECT_EQ(firstShown(), QStringLiteral("2026-10-26"));
    EXPECT_EQ(program.quickAdd.weekdays().first().toMap().value(QStringLiteral("full")),
              QStringLiteral("lundi"));
    EXPECT_EQ(program.quickAdd.days().size(), 42);
}

TEST(QuickAddViewModel, MovesTheDayByKeyboardAndFollowsItWithTheMonth) {
    Program program;
    program.quickAdd.moveDueDay(-1, 0);
    EXPECT_EQ(program.quickAdd.dueDay(), QStringLiteral("2026-11-20"));
    program.quickAdd.moveDueDay(14, 0);
    EXPECT_EQ(program.quickAdd.monthTitle(), QStringLiteral("December 2026"));
    program.quickAdd.setDueDay(QStringLiteral("2027-01-31"));
    program.quickAdd.moveDueDay(0, 1);
    EXPECT_EQ(program.quickAdd.dueDay(), QStringLiteral("2027-02-28"));
}

}  // namespace
