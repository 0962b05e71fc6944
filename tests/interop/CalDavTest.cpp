#include "contracts/EvolutionHouse.h"
#include "interop/CalDavServer.h"
#include "support/EventStoreDriver.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// A task list and a calendar that an online account brings into the desktop's database.
class CalDav : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!CalDavServer::isInstalled())
            GTEST_SKIP() << "radicale is not installed; scripts/install-dependencies installs it.";
        server.put("tasks", "bread", task("bread", "Bread"));
        server.put("events", "standup", event("standup", "Standup"));
        server.start();
        list = server.addAccount("tasks", "Home", E_CAL_CLIENT_SOURCE_TYPE_TASKS);
        calendar = server.addAccount("events", "Work", E_CAL_CLIENT_SOURCE_TYPE_EVENTS);
        ASSERT_EQ(driver.requestAccess(), std::nullopt);
        house.awaitThat([&] { return driver.openTitles().size() == 1 && eventTitles().size() == 1; });
    }
    static QByteArray task(const QByteArray& uid, const QByteArray& title, const QByteArray& more = {}) {
        return item("VTODO", uid, title, "DUE;VALUE=DATE:20260330\r\nX-THEIRS:kept\r\n" + more);
    }
    static QByteArray event(const QByteArray& uid, const QByteArray& title) {
        return item("VEVENT", uid, title,
                    "DTSTART:20260330T090000Z\r\nDTEND:20260330T093000Z\r\nRRULE:FREQ=DAILY;COUNT=3\r\n");
    }
    static QByteArray item(const QByteArray& component, const QByteArray& uid, const QByteArray& title,
                           const QByteArray& more) {
        return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Somebody//Else//EN\r\nBEGIN:" + component +
               "\r\nUID:" + uid + "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:" + title + "\r\n" + more +
               "END:" + component + "\r\nEND:VCALENDAR\r\n";
    }
    std::vector<QString> eventTitles() {
        std::vector<QString> result;
        for (const EKEventRef& event : driver.events(at("UTC", {2026, 3, 30}), at("UTC", {2026, 3, 31})))
            result.push_back(event->data.title);
        return result;
    }

    EvolutionHouse house;
    CalDavServer server;
    EventStoreDriver driver{house.store, house.scheduler};
    QString list;
    QString calendar;
};

TEST_F(CalDav, BringsChangesToTheServerAndBack) {
    const EKReminderRef reminder = house.store.calendarItem("bread");
    ASSERT_TRUE(reminder);
    reminder->data.title = "Rye bread";
    reminder->data.isFlagged = true;
    ASSERT_TRUE(driver.save(reminder).has_value());
    const std::string written = server.text("tasks", "bread").toStdString();
    EXPECT_THAT(written, HasSubstr("SUMMARY:Rye bread"));
    EXPECT_THAT(written, HasSubstr("X-THEIRS:kept"));
    EXPECT_THAT(written, HasSubstr("X-PINNED:true"));
    EXPECT_THAT(written, Not(HasSubstr("X-EVOLUTION")));

    const EKReminderRef added =
        driver.add(aReminder("").titled("Milk").in(list).due({2026, 4, 1}, {9, 0}, "Europe/Paris"));
    const std::string milk = server.textWith("tasks", "SUMMARY:Milk").toStdString();
    EXPECT_THAT(milk, HasSubstr("DUE;TZID=Europe/Paris:20260401T090000"));
    EXPECT_THAT(milk, HasSubstr("BEGIN:VTIMEZONE"));
    ASSERT_TRUE(driver.remove(added).has_value());
    EXPECT_EQ(server.textWith("tasks", "SUMMARY:Milk"), QByteArray());

    // One date of a series.
    const EKEventRef meeting = driver.events(at("UTC", {2026, 3, 31}), at("UTC", {2026, 4, 1})).front();
    meeting->data.title = "Retrospective";
    ASSERT_TRUE(driver.save(meeting).has_value());
    EXPECT_THAT(server.text("events", "standup").toStdString(),
                ::testing::AllOf(HasSubstr("SUMMARY:Retrospective"), HasSubstr("SUMMARY:Standup"),
                                 HasSubstr("RECURRENCE-ID")));

    server.put("tasks", "bread", task("bread", "White bread", "PRIORITY:1\r\n"));
    server.put("tasks", "butter", task("butter", "Butter"));
    server.refresh();
    house.awaitThat([&] { return driver.openTitles() == std::vector<QString>{"Butter", "White bread"}; });
    EXPECT_EQ(house.store.calendarItem("bread")->data.priority, 1);
    server.remove("tasks", "butter");
    server.refresh();
    house.awaitThat([&] { return driver.openTitles() == std::vector<QString>{"White bread"}; });
}

