#include "ui/calendar/CalendarEditViewModel.h"

#include "ui/WithCalendars.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

#include <functional>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

/// An event of today from 15:00 to 16:00 is being edited.
struct Editing : WithCalendars<Program> {
    Editing() {
        event = putEvent("Piano", QTime(15, 0), QTime(16, 0));
        load();
        form.begin(shown("Piano"));
        settle();
    }

    CalendarEditViewModel& form = calendarEdit;
    QString event;
    QSignalSpy savedSpy{&form, &CalendarEditViewModel::saved};
};

TEST(CalendarEditViewModel, ShowsAnEventAndSavesWhatWasChanged) {
    Editing test;
    EXPECT_EQ(test.form.title(), QStringLiteral("Piano"));
    EXPECT_EQ(test.form.calendarTitle(), QStringLiteral("Private"));
    EXPECT_EQ(test.form.times()->startTime(), QStringLiteral("15:00"));
    EXPECT_EQ(test.form.calendars().size(), 2);

    test.form.setTitle(QStringLiteral(" Piano lesson "));
    test.form.setLocation(QStringLiteral("12 rue de la Paix"));
    test.form.setNotes(QStringLiteral("Bach\nBartók"));
    test.form.setCalendarId(test.office);
    test.form.times()->setStartTime(QStringLiteral("17"));
    test.form.save();
    EXPECT_TRUE(test.form.isSaving());
    EXPECT_FALSE(test.form.canSave());
    test.settle();

    EXPECT_EQ(test.savedSpy.count(), 1);
    EXPECT_EQ(test.form.errorText(), QString());
    EKEventData wanted = test.onlyEvent();
    wanted.title = QStringLiteral("Piano lesson");
    wanted.location = QStringLiteral("12 rue de la Paix");
    wanted.notes = QStringLiteral("Bach\nBartók");
    wanted.calendarIdentifier = test.office;
    wanted.startDate = test.today(QTime(17, 0));
    wanted.endDate = test.today(QTime(18, 0));
    EXPECT_EQ(test.onlyEvent(), wanted);
}

TEST(CalendarEditViewModel, KeepsWhatWasWrittenUntilItIsSavedOrGivenUp) {
    Editing test;
    int number = 0;
    const auto comeBack = [&] {
        test.form.keep(number);
        test.form.end(number);
        number = test.form.begin(test.shown("Piano"));
        test.settle();
    };
    comeBack();
    EXPECT_FALSE(test.form.isRestored());
    test.form.setNotes(QStringLiteral("Ba"));
    test.form.setCalendarId(test.office);
    test.form.times()->setStartTime(QStringLiteral("17"));
    comeBack();
    EXPECT_TRUE(test.form.isRestored());
    EXPECT_EQ(test.form.notes(), QStringLiteral("Ba"));
    EXPECT_EQ(test.form.calendarId(), test.office);
    EXPECT_EQ(test.form.times()->startTime(), QStringLiteral("17:00"));
    test.form.save();
    test.settle();
    EXPECT_EQ(test.onlyEvent().notes, QStringLiteral("Ba"));
    comeBack();
    EXPECT_FALSE(test.form.isRestored()) << "it was saved";

    test.form.setNotes(QStringLiteral("Bach"));
    test.form.discard();
    comeBack();
    EXPECT_EQ(test.form.notes(), QStringLiteral("Ba")) << "it was given up";
    test.form.setNotes(QStringLiteral("Bach"));
    test.form.keep(number);
    EKEventData moved = test.onlyEvent();
    moved.location = QStringLiteral("Elsewhere");
    test.database.putEvent(moved);
    test.settle();
    comeBack();
    EXPECT_FALSE(test.form.isRestored()) << "it would overwrite what somebody else wrote";
    EXPECT_EQ(test.form.location(), QStringLiteral("Elsewhere"));
}

TEST(CalendarEditViewModel, WritesNothingWhenNothingWasChanged) {
    Editing test;
    test.fillDisk();
    test.form.setTitle(QStringLiteral("Piano lesson"));
    test.form.setTitle(QStringLiteral("Piano"));
    test.form.save();
    test.settle();
    EXPECT_EQ(test.savedSpy.count(), 1);
    EXPECT_EQ(test.form.errorText(), QString());
}

