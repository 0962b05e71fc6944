#include "ui/reminders/ReminderEditViewModel.h"

#include "support/ReminderBuilders.h"
#include "ui/Program.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

#include <functional>

using namespace kestrant;
using namespace kestrant::test;

namespace {

const QDate tuesday(2026, 11, 24);

/// A reminder that is due on Tuesday at 9:30, with an alert a quarter of an hour before, is being edited.
struct Editing : Program {
    explicit Editing(const ReminderBuilder& builder = usual()) {
        EKReminderData data = builder;
        data.calendarIdentifier = home;
        id = database.putReminder(data);
        load();
        form.begin(id);
    }
    static ReminderBuilder usual() {
        return aReminder("id")
            .titled(QStringLiteral("Dentist"))
            .notes(QStringLiteral("Bring the card"))
            .priority(5)
            .due(tuesday, QTime(9, 30))
            .alarmAt(at("Europe/Paris", tuesday, {9, 15}));
    }
    [[nodiscard]] EKReminderData saved() const { return *database.reminder(id); }
    void save() {
        form.save();
        settle();
    }
    void fillDisk() {
        database.setFailure(InMemoryEventStore::Operation::save,
                            EKError{EKError::Code::storage, text("Disk full.", "Disque plein.")});
    }

    ReminderEditViewModel& form = reminderEdit;
    QString id;
    QSignalSpy savedSpy{&form, &ReminderEditViewModel::saved};
};

TEST(ReminderEditViewModel, ShowsAReminderAndSavesWhatWasChanged) {
    Editing test;
    EXPECT_EQ(test.form.title(), QStringLiteral("Dentist"));
    EXPECT_EQ(test.form.notes(), QStringLiteral("Bring the card"));
    EXPECT_EQ(test.form.priority(), QStringLiteral("normal"));
    EXPECT_EQ(test.form.dueDay()->isoDay(), QStringLiteral("2026-11-24"));
    EXPECT_EQ(test.form.dueTime(), QStringLiteral("09:30"));
    EXPECT_EQ(test.form.listTitle(), QStringLiteral("Home"));

    test.form.setTitle(QStringLiteral("Call the dentist"));
    test.form.setNotes(QString());
    test.form.setPriority(QStringLiteral("high"));
    test.form.setListId(test.work);
    test.form.dueDay()->setIsoDay(QStringLiteral("2026-11-25"));
    test.form.setDueTime(QStringLiteral("14h"));
    test.save();
    EXPECT_EQ(test.savedSpy.count(), 1);
    const EKReminderData saved = test.saved();
    EXPECT_EQ(saved.title, QStringLiteral("Call the dentist"));
    EXPECT_EQ(saved.notes, std::nullopt);
    EXPECT_EQ(saved.priority, 1);
    EXPECT_EQ(saved.calendarIdentifier, test.work);
    EXPECT_EQ(saved.dueDateComponents->date(), tuesday.addDays(1));
    EXPECT_EQ(saved.dueDateComponents->time(), QTime(14, 0));
    ASSERT_EQ(saved.alarms.size(), 1u);
    EXPECT_EQ(saved.alarms[0].absoluteDate, at("Europe/Paris", tuesday.addDays(1), {13, 45}));
}

TEST(ReminderEditViewModel, WritesNothingWhenNothingWasChanged) {
    const std::vector<ReminderBuilder> builders{
        Editing::usual(),
        aReminder("id"),
        aReminder("id").due(tuesday),
        aReminder("id").due(tuesday, QTime(9, 30, 12)),
        aReminder("id").due(tuesday, QTime(9, 30), "America/New_York"),
        aReminder("id").priority(3),
        aReminder("id").titled(QStringLiteral(" spaced ")),
    };
    for (const ReminderBuilder& builder : builders) {
        Editing test(builder);
        test.fillDisk();
        test.form.setPriority(test.form.priority());
        test.form.setDueTime(test.form.dueTime() + u' ');
        test.save();
        EXPECT_EQ(test.savedSpy.count(), 1);
        EXPECT_EQ(test.form.errorText(), QString());
    }
}

TEST(ReminderEditViewModel, KeepsTheExactPriorityUnlessAnotherIsChosen) {
    Editing test(aReminder("id").priority(3));
    EXPECT_EQ(test.form.priority(), QStringLiteral("high"));
    test.form.setTitle(QStringLiteral("other"));
    test.save();
    EXPECT_EQ(test.saved().priority, 3);
    test.form.begin(test.id);
    test.form.setPriority(QStringLiteral("none"));
    test.save();
    EXPECT_EQ(test.saved().priority, 0);
}

TEST(ReminderEditViewModel, TakesTheDueDateAwayWithItsTimeAndAlert) {
    Editing test;
    test.form.dueDay()->setIsoDay(QString());
    EXPECT_EQ(test.form.dueTime(), QString());
    test.save();
    EXPECT_EQ(test.form.errorText(), QString());
    EXPECT_EQ(test.saved().dueDateComponents, std::nullopt);
    EXPECT_TRUE(test.saved().alarms.empty());
}

TEST(ReminderEditViewModel, OffersRepetitionsAndKeepsARuleOfAnotherKind) {
    const QString own = QStringLiteral("FREQ=WEEKLY;BYDAY=TU,TH");
    Editing test(aReminder("id").due(tuesday).repeating(own));
    QStringList offered;
    for (const QVariant& choice : test.form.repeats())
        offered.append(choice.toMap()[QStringLiteral("title")].toString());
    EXPECT_EQ(offered.join(QStringLiteral(" | ")),
              QStringLiteral("Never | Daily | Weekly | Monthly | Yearly | Every Tue, Thu"));
    EXPECT_EQ(test.form.repeatId(), QString());
    EXPECT_EQ(test.form.repeatTitle(), QStringLiteral("Every Tue, Thu"));

    test.form.setTitle(QStringLiteral("x"));
    test.form.setRepeatId(QStringLiteral("daily"));
    test.form.setRepeatId(QString());
    test.save();
    ASSERT_EQ(test.saved().recurrenceRules.size(), 1u);
    EXPECT_EQ(test.saved().recurrenceRules[0].text, own);

    test.form.begin(test.id);
    test.form.setTitle(QStringLiteral("y"));
    test.form.setRepeatId(QStringLiteral("yearly"));
    test.save();
    EXPECT_EQ(test.saved().recurrenceRules[0].text, QStringLiteral("FREQ=YEARLY"));
    test.actions.undo();
    test.settle();
    EXPECT_EQ(test.saved().recurrenceRules[0].text, own) << "one step with the title";
    EXPECT_EQ(test.saved().title, QStringLiteral("x"));

    test.form.begin(test.id);
    test.form.setRepeatId(QStringLiteral("none"));
    test.save();
    EXPECT_TRUE(test.saved().recurrenceRules.empty());
    test.form.begin(test.id);
    test.form.setRepeatId(QStringLiteral("daily"));
    test.form.dueDay()->setIsoDay(QString());
    test.save();
    EXPECT_EQ(test.form.errorText(), QString());
    EXPECT_TRUE(test.saved().recurrenceRules.empty()) << "there is nothing to count from";
}

TEST(ReminderEditViewModel, MakesAWholeDayOfATimeThatIsCleared) {
    Editing test;
    test.form.setDueTime(QStringLiteral(" "));
    test.save();
    EXPECT_EQ(test.saved().dueDateComponents, DateComponents::fromDate(tuesday));
}

TEST(ReminderEditViewModel, SaysWhyItCouldNotSaveAndKeepsEverythingAsWritten) {
    struct Case {
        std::function<void(Editing&)> obstacle;
        const char* reason;
    };
    const std::vector<Case> cases{
        {[](Editing& test) { test.database.dropReminder(test.id); }, "This reminder is no longer available."},
        {[](Editing& test) {
             test.form.setListId(test.work);
             test.database.dropCalendar(test.work);
         },
         "This list of reminders is no longer available."},
        {[](Editing& test) { test.form.setTitle(QStringLiteral("  ")); },
         "The reminder title cannot be empty."},
        {[](Editing& test) { test.form.setDueTime(QStringLiteral("soon")); }, "Enter the time like 9:30."},
        {[](Editing& test) { test.fillDisk(); }, "Disk full."},
    };
    for (const Case& c : cases) {
        Editing test;
        test.form.setTitle(QStringLiteral("Call the dentist"));
        test.form.setNotes(QStringLiteral("Monday"));
        c.obstacle(test);
        const QString title = test.form.title();
        const QString time = test.form.dueTime();
        const QString list = test.form.listTitle();
        test.save();
        EXPECT_EQ(test.form.errorText().toStdString(), c.reason);
        EXPECT_EQ(test.savedSpy.count(), 0) << c.reason;
        EXPECT_EQ(test.form.title(), title);
        EXPECT_EQ(test.form.notes(), QStringLiteral("Monday"));
        EXPECT_EQ(test.form.dueTime(), time);
        EXPECT_EQ(test.form.listTitle(), list);
        EXPECT_TRUE(test.form.canSave()) << c.reason;
    }
}

TEST(ReminderEditViewModel, SaysWhenTheReminderToEditIsGone) {
    Editing test;
    test.database.dropReminder(test.id);
    test.form.begin(test.id);
    EXPECT_EQ(test.form.errorText(), QStringLiteral("This reminder is no longer available."));
    EXPECT_FALSE(test.form.canSave());
}

TEST(ReminderEditViewModel, OnlyShowsAReminderOfAReadOnlyList) {
    Editing test;
    for (const bool answers : {true, false}) {
        test.database.putCalendar({.calendarIdentifier = test.home,
                                   .title = QStringLiteral("Home"),
                                   .allowsContentModifications = false,
                                   .isAnswering = answers});
        test.settle();
        test.form.begin(test.id);
        EXPECT_EQ(test.form.title(), QStringLiteral("Dentist"));
        EXPECT_EQ(test.form.lockReason(),
                  answers ? "This list is read-only." : "This list does not answer at the moment.");
        EXPECT_FALSE(test.form.canSave() || test.form.canEdit());
    }
}

TEST(ReminderEditViewModel, KeepsWhatWasWrittenUntilItIsSavedOrGivenUp) {
    Editing test;
    int number = test.form.begin(test.id);
    const auto leave = [&] {
        test.form.keep(number);
        test.form.end(number);
    };
    const auto comeBack = [&] {
        number = test.form.begin(test.id);
        test.form.restore();
    };
    test.form.setNotes(QStringLiteral("half a sent"));
    test.form.setDueTime(QStringLiteral("1"));
    test.form.setRepeatId(QStringLiteral("weekly"));
    leave();
    number = test.form.begin(test.id);
    EXPECT_EQ(test.form.notes(), QStringLiteral("Bring the card")) << "nobody asked for it";
    leave();
    comeBack();
    EXPECT_TRUE(test.form.isRestored());
    EXPECT_EQ(test.form.notes(), QStringLiteral("half a sent"));
    EXPECT_EQ(test.form.dueTime(), QStringLiteral("1"));
    EXPECT_EQ(test.form.repeatId(), QStringLiteral("weekly"));

    test.form.setDueTime(QStringLiteral("10"));
    test.save();
    EXPECT_EQ(test.saved().notes, QStringLiteral("half a sent"));
    EXPECT_FALSE(test.saved().recurrenceRules.empty());
    leave();
    comeBack();
    EXPECT_FALSE(test.form.isRestored()) << "it was saved";

    test.form.setNotes(QStringLiteral("other"));
    test.form.discard();
    leave();
    comeBack();
    EXPECT_EQ(test.form.notes(), QStringLiteral("half a sent")) << "it was given up";

    test.form.setNotes(QStringLiteral("other"));
    leave();
    EKReminderData changed = test.saved();
    changed.title = QStringLiteral("Somebody else’s");
    test.database.putReminder(changed);
    comeBack();
    EXPECT_FALSE(test.form.isRestored()) << "it would overwrite what somebody else wrote";
    EXPECT_EQ(test.form.title(), QStringLiteral("Somebody else’s"));
}

TEST(ReminderEditViewModel, TellsOfAFailureWhenItsFormIsGone) {
    Editing test;
    QSignalSpy failed(&test.form, &ReminderEditViewModel::changeFailed);
    const int number = test.form.begin(test.id);
    test.fillDisk();
    test.form.setTitle(QStringLiteral("Call"));
    test.form.save();
    test.form.end(number);
    test.settle();
    ASSERT_EQ(failed.count(), 1);
    EXPECT_EQ(failed.at(0).at(0), QStringLiteral("Disk full."));
}

}  // namespace
