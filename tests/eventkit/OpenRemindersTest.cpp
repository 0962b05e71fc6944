#include "eventkit/model/OpenReminders.h"

#include "support/CountingEventStore.h"
#include "support/ManualScheduler.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kestrant {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class OpenRemindersTest : public testing::Test {
  protected:
    OpenRemindersTest() {
        database.putCalendar({.calendarIdentifier = QStringLiteral("list")});
        put("a");
    }
    void put(const char* id) { database.putReminder(aReminder(id)); }
    /// Asks, and writes down how many reminders were found.
    void ask() {
        open->fetch([this](const OpenReminders::Reminders& reminders) {
            answers.push_back(reminders->size());
            last = reminders;
        });
    }

    ManualScheduler scheduler{Instant(std::chrono::hours(500000))};
    MovableTimeZone currentZone;
    CountingEventStore database{scheduler, scheduler, currentZone};
    std::optional<OpenReminders> open{std::in_place, database, scheduler};
    std::vector<std::size_t> answers;
    OpenReminders::Reminders last;
};

TEST_F(OpenRemindersTest, OneFetchServesEverybodyUntilTheDatabaseChanges) {
    scheduler.runPosted();
    ask();
    ask();
    EXPECT_THAT(answers, IsEmpty()) << "on a later turn";
    scheduler.runPosted();
    const OpenReminders::Reminders first = last;
    ask();
    EXPECT_EQ(answers.size(), 2U) << "on a later turn";
    scheduler.runPosted();
    EXPECT_THAT(answers, ElementsAre(1U, 1U, 1U));
    EXPECT_EQ(last, first);
    EXPECT_EQ(database.openFetches, 1);

    put("b");
    scheduler.runPosted();
    ask();
    ask();
    scheduler.runPosted();
    EXPECT_THAT(answers, ElementsAre(1U, 1U, 1U, 2U, 2U));
    EXPECT_EQ(database.openFetches, 2);
}

TEST_F(OpenRemindersTest, WhoAsksAfterAChangeIsNotToldOfTheTimeBefore) {
    scheduler.runPosted();
    ask();
    put("b");
    ask();
    scheduler.runPosted();
    EXPECT_EQ(last->size(), 2U) << "the fetch was under way";
    ask();
    put("c");
    scheduler.runPosted();
    EXPECT_EQ(last->size(), 3U) << "the answer was under way";
}

TEST_F(OpenRemindersTest, WhatIsFoundWithoutAccessIsNotKept) {
    database.setAuthorizationStatus(EKAuthorizationStatus::denied);
    scheduler.runPosted();
    ask();
    scheduler.runPosted();
    ask();
    scheduler.runPosted();
    EXPECT_THAT(answers, ElementsAre(0U, 0U));
    EXPECT_EQ(database.openFetches, 2);
}

TEST_F(OpenRemindersTest, NobodyIsToldAfterItsEnd) {
    ask();
    open.reset();
    scheduler.runPosted();
    open.emplace(database, scheduler);
    ask();
    scheduler.runPosted();
    ask();
    open.reset();
    scheduler.runPosted();
    EXPECT_EQ(answers.size(), 1U);
}

}  // namespace
}  // namespace kestrant
