#include "interop/CalDavAccount.h"

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
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

/// An account whose server takes requests and does not answer, with little patience.
class CalDavSilence : public CalDav {
  protected:
    CalDavSilence() : CalDav(2s) {}

    /// A list with one reminder of the same name.
    QString addList(const QString& name) {
        server.makeCollection(name, "VTODO");
        server.put(name, name, task(name.toUtf8(), name.toUtf8()));
        const QString result = server.addAccount(name, name, E_CAL_CLIENT_SOURCE_TYPE_TASKS);
        house.awaitThat([&] { return house.store.calendarItem(name) != nullptr && isWritable(result); });
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
    EXPECT_FALSE(answer.has_value()) << "nobody has given up yet: "
                                     << (*answer ? "" : qPrintable(answer->error().message.english));
    server.resume();
    house.awaitThat([&] { return answer.has_value(); });
    EXPECT_TRUE(answer->has_value()) << qPrintable(answer->error().message.english);
}

TEST_F(CalDavSilence, BeginsWithoutAListThatIsLate) {
    const QString local = driver.addList("Local");
    // A store that was told which lists it needs does not wait for the silent one.
    for (const auto& wanted : {std::optional<QStringList>(), std::optional(QStringList{"bread"})}) {
        server.pause();
        // Opening the account from here on waits for the server.
        house.service.kill("org.gnome.evolution.dataserver.Calendar");
        EvolutionEventStore store(house.scheduler, house.scheduler, house.currentZone, 10s,
                                  {.reminders = wanted});
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
    const auto tell = [&](const std::string& name) {
        return [&, name](const EventStoreDriver::SaveAnswer& answer) {
            ASSERT_FALSE(answer.has_value()) << name;
            told[name] = answer.error().code;
            house.store.awaitOutcome(answer.error(), [&, name](const auto& known) { ended[name] = known; });
        };
    };
    const auto save = [&](const EKReminderRef& reminder, const std::string& name) {
        house.store.save(reminder, tell(name));
    };
    server.pause();
    save(edited("edited", titled), "edit");
    save(edited("completed", completed), "complete");
    save(edited("away", [&](EKReminderData& data) { data.calendarIdentifier = local; }), "move away");
    there->data.calendarIdentifier = target;
    save(there, "move there");
    house.store.remove(house.store.calendarItem("removed"), tell("remove"));
    const EKReminderRef made = std::make_shared<EKReminder>(house.store);
    made->data = aReminder("").titled("new").in(created);
    made->data.calendarItemIdentifier.clear();
    save(made, "create");
    house.store.saveAll({edited("flagged", flagged)},
                        [&](const auto& answers) { tell("flag")(answers.front()); });
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
    auto store =
        std::make_unique<EvolutionEventStore>(house.scheduler, house.scheduler, house.currentZone, 2s);
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
                             house.store.awaitOutcome(answer.error(),
                                                      [&](const auto& outcome) { known = outcome; });
                     });
    house.awaitThat([&] { return !house.store.problems().empty(); });
    // Either outcome is right: the process may read the request before it ends.
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

}  // namespace
}  // namespace kestrant