TEST(CalendarEditViewModel, SaysWhyItCouldNotSaveAndKeepsEverythingAsWritten) {
    struct Case {
        std::function<void(Editing&)> obstacle;
        const char* reason;
    };
    const std::vector<Case> cases{
        {[](Editing& test) { test.database.dropEvent(test.event); }, "This event is no longer available."},
        {[](Editing& test) {
             test.form.setCalendarId(test.office);
             test.database.dropCalendar(test.office);
         },
         "This calendar is no longer available."},
        {[](Editing& test) { test.form.setTitle(QStringLiteral("  ")); }, "Event title cannot be empty."},
        {[](Editing& test) { test.form.times()->setEndTime(QStringLiteral("14:00")); },
         "The end must be after the start."},
        {[](Editing& test) { test.form.times()->setEndTime(QStringLiteral("15:00")); },
         "The end must be after the start."},
        {[](Editing& test) { test.form.times()->setEndTime(QStringLiteral("late")); },
         "Enter the time like 9:30."},
        {[](Editing& test) { test.fillDisk(); }, "Disk full."},
        {[](Editing& test) {
             test.database.setAuthorizationStatus(EKAuthorizationStatus::denied);
             test.calendarStore.requestAccess();
         },
         "Calendar access is not authorized."},
    };
    for (const Case& c : cases) {
        Editing test;
        test.form.setTitle(QStringLiteral("Piano lesson"));
        test.form.setNotes(QStringLiteral("Bach"));
        c.obstacle(test);
        const QString title = test.form.title();
        const QString end = test.form.times()->endTime();
        const QString calendar = test.form.calendarTitle();
        test.form.save();
        test.settle();
        EXPECT_EQ(test.form.errorText().toStdString(), c.reason);
        EXPECT_EQ(test.savedSpy.count(), 0) << c.reason;
        EXPECT_EQ(test.form.title(), title);
        EXPECT_EQ(test.form.notes(), QStringLiteral("Bach"));
        EXPECT_EQ(test.form.times()->endTime(), end);
        EXPECT_EQ(test.form.calendarTitle(), calendar);
        EXPECT_TRUE(test.form.canSave()) << c.reason;

        test.form.setNotes(QStringLiteral("Bach, Bartók"));
        EXPECT_EQ(test.form.errorText(), QString()) << c.reason;
    }
}

TEST(CalendarEditViewModel, SavesOnceWhatWasWrongIsMended) {
    Editing test;
    test.form.times()->setEndTime(QStringLiteral("late"));
    test.form.save();
    test.form.times()->setEndTime(QStringLiteral("16h30"));
    test.form.save();
    test.settle();
    EXPECT_EQ(test.savedSpy.count(), 1);
    EXPECT_EQ(test.onlyEvent().endDate, test.today(QTime(16, 30)));
}

TEST(CalendarEditViewModel, OnlyShowsAnEventOfAReadOnlyCalendar) {
    Editing test;
    EKEventData moved = test.onlyEvent();
    moved.calendarIdentifier = test.putCalendar("Holidays", false);
    test.database.putEvent(moved);
    test.settle();
    EXPECT_FALSE(test.form.isWritable(test.shown("Piano")));
    test.form.begin(test.shown("Piano"));
    test.settle();
    EXPECT_EQ(test.form.calendarTitle(), QStringLiteral("Holidays"));
    EXPECT_EQ(test.form.lockReason(), "This calendar is read-only.");
    EXPECT_FALSE(test.form.canSave());
}

TEST(CalendarEditViewModel, SaysWhenTheEventToEditIsGone) {
    Editing test;
    const QVariant row = test.shown("Piano");
    test.database.dropEvent(test.event);
    test.form.begin(row);
    EXPECT_EQ(test.form.title(), QStringLiteral("Piano"));
    test.settle();
    EXPECT_EQ(test.form.errorText(), QStringLiteral("This event is no longer available."));
    EXPECT_FALSE(test.form.canSave());
}

TEST(CalendarEditViewModel, IsNotDisturbedByTheFormBefore) {
    Editing test;
    test.putEvent("Dinner", QTime(19, 30), QTime(21, 0));
    test.settle();
    QSignalSpy failed(&test.form, &CalendarEditViewModel::changeFailed);
    test.fillDisk();
    const int first = test.form.begin(test.shown("Piano"));
    test.time.runPosted();
    test.form.setTitle(QStringLiteral("Piano lesson"));
    test.form.save();
    test.form.begin(test.shown("Dinner"));
    test.form.end(first);
    test.settle();
    EXPECT_EQ(test.form.title(), QStringLiteral("Dinner"));
    EXPECT_TRUE(test.form.canSave());
    EXPECT_EQ(test.form.errorText(), QString());
    ASSERT_EQ(failed.count(), 1);
    EXPECT_EQ(failed.at(0).at(0), QStringLiteral("Disk full."));
}

TEST(CalendarEditViewModel, DeletesEventsAndDetachesReminders) {
    Editing test;
    const QString reminder = test.add(QStringLiteral("Plants"), 0, QTime(18, 0));
    test.settle();
    QSignalSpy removed(&test.form, &CalendarEditViewModel::removed);
    const QVariant plants = test.shown("Plants");
    EXPECT_TRUE(test.form.isReminder(plants));
    EXPECT_EQ(test.form.reminderId(plants), reminder);

    test.form.detach(plants);
    test.form.remove(test.shown("Piano"));
    test.settle();
    EXPECT_EQ(removed.count(), 2);
    EXPECT_TRUE(test.database.allEvents().empty());
    EXPECT_EQ(test.database.reminder(reminder)->dueDateComponents, std::nullopt);
}

TEST(CalendarEditViewModel, SaysWhyARemovalDidNotHappen) {
    Editing test;
    test.add(QStringLiteral("Plants"), 0, QTime(18, 0));
    test.settle();
    QSignalSpy removed(&test.form, &CalendarEditViewModel::removed);
    QSignalSpy failed(&test.form, &CalendarEditViewModel::removalFailed);
    test.fillDisk();
    test.form.remove(test.shown("Piano"));
    test.settle();
    test.form.detach(test.shown("Plants"));
    test.settle();
    EXPECT_EQ(removed.count(), 0);
    EXPECT_THAT(failed, ElementsAre(QVariantList{QStringLiteral("Disk full.")},
                                    QVariantList{QStringLiteral("Disk full.")}));
}

}  // namespace