TEST_F(CalDav, LosesNothingWhereBothSidesChangedAnItem) {
    const EKReminderRef reminder = house.store.calendarItem("bread");
    server.put("tasks", "bread", task("bread", "White bread", "PRIORITY:1\r\n"));
    reminder->data.title = "Rye bread";
    reminder->data.notes = "sliced";
    const auto refused = driver.save(reminder);
    ASSERT_FALSE(refused.has_value());
    EXPECT_EQ(refused.error().code, EKError::Code::conflict);
    EXPECT_THAT(server.text("tasks", "bread").toStdString(), HasSubstr("SUMMARY:White bread"));

    // What the server has is shown; the notes can be added to that.
    house.awaitThat([&] { return driver.openTitles() == std::vector<QString>{"White bread"}; });
    reminder->reset();
    ASSERT_TRUE(reminder->refresh());
    reminder->data.notes = "sliced";
    ASSERT_TRUE(driver.save(reminder).has_value());
    EXPECT_THAT(server.text("tasks", "bread").toStdString(),
                ::testing::AllOf(HasSubstr("SUMMARY:White bread"), HasSubstr("DESCRIPTION:sliced"),
                                 HasSubstr("PRIORITY:1")));
}

TEST_F(CalDav, OutlivesAServerThatGoesAwayAndComesBack) {
    server.stop();
    EXPECT_THAT(driver.openTitles(), ElementsAre("Bread"));
    const EKReminderRef reminder = house.store.calendarItem("bread");
    reminder->data.title = "Rye bread";
    const auto answer = driver.save(reminder);
    const QString expected = answer ? "Rye bread" : "Bread";
    EXPECT_THAT(driver.openTitles(), ElementsAre(expected));

    server.put("tasks", "butter", task("butter", "Butter"));
    server.start();
    server.refresh();
    house.awaitThat([&] {
        return driver.openTitles() == std::vector<QString>{"Butter", expected} ||
               driver.openTitles() == std::vector<QString>{expected, "Butter"};
    });
    // What was said to be written is on the server.
    EXPECT_THAT(server.text("tasks", "bread").toStdString(), HasSubstr("SUMMARY:" + expected.toStdString()));
    reminder->data.title = "Toast";
    ASSERT_TRUE(driver.save(reminder).has_value());
    EXPECT_THAT(server.text("tasks", "bread").toStdString(), HasSubstr("SUMMARY:Toast"));
}

TEST_F(CalDav, ShowsWhatWasSeenLastWhenItStartsWithoutTheServer) {
    server.stop();
    house.service.kill("org.gnome.evolution.dataserver.Calendar");
    EvolutionEventStore store(house.scheduler, house.scheduler, house.calendar);
    EventStoreDriver fresh(store, house.scheduler);
    ASSERT_EQ(fresh.requestAccess(), std::nullopt);
    EXPECT_THAT(fresh.openTitles(), ElementsAre("Bread"));

    server.put("tasks", "butter", task("butter", "Butter"));
    server.start();
    server.refresh();
    house.awaitThat([&] { return fresh.openTitles() == std::vector<QString>{"Bread", "Butter"}; });
}

}  // namespace
}  // namespace kestrant
