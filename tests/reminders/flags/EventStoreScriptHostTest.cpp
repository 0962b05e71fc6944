#include "reminders/flags/EventStoreScriptHost.h"

#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/SerialWorker.h"
#include "reminders/flags/FlaggedReminderAutomation.h"
#include "support/ManualScheduler.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <chrono>
#include <mutex>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Read = tl::expected<QSet<QString>, FlaggedReminderAutomation::AutomationError>;
using Set = tl::expected<void, FlaggedReminderAutomation::AutomationError>;

/// A scheduler that holds posted work back, except the first few items, until it is opened.
class Gate : public Scheduler {
  public:
    explicit Gate(Scheduler& scheduler) : scheduler_(scheduler) {}

    ScheduledTask after(Duration delay, std::function<void()> work) override {
        return scheduler_.after(delay, std::move(work));
    }
    ScheduledTask every(Duration interval, std::function<void()> work) override {
        return scheduler_.every(interval, std::move(work));
    }
    void post(std::function<void()> work) override {
        const std::lock_guard lock(mutex_);
        if (letThrough_ && passed_++ >= *letThrough_)
            held_.push_back(std::move(work));
        else
            scheduler_.post(std::move(work));
    }
    void close(int letThrough) {
        const std::lock_guard lock(mutex_);
        letThrough_ = letThrough;
        passed_ = 0;
    }
    void open() {
        const std::lock_guard lock(mutex_);
        letThrough_.reset();
        for (auto& work : std::exchange(held_, {}))
            scheduler_.post(std::move(work));
    }

  private:
    Scheduler& scheduler_;
    std::mutex mutex_;
    std::optional<int> letThrough_;
    int passed_ = 0;
    std::vector<std::function<void()>> held_;
};

TEST(ReminderScript, IsWrittenLineByLine) {
    EXPECT_EQ(ReminderScript{ReminderScript::ReadFlagged{}}.source().toStdString(),
              "with timeout of 8 seconds\n"
              "    tell application \"Reminders\"\n"
              "        return id of every reminder whose flagged is true and completed is false\n"
              "    end tell\n"
              "end timeout");
    const std::string begin = "with timeout of 8 seconds\n"
                              "    tell application \"Reminders\"\n"
                              "        set targetSuffix to \"abc\"\n";
    const std::string ownList =
        "        try\n"
        "    set flagged of (first reminder of list \"H\\\"o\\\\me\" whose id ends with "
        "targetSuffix) to true\n"
        "    return\n"
        "end try\n";
    const auto allLists = [](const std::string& value) {
        return "        repeat with aList in lists\n"
               "            try\n"
               "                set flagged of (first reminder of aList whose id ends with targetSuffix) "
               "to " +
               value +
               "\n                return\n"
               "            end try\n"
               "        end repeat\n"
               "    end tell\n"
               "end timeout";
    };
    const auto source = [](bool flag, const std::optional<QString>& list) {
        return ReminderScript{ReminderScript::SetFlag{QStringLiteral("abc"), flag, list}}
            .source()
            .toStdString();
    };
    EXPECT_EQ(source(true, QStringLiteral("H\"o\\me")), begin + ownList + allLists("true"));
    EXPECT_EQ(source(false, std::nullopt), begin + allLists("false"));
    EXPECT_EQ(source(false, QString()), begin + allLists("false"));
}

/// Scripts that run on a thread of their own against a database on this one.
class EventStoreScriptHostTest : public testing::Test {
  protected:
    EventStoreScriptHostTest() {
        for (const char* title : {"Home", "say \"hi\"\\\n🛒"})
            lists.push_back(database.putCalendar({.title = QString::fromUtf8(title)}));
    }
    void put(const char* id, int list) { database.putReminder(aReminder(id).in(lists.at(list))); }
    Read read() {
        std::optional<Read> answer;
        automation->readFlaggedIdentifiers([&](Read result) { answer = std::move(result); });
        EXPECT_TRUE(scheduler.runUntil([&] { return answer.has_value(); }));
        return std::move(*answer);
    }
    bool set(const char* key, bool flag, int list) {
        std::optional<Set> answer;
        automation->setFlag(QString::fromUtf8(key), flag,
                            database.calendarWithIdentifier(lists.at(list))->title,
                            [&](Set result) { answer = std::move(result); });
        EXPECT_TRUE(scheduler.runUntil([&] { return answer.has_value(); }));
        return answer->has_value();
    }

