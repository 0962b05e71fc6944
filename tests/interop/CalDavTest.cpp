#include "contracts/EvolutionHouse.h"
#include "interop/CalDavServer.h"
#include "support/EventStoreDriver.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <thread>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

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

    explicit CalDav(std::chrono::milliseconds longestCall = EvolutionEventStore::longestCall)
        : house(longestCall) {}

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

// Not part of every run: about one in five times the service refuses changes, or keeps them, for longer than
// the two minutes that are waited. --gtest_also_run_disabled_tests runs it.
TEST_F(CalDav, DISABLED_SaysThatChangesAreKeptWhileTheServerCannotBeReached) {
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
    const std::function<bool()> changes[] = {edit, create, flag, remove};
    for (const auto& change : changes) {
        EXPECT_THAT(house.store.problems(), IsEmpty());
        server.stop();
        // A process that has had a connection refuses changes instead.
        house.service.kill("org.gnome.evolution.dataserver.Calendar");
        house.awaitThat([&] {
            const auto shown = house.store.calendarWithIdentifier(list);
            return house.store.problems().empty() && shown && shown->allowsContentModifications;
        });
        // The list may look well before the end of its process is known; a change is refused then.
        house.awaitThat([&] { return change(); });
        ASSERT_EQ(house.store.problems().size(), 1u);
        EXPECT_THAT(house.store.problems().front().english.toStdString(),
                    AllOf(HasSubstr("Home"), HasSubstr("cannot be reached")));
        server.start();
        house.awaitThat([&] { return house.store.problems().empty(); });
    }
    house.awaitThat([&] {
        return server.text("tasks", "bread").contains("X-PINNED") &&
               !server.textWith("tasks", "Own").isEmpty() && server.text("tasks", "jam").isEmpty();
    });
    EXPECT_TRUE(server.text("tasks", "bread").contains("SUMMARY:Bread!"));
}

/// An account whose server takes requests and does not answer, with little patience.
class CalDavSilence : public CalDav {
  protected:
    CalDavSilence() : CalDav(2s) {}

    /// A list with one reminder of the same name.
    QString addList(const QString& name) {
        server.makeCollection(name, "VTODO");
        server.put(name, name, task(name.toUtf8(), name.toUtf8()));
        const QString result = server.addAccount(name, name, E_CAL_CLIENT_SOURCE_TYPE_TASKS);
        house.awaitThat([&] { return house.store.calendarItem(name) != nullptr; });
        return result;
    }
    EKReminderRef edited(const QString& name, const std::function<void(EKReminderData&)>& edit) {
        const EKReminderRef reminder = house.store.calendarItem(name);
        edit(reminder->data);
        return reminder;
    }
};

TEST_F(CalDavSilence, HoldsUpNoOtherList) {
    const QString local = driver.addList("Local");
    driver.add(aReminder("").titled("Milk").in(local));
    server.pause();
    std::optional<EventStoreDriver::SaveAnswer> answer;
    house.store.save(edited("bread", [](EKReminderData& data) { data.title = "Rye"; }),
                     [&](const auto& result) { answer = result; });
    const EKReminderRef milk = driver.add(aReminder("").titled("More milk").in(local));
    ASSERT_TRUE(driver.remove(milk).has_value());
    ForeignList(local, E_CAL_CLIENT_SOURCE_TYPE_TASKS)
        .add("BEGIN:VTODO\r\nUID:theirs\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:x\r\nEND:VTODO\r\n");
    house.awaitThat([&] { return house.store.calendarItem("theirs") != nullptr; });
    EXPECT_FALSE(answer.has_value()) << "nobody has given up yet";
    server.resume();
    house.awaitThat([&] { return answer.has_value(); });
    EXPECT_TRUE(answer->has_value());
}

TEST_F(CalDavSilence, BeginsWithoutAListThatIsLate) {
    const QString local = driver.addList("Local");
    // Whoever knows what it wants does not wait for it any longer.
    for (const auto& wanted : {std::optional<QStringList>(), std::optional(QStringList{"bread"})}) {
        server.pause();
        // Whoever opens the account now has to wait for the server.
        house.service.kill("org.gnome.evolution.dataserver.Calendar");
        EvolutionEventStore store(house.scheduler, house.scheduler, house.calendar, 10s, {.items = wanted});
        EventStoreDriver fresh(store, house.scheduler);
        ASSERT_EQ(fresh.requestAccess(), std::nullopt);
        EXPECT_FALSE(store.calendarWithIdentifier(list)->isAnswering);
        ASSERT_TRUE(store.calendarWithIdentifier(local)->isAnswering);
        EXPECT_FALSE(store.problems().empty());
        const EKReminderRef milk = fresh.add(aReminder("").titled("Milk").in(local));
        server.resume();
        house.awaitThat([&] {
            return store.problems().empty() && fresh.openTitles() == std::vector<QString>{"Bread", "Milk"};
        });
        ASSERT_TRUE(fresh.remove(milk).has_value());
    }
}

