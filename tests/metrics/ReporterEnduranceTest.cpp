#include "foundation/Clocks.h"
#include "foundation/JsonFileUserDefaults.h"
#include "foundation/QtScheduler.h"
#include "metrics/EventLoopThread.h"
#include "metrics/FaultyDisk.h"
#include "metrics/ReporterHarness.h"
#include "network/EventLoop.h"

#include <QProcess>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

namespace kestrant {

namespace {

using namespace std::chrono_literals;

/// Everything that was counted is somewhere, and nothing of it twice: stored by the service, or in a report
/// that it has not stored, or still waiting to be put in one.
qint64 accountedFor(const QString& path, const CountingService& service) {
    Sqlite look(path);
    qint64 sum = service.total() + std::stoll(look("SELECT pending_count FROM aggregate_state").at(0));
    for (const std::string& row : look("SELECT count, report_id FROM reports")) {
        if (!service.stored.contains(QString::fromStdString(row.substr(row.find('|') + 1))))
            sum += std::stoll(row);
    }
    return sum;
}

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
    while (harness.service.total() < counted)
        harness.passADay();
    EXPECT_EQ(harness.service.total(), counted);
    EXPECT_TRUE(harness.reports().empty());
}

TEST(ReporterEndurance, BeingKilledAtAnyStepLosesNothingAndSendsNothingTwice) {
    ensureApplication();
    struct Run {
        Run(QString itsFolder, const CountingService& itsService)
            : folder(std::move(itsFolder))
            , service(itsService) {}
        const QString folder;
        const CountingService& service;
        QProcess process;
        /// With `killAt` the process kills itself before that change to the disk.
        void start(int killAt) {
            process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
            process.start(QStringLiteral(KESTRANT_METRICS_PROCESS),
                          {folder, service.server.url(), QString::number(killAt)});
        }
        bool wait() {
            return turnUntil([this] { return process.state() == QProcess::NotRunning; });
        }
    };
    const auto prepare = [](const QString& folder) {
        ASSERT_TRUE(metrics::MetricsDatabase::open(folder));
        Sqlite(metrics::MetricsDatabase::pathIn(folder))("UPDATE aggregate_state SET pending_count = 10007, "
                                                         "next_report_at = 0, collection_epoch = "
                                                         "'0F0E0D0C-0B0A-4908-8706-050403020100'");
    };

    int kills = 0;
    for (int killAt = 1;; ++killAt) {
        const QTemporaryDir root(scratchTemplate());
        prepare(root.path());
        CountingService service;
        Run run(root.path(), service);
        run.start(killAt);
        ASSERT_TRUE(run.wait());
        if (run.process.exitStatus() == QProcess::NormalExit) {
            EXPECT_EQ(run.process.exitCode(), 0);
            EXPECT_EQ(service.total(), 10000);
            break;
        }
        ++kills;
        EXPECT_EQ(accountedFor(metrics::MetricsDatabase::pathIn(root.path()), service), 10007) << killAt;
        run.start(0);
        ASSERT_TRUE(run.wait());
        EXPECT_EQ(service.total(), 10000) << killAt;
        EXPECT_EQ(accountedFor(metrics::MetricsDatabase::pathIn(root.path()), service), 10007) << killAt;
        EXPECT_EQ(Sqlite(metrics::MetricsDatabase::pathIn(root.path()))("SELECT COUNT(*) FROM reports").at(0),
                  "0");
    }
    EXPECT_GT(kills, 20);

    const QTemporaryDir root(scratchTemplate());
    prepare(root.path());
    CountingService service;
    Run run(root.path(), service);
    service.mood = [&] {
        run.process.kill();
        return CountingService::Mood{Answer::silence(), CountingService::Mood::Storing::before};
    };
    run.start(0);
    ASSERT_TRUE(run.wait());
    service.mood = nullptr;
    run.start(0);
    ASSERT_TRUE(run.wait());
    EXPECT_EQ(service.server.requests().size(), 2U);
    EXPECT_EQ(accountedFor(metrics::MetricsDatabase::pathIn(root.path()), service), 10007);
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
        EventLoopThread thread("metrics");
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
                scheduler.post([] {});  // wakes the event loop below
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
