#include "foundation/DateComponents.h"
#include "ui/Program.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

TEST(RemindersViewModel, ShowsTheCardsInWords) {
    Program program;
    EKReminderData data;
    data.title = QStringLiteral("Pay the rent");
    data.calendarIdentifier = program.home;
    data.priority = 1;
    data.dueDateComponents = DateComponents::fromDateTime(QDate(2026, 11, 20), QTime(9, 0));
    data.recurrenceRules = {EKRecurrenceRule::every(EKRecurrenceFrequency::monthly)};
    program.database.putReminder(data);
    program.load();

    const ReminderCard card = program.card(0);
    EXPECT_EQ(card.dueText, QStringLiteral("Yesterday 09:00"));
    EXPECT_TRUE(card.isOverdue);
    EXPECT_EQ(card.priorityMarks, QStringLiteral("!!!"));
    EXPECT_TRUE(card.isRecurring);
    EXPECT_EQ(card.repeatText, QStringLiteral("monthly"));
    EXPECT_EQ(card.listColor, QColor(0x30, 0xd1, 0x58));
    EXPECT_EQ(card.spokenText,
              QStringLiteral("Pay the rent, Yesterday 09:00, overdue, high priority, repeats monthly, Home"));
}

TEST(RemindersViewModel, MarksPrioritiesByTheirThirdOfTheScale) {
    Program program;
    for (int priority = 0; priority <= 9; ++priority) {
        EKReminderData data;
        data.title = QString::number(priority);
        data.calendarIdentifier = program.home;
        data.priority = priority;
        program.database.putReminder(data);
    }
    program.reminderStore.setSortMode(ReminderSortMode::title);
    program.load();
    QStringList marks;
    for (int row = 0; row < program.reminders.cards()->count(); ++row)
        marks.append(program.card(row).priorityMarks);
    EXPECT_EQ(marks.join(QLatin1Char(',')), QStringLiteral(",!!!,!!!,!!!,!!!,!!,!,!,!,!"));
}

TEST(RemindersViewModel, SaysEverythingInTheLanguageThatIsChosenMeanwhile) {
    Program program;
    program.add(QStringLiteral("Water the plants"), 1);
    program.load();
    QSignalSpy changed(program.reminders.cards(), &QAbstractItemModel::dataChanged);
    program.preferences.setLanguage(Language::french);

    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(program.card(0).dueText, QStringLiteral("Demain"));
    EXPECT_EQ(program.reminders.selectedListTitle(), QStringLiteral("Toutes les listes"));
    EXPECT_EQ(program.reminders.sortModes().at(1).toMap().value(QStringLiteral("title")),
              QStringLiteral("Échéance"));
}

TEST(RemindersViewModel, CountsOverAllCardsWhateverIsFiltered) {
    Program program;
    program.add(QStringLiteral("late"), -1);
    program.add(QStringLiteral("today"), 0);
    program.add(QStringLiteral("today, past"), 0, QTime(9, 0));
    program.add(QStringLiteral("some day"));
    program.load();
    EXPECT_EQ(program.reminders.todayCount(), 2);
    EXPECT_EQ(program.reminders.overdueCount(), 2);
    EXPECT_EQ(program.panel.dueTodayCount(), 2);

    program.reminders.setShowsOverdueOnly(true);
    EXPECT_THAT(program.titles(), ElementsAre(QStringLiteral("late"), QStringLiteral("today, past")));
    EXPECT_EQ(program.reminders.todayCount(), 2);
}

TEST(RemindersViewModel, SaysWhatIsShownInsteadOfCards) {
    Program program;
    EXPECT_EQ(program.reminders.content(), QStringLiteral("loading"));
    program.load();
    EXPECT_EQ(program.reminders.content(), QStringLiteral("empty"));

    program.add(QStringLiteral("Read"));
    program.settle();
    EXPECT_EQ(program.reminders.content(), QStringLiteral("cards"));
    program.reminders.setSearchQuery(QStringLiteral("x"));
    EXPECT_EQ(program.reminders.content(), QStringLiteral("nothingFound"));
    program.reminders.setSearchQuery(QString());
    program.reminders.setShowsTodayOnly(true);
    EXPECT_EQ(program.reminders.content(), QStringLiteral("allDone"));

    program.database.setAuthorizationStatus(EKAuthorizationStatus::denied);
    program.reminderStore.refreshAccessState();
    EXPECT_EQ(program.reminders.content(), QStringLiteral("denied"));
}

TEST(RemindersViewModel, TellsWhyACompletionFailedOverTheCards) {
    Program program;
    const QString id = program.add(QStringLiteral("Read"));
    program.load();
    QSignalSpy failed(&program.reminders, &RemindersViewModel::changeFailed);
    program.database.setFailure(InMemoryEventStore::Operation::save,
                                EKError{EKError::Code::storage, text("Disk full.", "Disque plein.")});
    for (int attempt = 1; attempt <= 2; ++attempt) {
        program.reminders.toggleCompletion(id);
        EXPECT_TRUE(program.card(0).isPending);
        program.time.advance(std::chrono::seconds(2));
        ASSERT_EQ(failed.count(), attempt);
        EXPECT_EQ(failed.last().at(0), QStringLiteral("Disk full."));
        EXPECT_EQ(program.reminders.content(), QStringLiteral("cards"));
        EXPECT_FALSE(program.card(0).isPending);
    }
}

TEST(RemindersViewModel, ADatabaseThatDoesNotOpenIsTriedAgain) {
    Program program;
    program.add(QStringLiteral("Read"));
    program.database.setAuthorizationStatus(EKAuthorizationStatus::notDetermined);
    program.database.setFailure(InMemoryEventStore::Operation::requestAccess,
                                EKError{EKError::Code::storage, text("No folder.", "Pas de dossier.")});
    program.load();
    EXPECT_EQ(program.reminders.content(), QStringLiteral("failed"));
    EXPECT_EQ(program.reminders.failureText(), QStringLiteral("No folder."));
    program.reminders.retry();
    program.settle();
    EXPECT_EQ(program.reminders.content(), QStringLiteral("failed"));
    program.database.setFailure(InMemoryEventStore::Operation::requestAccess, {});
    program.reminders.retry();
    program.settle();
    EXPECT_EQ(program.reminders.content(), QStringLiteral("cards"));
}

TEST(RemindersViewModel, TellsWhyADeletionDidNotHappen) {
    Program program;
    const QString id = program.add(QStringLiteral("Read"));
    program.load();
    QSignalSpy failed(&program.reminders, &RemindersViewModel::changeFailed);
    program.database.setFailure(InMemoryEventStore::Operation::remove,
                                EKError{EKError::Code::readOnly, text("Read only.", "Lecture seule.")});
    program.reminders.remove(id);
    program.settle();
    ASSERT_EQ(failed.count(), 1);
    EXPECT_EQ(failed.at(0).at(0), QStringLiteral("Read only."));
    EXPECT_THAT(program.titles(), ElementsAre(QStringLiteral("Read")));
}

TEST(RemindersViewModel, FallsBackToAllListsWhenTheSelectedOneIsGone) {
    Program program;
    program.load();
    program.reminders.setSelectedListId(program.work);
    program.settle();
    EXPECT_EQ(program.reminders.selectedListTitle(), QStringLiteral("Work"));
    program.database.dropCalendar(program.work);
    program.settle();
    EXPECT_EQ(program.reminders.selectedListId(), QString());
    EXPECT_EQ(program.reminders.selectedListTitle(), QStringLiteral("All lists"));
}

}  // namespace