TEST_F(CalDavSilence, LeavesOpenWhatBecomesOfAChangeUntilTheServerAnswers) {
    const QString local = driver.addList("Local");
    const EKReminderRef there = driver.add(aReminder("").titled("there").in(local));
    const auto titled = [](EKReminderData& data) { data.title += " changed"; };
    const auto completed = [](EKReminderData& data) { data.isCompleted = true; };
    const auto flagged = [](EKReminderData& data) { data.isFlagged = true; };
    for (const char* name : {"edited", "completed", "removed", "away", "flagged"})
        addList(name);
    const QString target = addList("target");
    const QString created = addList("created");

    std::map<std::string, EKError::Code> told;
    std::map<std::string, EventStoreDriver::SaveAnswer> ended;
    const auto tell = [&](const std::string& name, const QString& identifier) {
        return [&, name, identifier](const EventStoreDriver::SaveAnswer& answer) {
            ASSERT_FALSE(answer.has_value()) << name;
            told[name] = answer.error().code;
            house.store.awaitOutcome(identifier, [&, name](const auto& known) { ended[name] = known; });
        };
    };
    const auto save = [&](const EKReminderRef& reminder, const std::string& name) {
        house.store.save(reminder, tell(name, reminder->calendarItemIdentifier()));
    };
    server.pause();
    save(edited("edited", titled), "edit");
    save(edited("completed", completed), "complete");
    save(edited("away", [&](EKReminderData& data) { data.calendarIdentifier = local; }), "move away");
    there->data.calendarIdentifier = target;
    save(there, "move there");
    house.store.remove(house.store.calendarItem("removed"), tell("remove", "removed"));
    const EKReminderRef made = std::make_shared<EKReminder>(house.store);
    made->data = aReminder("").titled("new").in(created);
    made->data.calendarItemIdentifier.clear();
    save(made, "create");
    house.store.saveAll({edited("flagged", flagged)},
                        [&](const auto& answers) { tell("flag", "flagged")(answers.front()); });
    house.awaitThat([&] { return told.size() == 7; });
    for (const auto& [name, code] : told)
        EXPECT_EQ(code, EKError::Code::outcomeUnknown) << name;
    EXPECT_GE(house.store.problems().size(), 7u);
    const auto behind = driver.save(edited("edited", titled));
    ASSERT_FALSE(behind.has_value());
    EXPECT_EQ(behind.error().code, EKError::Code::storage) << "it was not even sent";

    server.resume();
    house.awaitThat([&] { return ended.size() == 7 && house.store.problems().empty(); });
    for (const auto& [name, answer] : ended)
        EXPECT_TRUE(answer.has_value()) << name << ": " << answer.error().message.english.toStdString();
    EXPECT_THAT(driver.openTitles(), UnorderedElementsAre("Bread", "away", "created", "edited changed",
                                                          "flagged", "new", "target", "there"));
    EXPECT_EQ(house.store.calendarItem("away")->data.calendarIdentifier, local);
    EXPECT_THAT(server.text("edited", "edited").toStdString(), HasSubstr("SUMMARY:edited changed"));
    EXPECT_THAT(server.text("completed", "completed").toStdString(), HasSubstr("STATUS:COMPLETED"));
    EXPECT_THAT(server.text("flagged", "flagged").toStdString(), HasSubstr("X-PINNED"));
    EXPECT_EQ(server.text("removed", "removed"), QByteArray());
    EXPECT_EQ(server.text("away", "away"), QByteArray());
    EXPECT_NE(server.textWith("target", "SUMMARY:there"), QByteArray());
    EXPECT_NE(server.textWith("created", "SUMMARY:new"), QByteArray());

    // What is known can be taken back.
    for (const auto& [name, answer] : ended) {
        const auto reverted = driver.revert(*answer);
        EXPECT_TRUE(reverted.has_value())
            << name << ": " << (reverted ? "" : reverted.error().message.english.toStdString());
    }
    EXPECT_THAT(driver.openTitles(), UnorderedElementsAre("Bread", "away", "completed", "created", "edited",
                                                          "flagged", "removed", "target", "there"));
    EXPECT_NE(server.textWith("removed", "SUMMARY:removed"), QByteArray());
    EXPECT_EQ(server.textWith("target", "SUMMARY:there"), QByteArray());
}

TEST_F(CalDavSilence, EndsWithoutTheAnswerToAChangeThatTookTooLong) {
    auto store = std::make_unique<EvolutionEventStore>(house.scheduler, house.scheduler, house.calendar, 2s);
    EventStoreDriver fresh(*store, house.scheduler);
    ASSERT_EQ(fresh.requestAccess(), std::nullopt);
    server.pause();
    const EKReminderRef reminder = store->calendarItem("bread");
    reminder->data.title = "Rye";
    const auto answer = fresh.save(reminder);
    ASSERT_FALSE(answer.has_value());
    EXPECT_EQ(answer.error().code, EKError::Code::outcomeUnknown);
    std::promise<void> ended;
    std::thread watch([this, end = ended.get_future()] {
        EXPECT_EQ(end.wait_for(60s), std::future_status::ready);
        server.resume();
    });
    store.reset();
    ended.set_value();
    watch.join();
}

TEST_F(CalDavSilence, TellsWhatBecameOfAChangeOverWhichTheServerWentAway) {
    server.pause();
    std::optional<EventStoreDriver::SaveAnswer> known;
    house.store.save(edited("bread", [](EKReminderData& data) { data.title = "Rye"; }),
                     [&](const EventStoreDriver::SaveAnswer& answer) {
                         if (answer || answer.error().code != EKError::Code::outcomeUnknown)
                             known = answer;
                         else
                             house.store.awaitOutcome("bread", [&](const auto& outcome) { known = outcome; });
                     });
    house.awaitThat([&] { return !house.store.problems().empty(); });
    // It may get at the request before it ends, or not.
    server.stop();
    server.start();
    house.awaitThat([&] { return known.has_value(); });
    server.refresh();
    const QString title = known->has_value() ? "Rye" : "Bread";
    house.awaitThat([&] {
        return driver.openTitles() == std::vector<QString>{title} &&
               server.text("tasks", "bread").contains("SUMMARY:" + title.toUtf8());
    });
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
