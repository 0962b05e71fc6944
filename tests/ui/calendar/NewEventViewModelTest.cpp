#include "ui/calendar/NewEventViewModel.h"

#include "ui/WithCalendars.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

struct Writing : WithCalendars<Program> {
    Writing() {
        load();
        form.begin();
    }
    void submit() {
        form.submit();
        settle();
    }
    NewEventViewModel& form = newEvent;
    QSignalSpy added{&form, &NewEventViewModel::added};
};

TEST(NewEventViewModel, AddsWhatItShows) {
    Writing test;
    EXPECT_FALSE(test.form.canSubmit());
    EXPECT_EQ(test.form.calendarTitle(), QStringLiteral("Private"));
    test.form.setTitle(QStringLiteral("  Dinner "));
    test.form.setCalendarId(test.office);
    test.form.times()->setStartTime(QStringLiteral("19:30"));
    ASSERT_TRUE(test.form.canSubmit());
    test.submit();
    EXPECT_EQ(test.added.count(), 1);
    const EKEventData saved = test.onlyEvent();
    EXPECT_EQ(saved.title, QStringLiteral("Dinner"));
    EXPECT_EQ(saved.calendarIdentifier, test.office);
    EXPECT_EQ(saved.startDate, test.today(QTime(19, 30)));
    EXPECT_EQ(saved.endDate, test.today(QTime(20, 30)));
    EXPECT_FALSE(saved.isAllDay);
    // Ready for the next one.
    EXPECT_EQ(test.form.title(), QString());
    EXPECT_EQ(test.form.times()->startTime(), QStringLiteral("15:00"));
}

TEST(NewEventViewModel, UnderstandsTheLineAndGivesItsWordsBack) {
    const auto write = [](Writing& test) {
        test.form.setTitle(QStringLiteral("Dinner with Maren friday 7pm-9pm at Cafe Luz, 30 min before"));
    };
    Writing test;
    write(test);
    EXPECT_EQ(test.form.times()->startTime(), QStringLiteral("19:00"));
    EXPECT_EQ(test.form.times()->endTime(), QStringLiteral("21:00"));
    EXPECT_EQ(test.form.facts().size(), 2);
    test.submit();
    const EKEventData saved = test.onlyEvent();
    EXPECT_EQ(saved.title, QStringLiteral("Dinner with Maren"));
    EXPECT_EQ(saved.location.value_or(QString()), QStringLiteral("Cafe Luz"));
    EXPECT_EQ(saved.alarms.size(), 1u);
    EXPECT_EQ(saved.endDate - saved.startDate, std::chrono::hours(2));

    // Tab completes what was typed before, and the names of calendars.
    test.form.setTitle(QStringLiteral("dinn"));
    EXPECT_EQ(test.form.completion(), QStringLiteral("er with Maren"));
    test.form.setTitle(QStringLiteral("Lunch tomorrow #priv"));
    EXPECT_EQ(test.form.completion(), QStringLiteral("ate"));
    test.form.setTitle(QStringLiteral("Swim mon and thu 7pm JST"));
    ASSERT_EQ(test.form.offers().size(), 1);
    test.form.accept(test.form.offers()[0].toMap()[QStringLiteral("words")].toString());
    EXPECT_TRUE(test.form.offers().isEmpty());

    write(test);
    test.form.takeBack(QStringLiteral("place"));
    EXPECT_EQ(test.form.facts().size(), 1);
    test.form.setTitle(QStringLiteral("Dinner"));
    EXPECT_TRUE(test.form.pieces().isEmpty());
    EXPECT_EQ(test.form.times()->startTime(), QStringLiteral("15:00"))
        << "what the line no longer says is forgotten";
}

TEST(NewEventViewModel, AddsWholeDays) {
    Writing test;
    test.form.setTitle(QStringLiteral("Holiday"));
    test.form.times()->setAllDay(true);
    test.form.times()->endDay()->setIsoDay(QStringLiteral("2026-11-23"));
    test.submit();
    const EKEventData saved = test.onlyEvent();
    EXPECT_TRUE(saved.isAllDay);
    EXPECT_EQ(saved.startDate, at("Europe/Paris", test.day(0)));
    EXPECT_EQ(saved.endDate, at("Europe/Paris", test.day(3)));
}

