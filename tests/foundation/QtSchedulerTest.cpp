#include "foundation/QtScheduler.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class QtSchedulerTest : public testing::Test {
  protected:
    void runUntilQuit() { loop.exec(); }
    std::function<void()> note(const char* what) {
        return [this, what] { events.emplace_back(what); };
    }

    int argumentCount = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QEventLoop loop;
    std::optional<QtScheduler> scheduler{std::in_place};
    std::vector<std::string> events;
};

TEST_F(QtSchedulerTest, RunsDelayedWorkLaterInTheOrderOfItsDelays) {
    const ScheduledTask last = scheduler->after(30ms, [this] { loop.quit(); });
    const ScheduledTask second = scheduler->after(10ms, note("second"));
    const ScheduledTask first = scheduler->after(0ms, note("first"));
    EXPECT_THAT(events, ElementsAre());
    EXPECT_TRUE(first.isPending());
    runUntilQuit();
    EXPECT_THAT(events, ElementsAre("first", "second"));
    EXPECT_FALSE(first.isPending());
}

TEST_F(QtSchedulerTest, DropsCancelledWorkAndItsCaptures) {
    const auto token = std::make_shared<int>(0);
    ScheduledTask cancelled = scheduler->after(1ms, [token, this] { events.emplace_back("cancelled"); });
    cancelled.cancel();
    EXPECT_EQ(token.use_count(), 1);
    { const ScheduledTask dropped = scheduler->after(1ms, note("dropped")); }
    const ScheduledTask last = scheduler->after(10ms, [this] { loop.quit(); });
    runUntilQuit();
    EXPECT_THAT(events, ElementsAre());
}

TEST_F(QtSchedulerTest, RepeatsUntilCancelledEvenFromWithinTheWork) {
    ScheduledTask ticking;
    ticking = scheduler->every(1ms, [&] {
        events.emplace_back("tick");
        if (events.size() == 3) {
            EXPECT_TRUE(ticking.isPending());
            ticking.cancel();
        }
    });
    const ScheduledTask last = scheduler->after(50ms, [this] { loop.quit(); });
    runUntilQuit();
    EXPECT_THAT(events, ElementsAre("tick", "tick", "tick"));
}

TEST(QtScheduler, RepeatsSixtyTimesASecondWithTimersOfWholeMilliseconds) {
    using std::chrono::steady_clock;
    const Duration interval = std::chrono::microseconds(1'000'000 / 60);
    steady_clock::time_point now{};
    steady_clock::time_point due = now;
    for (int tick = 0; tick < 60; ++tick)
        now += untilNext(due, interval, now);
    EXPECT_EQ(std::chrono::round<std::chrono::milliseconds>(now.time_since_epoch()), 1000ms);
    now += 1h;
    EXPECT_EQ(untilNext(due, interval, now), 17ms) << "what was slept through is not made up for";
}

TEST_F(QtSchedulerTest, KeepsDelaysLongerThanATimerCanHold) {
    const ScheduledTask inAYear = scheduler->after(24h * 365, note("a year"));
    const ScheduledTask last = scheduler->after(5ms, [this] { loop.quit(); });
    runUntilQuit();
    EXPECT_THAT(events, ElementsAre());
    EXPECT_TRUE(inAYear.isPending());
}

TEST_F(QtSchedulerTest, RunsPostedWorkOnItsOwnThreadInOrder) {
    const auto own = std::this_thread::get_id();
    std::vector<int> order;
    std::thread poster([&] {
        for (int i = 0; i < 100; ++i)
            scheduler->post([&order, i, own] {
                EXPECT_EQ(std::this_thread::get_id(), own);
                order.push_back(i);
            });
        scheduler->post([this] { loop.quit(); });
    });
    poster.join();
    EXPECT_THAT(order, testing::IsEmpty());
    runUntilQuit();
    EXPECT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(QtSchedulerTest, TakesItsWorkAlongWhenItGoes) {
    const ScheduledTask task = scheduler->after(0ms, note("task"));
    scheduler->post(note("posted"));
    scheduler.reset();
    QtScheduler other;
    other.post([this] { loop.quit(); });
    runUntilQuit();
    EXPECT_THAT(events, ElementsAre());
}

}  // namespace
}  // namespace kestrant
