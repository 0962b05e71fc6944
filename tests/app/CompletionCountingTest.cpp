#include "app/CompletionCounting.h"

#include "foundation/AtomicFile.h"
#include "metrics/MetricsStore.h"
#include "network/EventLoop.h"
#include "network/HttpTestServer.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kestrant {
namespace {

/// A program with a server for its counts, and a folder for its files.
struct Counting {
    Counting() { ensureApplication(); }

    void record(int count) const {
        CompletionCounting counting(information, preferences, folder.path());
        counting.record(count);
    }
    [[nodiscard]] metrics::MetricsStore store() const {
        return metrics::MetricsStore(folder.filePath(AggregateCompletionReporter::folderName));
    }
    [[nodiscard]] qint64 counted() const { return store().state()->pendingCount; }

    HttpTestServer server{[](const auto&) { return Answer::status(200); }};
    InformationDictionary information{
        QJsonObject{{InformationDictionary::aggregateMetricsBaseUrlKey, server.url()},
                    {InformationDictionary::aggregateMetricsPrivacyReadyKey, true},
                    {InformationDictionary::aggregateMetricsUploadEnabledKey, true}}};
    QTemporaryDir folder;
    QString preferences = folder.filePath(QStringLiteral("preferences.json"));
};

TEST(CompletionCounting, CountsInTheCommonStoreAndSendsNothingEvenWhenSomethingIsDue) {
    const Counting program;
    program.record(2);
    EXPECT_EQ(program.counted(), 2);
    ASSERT_TRUE(program.store().cut({.reportID = "B", .count = 1, .createdDay = "2026-01-01"}, 1e9, 1));
    program.record(3);
    EXPECT_EQ(program.counted(), 4);
    QCoreApplication::processEvents();
    EXPECT_TRUE(program.server.requests().empty());
    EXPECT_FALSE(program.server.hasPendingConnections());
}

TEST(CompletionCounting, HeedsThePersonsSwitch) {
    const Counting program;
    ASSERT_TRUE(writeFileAtomically(program.preferences, R"({"kestrantAggregateMetricsEnabled": false})"));
    program.record(1);
    EXPECT_FALSE(program.store().mayExist());
}

}  // namespace
}  // namespace kestrant