TEST(NewEventViewModel, KeepsWhatWasWrittenWhenItCannotBeSaved) {
    Writing test;
    test.fillDisk();
    test.form.setTitle(QStringLiteral("Dinner"));
    test.form.times()->setStartTime(QStringLiteral("19:30"));
    test.submit();
    EXPECT_EQ(test.form.errorText(), QStringLiteral("Disk full."));
    test.preferences.setLanguage(Language::french);
    EXPECT_EQ(test.form.errorText(), QStringLiteral("Disque plein."));
    test.form.begin();
    EXPECT_EQ(test.form.title(), QStringLiteral("Dinner"));
    EXPECT_EQ(test.form.times()->startTime(), QStringLiteral("19:30"));

    test.clearDisk();
    test.submit();
    EXPECT_EQ(test.form.errorText(), QString());
    EXPECT_EQ(test.onlyEvent().startDate, test.today(QTime(19, 30)));
}

template <typename Form>
void keepsWhatWasWritten(Writing& test, Form& form, bool isGivenUp, bool isMade) {
    QSignalSpy added(&form, &Form::added);
    const QString line = QStringLiteral("Dinner at 19:30");
    test.database.setAnswering(false);
    form.setTitle(line);
    form.submit();
    test.settle();
    EXPECT_TRUE(form.isSaving() && form.title() == line && !form.errorText().isEmpty());
    if (isGivenUp) {
        form.discard();
        EXPECT_TRUE(!form.isSaving() && form.title().isEmpty() && form.errorText().isEmpty());
    }
    if (!isMade)
        test.fillDisk();
    test.database.setAnswering(true);
    test.settle();
    EXPECT_FALSE(form.isSaving());
    EXPECT_EQ(form.title(), isMade ? QString() : line);
    EXPECT_EQ(form.errorText(), isMade ? QString() : QStringLiteral("Disk full."));
    EXPECT_EQ(added.count(), isMade && !isGivenUp ? 1 : 0);
    test.clearDisk();
    form.discard();
}

TEST(NewEventViewModel, KeepsWhatWasWrittenUntilItIsKnownToBeSaved) {
    Writing test;
    for (const bool isGivenUp : {false, true}) {
        for (const bool isMade : {false, true}) {
            SCOPED_TRACE(testing::Message() << isGivenUp << isMade);
            keepsWhatWasWritten(test, test.form, isGivenUp, isMade);
            keepsWhatWasWritten(test, test.quickAdd, isGivenUp, isMade);
        }
    }
    EXPECT_EQ(test.database.reminders().size(), 2u);
    EXPECT_EQ(test.database.allEvents().size(), 2u);
}

TEST(NewEventViewModel, RefusesAnEndBeforeTheStart) {
    Writing test;
    test.form.setTitle(QStringLiteral("Dinner"));
    test.form.times()->setEndTime(QStringLiteral("12:00"));
    test.submit();
    EXPECT_EQ(test.form.errorText(), QStringLiteral("The end must be after the start."));
    EXPECT_TRUE(test.database.allEvents().empty());
}

TEST(NewEventViewModel, OffersTheCalendarsThatThereAre) {
    Writing test;
    test.database.setDefaultForNewEvents(test.office);
    EXPECT_EQ(test.form.calendarId(), test.office);
    test.form.setTitle(QStringLiteral("Lunch"));
    test.submit();
    EXPECT_EQ(test.onlyEvent().calendarIdentifier, test.office);
    test.database.dropEvent(test.onlyEvent().calendarItemIdentifier);
    const QString feed = test.putCalendar("Feed", false);
    test.database.setDefaultForNewEvents(feed);
    EXPECT_EQ(test.form.calendarId(), test.personal) << "not one that takes no events";
    test.database.dropCalendar(feed);

    test.form.setCalendarId(test.office);
    test.form.begin();
    EXPECT_EQ(test.form.calendarId(), test.office);
    test.putCalendar("Holidays", false);
    EXPECT_EQ(test.form.calendars().size(), 2);
    test.database.dropCalendar(test.office);
    EXPECT_EQ(test.form.calendarId(), test.personal);
    test.database.dropCalendar(test.personal);
    EXPECT_EQ(test.form.calendarId(), QString());
    EXPECT_EQ(test.form.calendarTitle(), QStringLiteral("New calendar"));
    test.form.setTitle(QStringLiteral("Dinner"));
    test.submit();
    EXPECT_EQ(test.form.calendarId(), test.onlyEvent().calendarIdentifier);
}

}  // namespace
