#include "interop/CalDavAccount.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

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

TEST_F(CalDav, RemovesAChangedDateOfASeriesInOneGo) {
    const auto meetings = [&] { return driver.events(at("UTC", {2026, 3, 30}), at("UTC", {2026, 4, 2})); };
    const EKEventRef changed = meetings()[1];
    changed->data.title = "Retrospective";
    ASSERT_TRUE(driver.save(changed).has_value());
    const auto removed = driver.remove(meetings()[1]);
    ASSERT_TRUE(removed.has_value()) << removed.error().message.english.toStdString();
    const std::string written = server.text("events", "standup").toStdString();
    EXPECT_THAT(written, AllOf(HasSubstr("EXDATE"), Not(HasSubstr("Retrospective"))));
    EXPECT_EQ(meetings().size(), 2u);
}

TEST_F(CalDav, TakesChangesBackOnTheServer) {
    const QString other = driver.addList("Other");
    const auto diary =
        driver.saveCalendar({.title = "Diary", .allowsReminders = false, .allowsEvents = true});
    ASSERT_TRUE(diary.has_value());
    const auto linesOnServer = [&] {
        const std::set<QByteArray> marks{"DTSTAMP", "LAST-MODIFIED", "SEQUENCE", "CREATED",
                                         "UID",     "PRODID",        "CALSCALE"};
        std::multiset<std::string> result;
        for (const char* collection : {"tasks", "events"}) {
            for (QByteArray& text : server.texts(collection)) {
                for (const QByteArray& line : text.replace("\r\n ", "").split('\n')) {
                    // The service notes the end of a rule among its parameters.
                    if (!marks.contains(line.left(line.indexOf(':'))))
                        result.insert(line.startsWith("RRULE") ? line.mid(line.indexOf(':')).toStdString()
                                                               : line.toStdString());
                }
            }
        }
        return result;
    };
    const auto bread = [&] {
        return driver.fetch(EKEventStore::predicateForIncompleteReminders({}, {}, {})).front();
    };
    const auto changeBread = [&](const std::function<void(EKReminderData&)>& change) {
        const EKReminderRef reminder = bread();
        change(reminder->data);
        return driver.save(reminder);
    };
    const auto second = [&] {
        return driver.events(at("UTC", {2026, 3, 31}), at("UTC", {2026, 4, 1})).front();
    };
    const auto changeSecond = [&](const std::function<void(EKEventData&)>& change) {
        const EKEventRef event = second();
        change(event->data);
        return driver.save(event);
    };
    using Change = std::function<EventStoreDriver::SaveAnswer()>;
    const std::pair<const char*, Change> changes[] = {
        {"edit", [&] { return changeBread([](auto& data) { data.title = "Rye", data.notes = "sliced"; }); }},
        {"move", [&] { return changeBread([&](auto& data) { data.calendarIdentifier = other; }); }},
        {"remove", [&] { return driver.remove(bread()); }},
        {"another hour",
         [&] { return changeSecond([](auto& data) { data.startDate += 1h, data.endDate += 1h; }); }},
        {"another calendar",
         [&] {
             return changeSecond([&](auto& data) { data.calendarIdentifier = diary->calendarIdentifier; });
         }},
        {"without one date", [&] { return driver.remove(second()); }},
    };
    const auto before = linesOnServer();
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        auto answer = change();
        ASSERT_TRUE(answer.has_value()) << answer.error().message.english.toStdString();
        const auto changed = linesOnServer();
        EXPECT_NE(changed, before);
        for (const auto& expected : {before, changed, before}) {
            answer = driver.revert(*answer);
            ASSERT_TRUE(answer.has_value()) << answer.error().message.english.toStdString();
            EXPECT_EQ(linesOnServer(), expected);
        }
    }
}

TEST_F(CalDav, FindsItemsByIdentifiersWithSpecialCharacters) {
    const QString uid = "a,b;c\\d";
    server.put("tasks", "odd", task("a\\,b\\;c\\\\d", "Odd"));
    server.put("events", "odd", event("a\\,b\\;c\\\\d", "Odd"));
    server.refresh();
    house.awaitThat([&] { return house.store.calendarItem(uid) && house.store.event(uid); });
    const EKReminderRef reminder = house.store.calendarItem(uid);
    reminder->data.title = "Even";
    ASSERT_TRUE(driver.save(reminder).has_value());
    reminder->data.isCompleted = true;
    ASSERT_TRUE(driver.save(reminder).has_value());
    EXPECT_THAT(driver.openTitles(), ElementsAre("Bread"));
    EXPECT_THAT(server.text("tasks", "odd").toStdString(),
                AllOf(HasSubstr("SUMMARY:Even"), HasSubstr("STATUS:COMPLETED")));
    ASSERT_TRUE(driver.remove(reminder).has_value());
    EXPECT_EQ(server.text("tasks", "odd"), QByteArray());
    ASSERT_TRUE(driver.remove(house.store.event(uid)).has_value());
    EXPECT_THAT(server.text("events", "odd").toStdString(), HasSubstr("EXDATE"));
    EXPECT_FALSE(house.store.calendarItem(uid));
}

