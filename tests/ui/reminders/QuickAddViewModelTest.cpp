#include "preferences/PreferenceKeys.h"
#include "ui/Program.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

#include <tuple>
#include <vector>

using namespace kestrant;
using namespace kestrant::test;

namespace {

TEST(QuickAddViewModel, SavesWhatItShows) {
    Program program;
    program.load();
    program.quickAdd.begin();
    program.quickAdd.setTitle(QStringLiteral("  Call Ilse "));
    program.quickAdd.setPriority(QStringLiteral("high"));
    program.quickAdd.setListId(program.work);
    program.quickAdd.dueDay()->setIsoDay(QStringLiteral("2026-11-24"));
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

TEST(QuickAddViewModel, GivesNoPriorityThatNobodyChose) {
    Program program;
    program.load();
    for (const auto& [line, chosen, saved] : std::vector<std::tuple<const char*, const char*, int>>{
             {"Call", nullptr, 0}, {"Call !!", nullptr, 5}, {"Call !!!", "none", 0}, {"Call", "low", 9}}) {
        program.quickAdd.begin();
        EXPECT_EQ(program.quickAdd.priority(), QStringLiteral("none"));
        program.quickAdd.setTitle(QString::fromUtf8(line));
        if (chosen)
            program.quickAdd.setPriority(QString::fromUtf8(chosen));
        program.quickAdd.submit();
        program.settle();
        ASSERT_EQ(program.database.reminders().size(), 1u);
        const EKReminderData made = program.database.reminders().front();
        EXPECT_EQ(made.priority, saved) << line;
        program.database.dropReminder(made.calendarItemIdentifier);
    }
}

TEST(QuickAddViewModel, GoesIntoTheListThatIsShownWhateverThatIs) {
    Program program;
    program.load();
    EXPECT_EQ(program.quickAdd.listId(), program.home);
    program.defaults.set(preferenceKeys::defaultReminderListID, program.work);
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
    program.quickAdd.dueDay()->setIsoDay(QStringLiteral("2026-11-24"));
    program.quickAdd.submit();
    program.settle();
    EXPECT_EQ(program.quickAdd.errorText(), QStringLiteral("Disk full."));
    program.preferences.setLanguage(Language::french);
    EXPECT_EQ(program.quickAdd.errorText(), QStringLiteral("Disque plein."));

    program.quickAdd.begin();
    EXPECT_EQ(program.quickAdd.title(), QStringLiteral("Call"));
    EXPECT_EQ(program.quickAdd.dueDay()->isoDay(), QStringLiteral("2026-11-24"));
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

TEST(QuickAddViewModel, UnderstandsTheLineAndLetsItsPiecesBeRefused) {
    Program program;
    program.load();
    QuickAddViewModel& form = program.quickAdd;
    form.begin();
    form.setTitle(QStringLiteral("Call Ilse tomorrow 9am #work !!!"));
    EXPECT_EQ(form.dueText(), QStringLiteral("Tomorrow 09:00"));
    EXPECT_EQ(form.priority(), QStringLiteral("high"));
    EXPECT_EQ(form.listTitle(), QStringLiteral("Work"));
    EXPECT_EQ(form.priorityTitle(), QStringLiteral("High"));
    EXPECT_EQ(form.said().join(u' '), QStringLiteral("due list priority"));
    ASSERT_EQ(form.pieces().size(), 3);
    const QVariantMap due = form.pieces()[0].toMap();
    EXPECT_EQ(form.title().mid(due[QStringLiteral("start")].toInt(), due[QStringLiteral("length")].toInt()),
              QStringLiteral("tomorrow 9am"));

    form.takeBack(QStringLiteral("due"));
    EXPECT_EQ(form.said().join(u' '), QStringLiteral("list priority"));
    EXPECT_EQ(form.dueText(), QString());
    form.setTitle(form.title() + QStringLiteral(" please"));
    EXPECT_EQ(form.pieces().size(), 2) << "what was refused stays refused";

    form.dueDay()->setIsoDay(QStringLiteral("2026-11-30"));
    form.alert()->setId(QStringLiteral("day 0"));
    form.setRepeatId(QStringLiteral("weekly"));
    form.setFlagged(true);
    form.submit();
    program.settle();
    ASSERT_EQ(program.database.reminders().size(), 1u);
    const EKReminderData saved = program.database.reminders().front();
    EXPECT_EQ(saved.title, QStringLiteral("Call Ilse tomorrow 9am please"));
    EXPECT_EQ(saved.dueDateComponents->date(), QDate(2026, 11, 30)) << "the hand wins over the line";
    EXPECT_EQ(saved.alarms.size(), 1u);
    EXPECT_EQ(saved.recurrenceRules, recurrenceRules(ReminderRepeat::weekly));
    EXPECT_TRUE(program.reminderStore.task(saved.calendarItemIdentifier)->isFlagged);
}

TEST(QuickAddViewModel, TakesBackEveryFactWhetherWrittenOrChosen) {
    Program program;
    program.load();
    QuickAddViewModel& form = program.quickAdd;
    EXPECT_EQ(form.listReason(), QStringLiteral("your first list"));
    for (const char* line : {"Call", "Call today !! #work"}) {
        form.begin();
        form.setTitle(QString::fromUtf8(line));
        form.setListId(program.work);
        form.setPriority(QStringLiteral("low"));
        form.setFlagged(true);
        form.dueDay()->setIsoDay(QStringLiteral("2026-11-30"));
        form.alert()->setId(QStringLiteral("day 0"));
        form.setRepeatId(QStringLiteral("weekly"));
        EXPECT_TRUE(form.addable().size() <= 1) << line;
        for (const QString& fact : QStringList(form.said()))
            form.takeBack(fact);
        EXPECT_EQ(form.said(), QStringList{QStringLiteral("list")}) << line;
        EXPECT_EQ(form.listId(), program.home) << line;
        EXPECT_EQ(form.addable().join(u' '), QStringLiteral("due priority flag")) << line;
        form.discard();
    }
}

TEST(QuickAddViewModel, UnderstandsRefusedWordsThatAreTypedAnew) {
    Program program;
    program.load();
    program.quickAdd.setTitle(QStringLiteral("Call tomorrow"));
    program.quickAdd.takeBack(QStringLiteral("due"));
    program.quickAdd.setTitle(QStringLiteral("Call tomorro"));
    program.quickAdd.setTitle(QStringLiteral("Call tomorrow"));
    EXPECT_EQ(program.quickAdd.dueText(), QStringLiteral("Tomorrow"));
}

TEST(QuickAddViewModel, TakesALineOfNothingButADateForATitle) {
    Program program;
    program.load();
    program.quickAdd.setTitle(QStringLiteral("tomorrow"));
    EXPECT_TRUE(program.quickAdd.pieces().isEmpty());
    EXPECT_EQ(program.quickAdd.dueText(), QString());
    program.quickAdd.setTitle(QStringLiteral("tomorrow run"));
    EXPECT_EQ(program.quickAdd.dueText(), QStringLiteral("Tomorrow"));
    program.quickAdd.setTitle(QStringLiteral("run"));
    EXPECT_EQ(program.quickAdd.dueText(), QString()) << "what the line no longer says is forgotten";
}

TEST(QuickAddViewModel, SavesWhateverTheLineSays) {
    Program program;
    program.load();
    QuickAddViewModel& form = program.quickAdd;
    form.begin();
    form.setTitle(QStringLiteral(
        "Water every 3 days at 8am, 10 min before !flag #Garden https://example.org // two cans"));
    EXPECT_EQ(form.said().join(u' '), QStringLiteral("repeat due alert flag list link notes"));
    EXPECT_EQ(form.repeatTitle(), QStringLiteral("Every 3 days"));
    EXPECT_EQ(form.repeatId(), QString()) << "none of the choices";
    EXPECT_EQ(form.listTitle(), QStringLiteral("New list “Garden”"));
    form.submit();
    program.settle();
    ASSERT_EQ(program.database.reminders().size(), 1u);
    const EKReminderData saved = program.database.reminders().front();
    EXPECT_EQ(saved.title, QStringLiteral("Water"));
    ASSERT_EQ(saved.recurrenceRules.size(), 1u);
    EXPECT_EQ(saved.recurrenceRules[0].text, QStringLiteral("FREQ=DAILY;INTERVAL=3"));
    EXPECT_EQ(saved.alarms.size(), 1u);
    EXPECT_EQ(saved.url.value_or(QString()), QStringLiteral("https://example.org"));
    EXPECT_EQ(saved.notes.value_or(QString()), QStringLiteral("two cans"));
    EXPECT_EQ(program.database.calendarWithIdentifier(saved.calendarIdentifier)->title,
              QStringLiteral("Garden"));
}

TEST(QuickAddViewModel, GivesTheWordsOfARepetitionBack) {
    Program program;
    program.load();
    QuickAddViewModel& form = program.quickAdd;
    form.setTitle(QStringLiteral("Water every monday at 8am"));
    form.takeBack(QStringLiteral("repeat"));
    EXPECT_EQ(form.repeatId(), QStringLiteral("none"));
    EXPECT_NE(form.dueText(), QString()) << "the time is still said";
    form.setTitle(QStringLiteral("Water plants every monday at 8am"));
    form.takeBack(QStringLiteral("due"));
    EXPECT_EQ(form.pieces().size(), 0);
}

TEST(QuickAddViewModel, ShowsTheZoneOfATimeAndGivesItBack) {
    Program program;
    program.load();
    QuickAddViewModel& form = program.quickAdd;
    form.setTitle(QStringLiteral("Call 9:00 JST tomorrow"));
    const QString converted = form.timeText();
    EXPECT_EQ(form.said().join(u' '), QStringLiteral("list due zone"));
    EXPECT_EQ(form.zoneText(), QStringLiteral("09:00 JST"));
    form.takeBack(QStringLiteral("zone"));
    EXPECT_EQ(form.zoneText(), QString());
    EXPECT_EQ(form.timeText(), QStringLiteral("09:00"));
    EXPECT_NE(form.timeText(), converted);
}

TEST(QuickAddViewModel, OffersWhatMayBeMeantAndCompletesNames) {
    Program program;
    program.load();
    QuickAddViewModel& form = program.quickAdd;
    form.setTitle(QStringLiteral("notes from Monday"));
    EXPECT_EQ(form.dueText(), QString());
    ASSERT_EQ(form.offers().size(), 1);
    form.accept(form.offers()[0].toMap()[QStringLiteral("words")].toString());
    EXPECT_NE(form.dueText(), QString());
    EXPECT_TRUE(form.offers().isEmpty());
    form.setTitle(QStringLiteral("Swim mon and thu 7am"));
    EXPECT_EQ(form.repeatTitle(), QStringLiteral("Every Mon, Thu, 2 times"));
    ASSERT_EQ(form.offers().size(), 1);
    form.accept(form.offers()[0].toMap()[QStringLiteral("words")].toString());
    EXPECT_EQ(form.repeatTitle(), QStringLiteral("Every Mon, Thu"));
    form.setTitle(QStringLiteral("call #wo"));
    EXPECT_EQ(form.completion(), QStringLiteral("rk"));
    form.setTitle(QStringLiteral("meeting 2-4pm"));
    EXPECT_TRUE(form.mayBeEvent());
    EXPECT_EQ(form.completion(), QString());
}

}  // namespace