    ManualScheduler scheduler{Instant(std::chrono::hours(500000))};
    MovableTimeZone currentZone;
    Gate gate{scheduler};
    InMemoryEventStore database{gate, scheduler, currentZone};
    std::vector<QString> lists;
    OpenReminders openReminders{database, gate};
    EventStoreScriptHost host{database, openReminders, gate};
    std::optional<SerialWorker> queue{std::in_place};
    std::optional<FlaggedReminderAutomation> automation{std::in_place, host, *queue, scheduler};
};

TEST_F(EventStoreScriptHostTest, FlagsAreSetAndReadInTheDatabase) {
    put("A", 0);
    put("B", 1);
    put("C", 1);
    EXPECT_THAT(*read(), IsEmpty());
    EXPECT_TRUE(set("a", true, 0));
    EXPECT_TRUE(set("b", true, 1));
    EXPECT_TRUE(set("c", true, 0)) << "in another list than was thought";
    EXPECT_TRUE(database.reminder(QStringLiteral("B"))->isFlagged);
    EXPECT_THAT(*read(), UnorderedElementsAre("a", "b", "c"));
    EXPECT_TRUE(set("b", false, 1));
    database.putReminder(aReminder("C").in(lists.at(1)).completedAt(scheduler.now()));
    EXPECT_THAT(*read(), UnorderedElementsAre("a"));
}

TEST_F(EventStoreScriptHostTest, OnlyTheReminderThatIsMeantIsFlagged) {
    for (const char* id : {"21", "ax", "folder/X"})
        put(id, 0);
    put("1", 1);
    database.putReminder(aReminder("done").in(lists.at(1)).completedAt(scheduler.now()));
    EXPECT_TRUE(set("x", true, 0)) << "not “ax”, which ends alike";
    EXPECT_TRUE(set("done", true, 0)) << "completed, and in another list";
    EXPECT_TRUE(set("nobody", true, 0));
    EXPECT_THAT(*read(), UnorderedElementsAre("x"));
    EXPECT_TRUE(database.reminder(QStringLiteral("done"))->isFlagged);
    database.setFailure(InMemoryEventStore::Operation::save, EKError{});
    EXPECT_FALSE(set("1", true, 1)) << "a refused change is no success";
    EXPECT_THAT(*read(), UnorderedElementsAre("x"));
}

TEST_F(EventStoreScriptHostTest, WithoutAccessReadingIsDenied) {
    database.setAuthorizationStatus(EKAuthorizationStatus::denied);
    EXPECT_EQ(read().error().message.english, QStringLiteral("Access to Reminders flags was denied."));
}

TEST_F(EventStoreScriptHostTest, AScriptEndsWhenItsTimeIsOverAndTheNextOneRuns) {
    gate.close(1);
    std::optional<Read> answer;
    automation->readFlaggedIdentifiers([&](Read result) { answer = std::move(result); });
    ASSERT_TRUE(scheduler.runUntil([&] { return scheduler.pendingCount() == 1; })) << "the time limit";
    scheduler.advance(8s - 1us);
    EXPECT_FALSE(answer.has_value());
    scheduler.advance(1us);
    ASSERT_TRUE(scheduler.runUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(answer->error().message.english, QStringLiteral("Failed to read flagged reminders."));
    gate.open();
    put("A", 0);
    EXPECT_TRUE(set("a", true, 0));
    EXPECT_THAT(*read(), UnorderedElementsAre("a"));
    scheduler.runPosted();
    EXPECT_EQ(scheduler.pendingCount(), 0U) << "time limits end with their scripts";
}

TEST_F(EventStoreScriptHostTest, TheEndOfTheProgramDoesNotWaitForAnAnswer) {
    gate.close(1);
    bool told = false;
    automation->readFlaggedIdentifiers([&](const Read&) { told = true; });
    automation->setFlag(QStringLiteral("a"), true, std::nullopt, [&](const Set&) { told = true; });
    ASSERT_TRUE(scheduler.runUntil([&] { return scheduler.pendingCount() == 1; }));
    automation.reset();
    queue.reset();
    scheduler.runPosted();
    EXPECT_FALSE(told);
}

}  // namespace
}  // namespace kestrant
