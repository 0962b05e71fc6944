#include "foundation/Clocks.h"
#include "foundation/JsonFileUserDefaults.h"
#include "foundation/QtScheduler.h"
#include "metrics/EventLoopThread.h"
#include "metrics/FaultyDisk.h"
#include "metrics/ReporterHarness.h"
#include "network/EventLoop.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

namespace kestrant {

namespace {

using namespace std::chrono_literals;

}  // namespace

TEST(ReporterEndurance, AMonthOfFailuresLosesNothingAndSendsNothingTwice) {
    std::mt19937 dice(20260327);
    const auto roll = [&dice](unsigned sides) { return dice() % sides; };
    bool isFull = false;
    unsigned skipped = 0;
    const FaultyDisk disk([&] { return isFull && skipped++ % 3 == 0 ? SQLITE_FULL : SQLITE_OK; });
    ReporterHarness harness;
    harness.random = 0.1;
    harness.service.mood = [&]() -> std::optional<CountingService::Mood> {
        const Answer answers[] = {Answer::status(500),
                                  Answer::status(429, {}, "Retry-After: 1e99\r\n"),
                                  Answer::status(503, {}, "Retry-After: -1\r\n"),
                                  Answer::status(308, {}, "Location: http://127.0.0.1:1/\r\n"),
                                  Answer::status(200, "{\"status\":\"stored\"}"),
                                  Answer::cutOff(),
                                  {"HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n{\"rep"}};
        const unsigned choice = roll(14);
        if (choice >= std::size(answers))
            return std::nullopt;
        return CountingService::Mood{answers[choice], roll(2) == 0 ? CountingService::Mood::Storing::before
                                                                   : CountingService::Mood::Storing::never};
    };

    qint64 counted = 0;
    for (int hour = 0; hour < 30 * 24; ++hour) {
        isFull = hour % 24 == 3 || hour % 24 == 20;
        for (unsigned more = roll(4); more > 0; --more) {
            const qint64 completions = roll(40) == 0 ? 9000 : 1 + roll(3);
            counted += completions;
            harness.count(completions);
        }
        harness.pass(1h);
        if (hour % 24 == 13) {
            harness.stop();
            harness.scheduler.jumpWall(seconds(roll(36000)));
            harness.start();
        }
        if (hour % 24 == 17)
            harness.scheduler.jumpWall(-5min);
        if (hour % 24 == 6) {
            ASSERT_EQ(accountedFor(harness.path, harness.service), counted) << "hour " << hour;
        }
    }
    EXPECT_GT(harness.service.server.requests().size(), harness.service.stored.size() * 3 / 2)
        << "too few failures";
    EXPECT_GT(harness.service.stored.size(), 20U);

    harness.service.mood = nullptr;
    isFull = false;
    for (int day = 0; day < 100 && harness.service.total() < counted; ++day)
        harness.passADay();
    EXPECT_EQ(harness.service.total(), counted);
    EXPECT_TRUE(harness.reports().empty());
}

TEST(ReporterEndurance, OnItsOwnThreadItCountsWhatEveryThreadRecords) {
    ensureApplication();
    const QTemporaryDir root(scratchTemplate());
    QtScheduler scheduler;
    SystemClock clock;
    JsonFileUserDefaults defaults(root.filePath("preferences.json"), scheduler);
    CountingService service;
    const QString folder = root.filePath("AggregateMetrics");
    {
        EventLoopThread thread;
        AggregateCompletionReporter reporter({.context = thread,
                                              .clock = clock,
                                              .defaults = defaults,
                                              .information = service.information(),
                                              .folder = folder});
        std::vector<std::thread> recorders;
        for (int index = 0; index < 4; ++index) {
            recorders.emplace_back([&reporter] {
                for (int round = 0; round < 50; ++round) {
                    reporter.recordCompletions(1);
                    reporter.runDueCheck();
                }
            });
        }
        for (std::thread& recorder : recorders)
            recorder.join();
        const auto checkAndWait = [&] {
            std::atomic<bool> finished = false;
            reporter.runDueCheck([&] {
                finished = true;
                wakeLoop();
            });
            return turnUntil([&] { return finished.load(); });
        };
        ASSERT_TRUE(checkAndWait());
        Sqlite look(metrics::MetricsDatabase::pathIn(folder));
        EXPECT_EQ(look("SELECT pending_count FROM aggregate_state").at(0), "200");
        look("UPDATE aggregate_state SET next_report_at = 0");
        ASSERT_TRUE(checkAndWait());
        EXPECT_EQ(service.total(), 200);

        for (int round = 0; round < 50; ++round) {
            reporter.recordCompletions(1);
            reporter.setEnabled(round % 2 == 1);
        }
        reporter.recordCompletions(7);
    }
    EXPECT_EQ(
        Sqlite(metrics::MetricsDatabase::pathIn(folder))("SELECT pending_count FROM aggregate_state").at(0),
        "7");
}

}  // namespace kestrant