TEST_F(CalDav, RefusesToMoveAnItemToWhereItIsAlready) {
    const QString other = driver.addList("Other");
    ForeignList(other, E_CAL_CLIENT_SOURCE_TYPE_TASKS)
        .add("BEGIN:VTODO\r\nUID:bread\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:Copy\r\nEND:VTODO\r\n");
    house.awaitThat([&] { return driver.openTitles().size() == 2; });
    for (const EKReminderRef& reminder :
         driver.fetch(EKEventStore::predicateForIncompleteReminders({}, {}, {}))) {
        const QString here = reminder->data.calendarIdentifier;
        reminder->data.calendarIdentifier = here == list ? other : list;
        const auto refused = driver.save(reminder);
        ASSERT_FALSE(refused.has_value());
        EXPECT_THAT(refused.error().message.english.toStdString(), HasSubstr("already"))
            << here.toStdString();
    }
    EXPECT_THAT(driver.openTitles(), ElementsAre("Bread", "Copy"));
}

TEST_F(CalDav, SaysThatChangesAreKeptUntilTheServerCanBeReached) {
    server.put("tasks", "jam", task("jam", "Jam"));
    server.refresh();
    house.awaitThat([&] { return house.store.calendarItem("jam") != nullptr; });
    const auto edit = [&] {
        const EKReminderRef reminder = house.store.calendarItem("bread");
        if (!reminder)
            return false;
        reminder->data.title += "!";
        return driver.save(reminder).has_value();
    };
    const auto flag = [&] {
        const EKReminderRef bread = house.store.calendarItem("bread");
        const EKReminderRef made = house.store.calendarItem("made");
        if (!bread || !made)
            return false;
        bread->data.isFlagged = made->data.isFlagged = true;
        const auto answers = driver.saveAll({bread, made});
        return answers[0].has_value() && answers[1].has_value();
    };
    const auto create = [&] {
        if (!house.store.calendarItem("made")) {
            ForeignList(list, E_CAL_CLIENT_SOURCE_TYPE_TASKS)
                .add("BEGIN:VTODO\r\nUID:made\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:Made\r\nEND:VTODO\r\n");
            house.awaitThat([&] { return house.store.calendarItem("made") != nullptr; });
        }
        const auto own = std::make_shared<EKReminder>(house.store);
        own->data = aReminder("").titled("Own").in(list);
        return driver.save(own).has_value();
    };
    const auto remove = [&] {
        const EKReminderRef jam = house.store.calendarItem("jam");
        return jam && driver.remove(jam).has_value();
    };
    const std::pair<const char*, std::function<bool()>> changes[] = {
        {"edit", edit}, {"create", create}, {"flag", flag}, {"remove", remove}};
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        EXPECT_THAT(house.store.problems(), IsEmpty());
        server.stop();
        // A process that has had a connection refuses changes instead.
        house.service.kill("org.gnome.evolution.dataserver.Calendar");
        house.awaitThat([&] {
            const auto shown = house.store.calendarWithIdentifier(list);
            return house.store.problems().empty() && shown && shown->allowsContentModifications;
        });
        // The list may look well before the end of its process is known; a change is refused then.
        bool isMade = false;
        house.awaitThat([&] { return isMade = isMade || change(); });
        const auto isToldBy = [](const EKEventStore& store) {
            const auto problems = store.problems();
            return problems.size() == 1 &&
                   problems.front().english.contains("Changes to “Home” have not been sent");
        };
        const auto isTold = [&] { return isToldBy(house.store); };
        house.awaitThat(isTold);
        // What is kept outlives the process that keeps it, and those that wrote it.
        house.service.kill("org.gnome.evolution.dataserver.Calendar");
        house.awaitThat(isTold);
        EvolutionEventStore next(house.scheduler, house.scheduler, house.currentZone);
        ASSERT_EQ(EventStoreDriver(next, house.scheduler).requestAccess(), std::nullopt);
        house.awaitThat([&] { return isToldBy(next); });
        server.start();
        house.awaitThat([&] { return house.store.problems().empty(); });
        ASSERT_FALSE(HasFatalFailure());
    }
    // Nobody tells what reaches the server.
    const ScheduledTask looking = house.scheduler.every(1s, [] {});
    house.awaitThat([&] {
        return server.text("tasks", "bread").contains("X-PINNED") &&
               !server.textWith("tasks", "Own").isEmpty() && server.text("tasks", "jam").isEmpty();
    });
    EXPECT_TRUE(server.text("tasks", "bread").contains("SUMMARY:Bread!"));
}

TEST_F(CalDav, ShowsWhatWasSeenLastWhenItStartsWithoutTheServer) {
    server.stop();
    house.service.kill("org.gnome.evolution.dataserver.Calendar");
    EvolutionEventStore store(house.scheduler, house.scheduler, house.currentZone);
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
