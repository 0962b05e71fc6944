#include "metrics/MetricsDatabase.h"
#include "metrics/ReporterHarness.h"
#include "network/EventLoop.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kestrant {

TEST(ReporterKill, BeingKilledAtAnyStepLosesNothingAndSendsNothingTwice) {
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

}  // namespace kestrant
