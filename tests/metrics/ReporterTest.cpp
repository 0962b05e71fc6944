#include "metrics/FaultyDisk.h"
#include "metrics/ReportSchedule.h"
#include "metrics/ReporterHarness.h"
#include "network/EventLoop.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <array>
#include <chrono>

namespace kestrant {

namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto discardKey = "kestrantAggregateMetricsDiscardPending";
constexpr auto unsavedKey = "kestrantAggregateMetricsUnsaved";
constexpr auto epochKey = "kestrantAggregateMetricsCollectionEpoch";

class ReporterTest : public ::testing::Test, protected ReporterHarness {
  protected:
    void answerWith(const Answer& answer) {
        service.mood = [answer] { return CountingService::Mood{answer}; };
    }
    [[nodiscard]] std::string nextAttempt() const {
        return look("SELECT next_attempt_at FROM reports").at(0);
    }
    [[nodiscard]] std::string inSeconds(double delay) const {
        return std::to_string(std::llround(now() + delay));
    }
};

}  // namespace

TEST_F(ReporterTest, TwoCompletionsAreOneReportADayLaterWithExactlyFourFields) {
    count(1);
    count(1);
    EXPECT_EQ(look("SELECT next_report_at FROM aggregate_state").at(0), inSeconds(43200 * 1.5));
    pass(18h - 10s);
    EXPECT_THAT(service.server.requests(), IsEmpty());
    passADay();

    ASSERT_EQ(service.server.requests().size(), 1U);
    const RecordedRequest& request = service.server.requests().front();
    EXPECT_EQ(request.requestLine(), "POST /v1/completions HTTP/1.1");
    EXPECT_EQ(request.headers().at("user-agent"), "Kestrant-AggregateMetrics/1");
    EXPECT_EQ(request.headers().at("content-type"), "application/json");
    EXPECT_EQ(request.headers().at("accept"), "application/json");
    EXPECT_FALSE(request.headers().contains("cookie") || request.headers().contains("authorization"));
    const QString id = service.stored.begin()->first;
    EXPECT_EQ(QUuid::fromString(id).toString(QUuid::WithoutBraces).toUpper(), id);
    EXPECT_EQ(
        QJsonDocument::fromJson(request.body()).object(),
        QJsonObject(
            {{"schemaVersion", 1}, {"reportId", id}, {"count", 2}, {"reportCreatedDay", "2026-03-28"}}));
    EXPECT_THAT(reports(), IsEmpty());
    EXPECT_EQ(counted(), "0");
    EXPECT_FALSE(reporter->latestDiagnostic());
}

TEST_F(ReporterTest, AReportHoldsTenThousandAndTheRestWaitsForTheNextTime) {
    count(25000);
    for (const auto& [sent, left] :
         {std::pair(10000, "15000"), std::pair(20000, "5000"), std::pair(25000, "0")}) {
        passADay();
        EXPECT_EQ(service.total(), sent);
        EXPECT_EQ(counted(), left);
    }
    EXPECT_EQ(service.server.requests().size(), 3U);
}

TEST_F(ReporterTest, NothingIsCountedUnlessTheProgramWasBuiltForItAndTheCountIsPositive) {
    const InformationDictionary complete = information;
    using Dictionary = InformationDictionary;
    for (const QJsonObject& change :
         {QJsonObject{{Dictionary::aggregateMetricsPrivacyReadyKey, false}},
          QJsonObject{{Dictionary::aggregateMetricsPrivacyReadyKey, "true"}},
          QJsonObject{{Dictionary::aggregateMetricsUploadEnabledKey, 1}},
          QJsonObject{{Dictionary::aggregateMetricsBaseUrlKey, QJsonValue()}},
          QJsonObject{{Dictionary::aggregateMetricsBaseUrlKey, "http://a.example"}}}) {
        stop();
        QDir(folder).removeRecursively();
        information = complete.overlaidBy(change);
        start();
        EXPECT_FALSE(reporter->configuration().isAvailable);
        count(1);
        setEnabled(false);
        setEnabled(true);
        EXPECT_FALSE(QFileInfo::exists(folder));
        EXPECT_EQ(defaults.object(discardKey), QJsonValue(QJsonValue::Undefined))
            << "nothing there to discard";
    }
    stop();
    information = complete;
    start();
    for (const qint64 none : {qint64(0), qint64(-1), std::numeric_limits<qint64>::min()})
        count(none);
    EXPECT_EQ(counted(), "0");
}

TEST_F(ReporterTest, EveryStatusHasItsConsequence) {
    using D = LocalDiagnostic;
    struct Case {
        int status;
        std::vector<std::string> after;
        std::optional<D> diagnostic;
    };
    const std::vector<std::string> retried{"3|1|pending|NULL"};
    const std::vector<Case> cases{{200, retried, D::invalidAcknowledgement},
                                  {299, retried, D::invalidAcknowledgement},
                                  {302, retried, {}},
                                  {307, retried, {}},
                                  {399, retried, {}},
                                  {400, {"3|0|rejected|400"}, D::reportRejected},
                                  {401, {"3|0|rejected|401"}, D::reportRejected},
                                  {407, {"3|0|rejected|407"}, D::reportRejected},
                                  {408, retried, {}},
                                  {410, {"3|0|rejected|410"}, D::reportRejected},
                                  {429, retried, {}},
                                  {499, {"3|0|rejected|499"}, D::reportRejected},
                                  {500, retried, {}},
                                  {503, retried, {}},
                                  {700, retried, {}}};
    for (const Case& c : cases) {
        ReporterHarness own;
        own.service.mood = [&] {
            return CountingService::Mood{
                Answer::status(c.status, "{\"status\":\"stored\"}", "Location: /other\r\n")};
        };
        own.count(3);
        own.pass(18h + 10s);
        EXPECT_EQ(own.reports(), c.after) << c.status;
        EXPECT_EQ(own.reporter->latestDiagnostic(), c.diagnostic) << c.status;
        EXPECT_EQ(own.service.server.requests().size(), 1U) << c.status;
        own.count(4);
        own.service.mood = nullptr;
        own.passADay();
        EXPECT_EQ(own.service.total(), c.diagnostic == D::reportRejected ? 4 : 7) << c.status;
    }
}

TEST_F(ReporterTest, AWrongAcknowledgementIsNotBelievedAndAConfirmedRepeatIs) {
    count(3);
    service.mood = [this] {
        service.mood = nullptr;
        return CountingService::Mood{Answer::status(200, R"({"reportId":"?","count":3,"status":"stored"})"),
                                     CountingService::Mood::Storing::before};
    };
    pass(18h + 10s);
    EXPECT_EQ(reporter->latestDiagnostic(), LocalDiagnostic::invalidAcknowledgement);
    EXPECT_THAT(reports(), ElementsAre("3|1|pending|NULL"));
    pass(11min);
    EXPECT_THAT(reports(), IsEmpty());
    ASSERT_EQ(service.server.requests().size(), 2U);
    EXPECT_EQ(service.server.requests()[0].body(), service.server.requests()[1].body());
    EXPECT_EQ(service.total(), 3);
}

TEST_F(ReporterTest, FailuresAreSpacedAndTheServerMayAskForMoreTime) {
    answerWith(Answer::status(503));
    count(1);
    pass(18h + 10s);
    for (const auto& [attempts, delay] : {std::pair("1", 600), std::pair("2", 1200), std::pair("3", 2400)}) {
        EXPECT_EQ(look("SELECT attempts FROM reports").at(0), attempts);
        EXPECT_NEAR(std::stod(nextAttempt()), now() + delay, 12);
        if (attempts == std::string("3"))
            answerWith(Answer::status(503, {}, "Retry-After: 7200\r\n"));
        pass(seconds(std::stod(nextAttempt()) - now() + 5));
    }
    EXPECT_NEAR(std::stod(nextAttempt()), now() + 7200, 12);
    EXPECT_EQ(service.server.requests().size(), 4U);
    check();
    EXPECT_EQ(service.server.requests().size(), 4U) << "not before its time";
}

TEST_F(ReporterTest, AServerThatCannotBeReachedOrTrustedIsTriedAgain) {
    for (const Answer& answer : {Answer::cutOff(), Answer{"HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\n{}"},
                                 Answer{"HTTP/1.1 200 OK\r\nContent-Length: 99999999\r\n\r\n", 99999999}}) {
        ReporterHarness own;
        own.service.mood = [&] { return CountingService::Mood{answer}; };
        own.count(3);
        own.pass(18h + 10s);
        EXPECT_THAT(own.reports(), ElementsAre("3|1|pending|NULL"));
    }
    service.mood = [] { return CountingService::Mood{Answer::silence()}; };
    count(3);
    scheduler.advance(18h + 1s);
    ASSERT_TRUE(turnUntil([this] { return !service.server.requests().empty(); }));
    scheduler.advance(20s);
    EXPECT_FALSE(reporter->isUploading());
    EXPECT_THAT(reports(), ElementsAre("3|1|pending|NULL"));
}

TEST_F(ReporterTest, ReportsAreForgottenAfterNinetyDays) {
    for (const int status : {400, 503}) {
        ReporterHarness own;
        own.service.mood = [&] { return CountingService::Mood{Answer::status(status)}; };
        own.count(1);
        own.pass(18h + 10s);
        // Cut at 07:30 on March 28: the 90th day after is June 26.
        own.scheduler.jumpWall(std::chrono::days(90) + 16h);
        own.check();
        EXPECT_EQ(own.reports().size(), 1U) << status;
        own.scheduler.jumpWall(31min);
        own.check();
        EXPECT_THAT(own.reports(), IsEmpty()) << status;
        EXPECT_EQ(own.reporter->latestDiagnostic(),
                  status == 400 ? LocalDiagnostic::reportRejected : LocalDiagnostic::expiredPendingReport);
    }
}

TEST_F(ReporterTest, CountsWaitInMemoryWhileTheStoreIsUnavailable) {
    stop();
    QFile::remove(path);
    bool isFull = true;
    int attempts = 0;
    const FaultyDisk disk([&] {
        ++attempts;
        return isFull ? SQLITE_FULL : SQLITE_OK;
    });
    defaults.remove(epochKey);
    start();
    EXPECT_EQ(reporter->latestDiagnostic(), LocalDiagnostic::storageUnavailable);
    EXPECT_EQ(scheduler.pendingCount(), 1U);
    const int before = attempts;
    count(2);
    count(3);
    check();
    pass(329s);
    EXPECT_EQ(attempts, before) << "not opened before 330 seconds have passed";
    pass(10s);
    EXPECT_GT(attempts, before);
    isFull = false;
    pass(6min);
    EXPECT_EQ(counted(), "5");
    count(1);
    passADay();
    EXPECT_EQ(service.total(), 6);
}

TEST_F(ReporterTest, ADamagedStoreIsTriedAgainAndAgainButNeverTouched) {
    stop();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("no database");
    file.close();
    start();
    count(2);
    setEnabled(false);
    pass(1h);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "no database");
    EXPECT_EQ(defaults.boolean(discardKey), true) << "still to be done";
    EXPECT_EQ(scheduler.pendingCount(), 1U);
}

TEST_F(ReporterTest, AClockThatIsSetBackDoesNotKeepTheStoreClosed) {
    stop();
    bool isFull = true;
    const FaultyDisk disk([&] { return isFull ? SQLITE_FULL : SQLITE_OK; });
    start();
    count(2);
    isFull = false;
    scheduler.jumpWall(-std::chrono::days(365));
    check();
    EXPECT_EQ(counted(), "2");
}

TEST_F(ReporterTest, AfterAnIdleDayCompletionsWaitForTheirBatchAgain) {
    count(1);
    passADay();
    EXPECT_EQ(look("SELECT pending_count, next_report_at FROM aggregate_state").at(0), "0|NULL");
    pass(48h);
    count(1);
    EXPECT_EQ(look("SELECT next_report_at FROM aggregate_state").at(0), inSeconds(43200 * 1.5));
    count(1);
    EXPECT_EQ(service.server.requests().size(), 1U);
    passADay();
    EXPECT_EQ(service.stored.size(), 2U);
    EXPECT_EQ(service.total(), 3);
    // As an earlier version left it.
    stop();
    look("UPDATE aggregate_state SET next_report_at = 1774000000");
    start();
    count(1);
    EXPECT_EQ(look("SELECT next_report_at FROM aggregate_state").at(0), inSeconds(43200 * 1.5));
}

TEST_F(ReporterTest, AClockThatIsSetBackYearsDelaysNothingByMoreThanADay) {
    count(1);
    scheduler.jumpWall(-std::chrono::days(3650));
    stop();
    start();
    EXPECT_EQ(look("SELECT next_report_at FROM aggregate_state").at(0), inSeconds(43200 * 1.5));
    answerWith(Answer::status(503));
    pass(18h + 10s);
    EXPECT_EQ(service.server.requests().size(), 1U);
    service.mood = nullptr;
    scheduler.jumpWall(-std::chrono::days(3650));
    passADay();
    EXPECT_EQ(service.total(), 1);
}

TEST_F(ReporterTest, WhatAVersionOneDatabaseHoldsIsReported) {
    for (const bool hasEpoch : {false, true}) {
        ReporterHarness own;
        own.stop();
        Sqlite(own.path)(
            "UPDATE aggregate_state SET pending_count = 41, collection_epoch = NULL, next_report_at = "
            "1774000000; ALTER TABLE aggregate_state DROP COLUMN collection_epoch; "
            "INSERT INTO reports (report_id, count, created_day, created_day_epoch, next_attempt_at) "
            "VALUES ('OLD', 9, '2026-03-26', 1774483200, 0); PRAGMA user_version = 1");
        if (!hasEpoch)
            own.defaults.remove(epochKey);
        own.start();
        own.passADay();
        own.passADay();
        // With an epoch the person has switched counting off since.
        EXPECT_EQ(own.service.total(), hasEpoch ? 0 : 50);
    }
}

TEST_F(ReporterTest, WhatWasRecordedBeforeTheEndIsStored) {
    reporter->recordCompletions(3);
    stop();
    EXPECT_EQ(counted(), "3");
    EXPECT_EQ(scheduler.pendingCount(), 0U);
}

TEST_F(ReporterTest, WhatCouldNotBeStoredBeforeTheEndIsStoredThenOrAtTheNextStart) {
    enum class Store { neverUsable, usableAtTheEnd, usableAtTheNextStart };
    for (const bool isFirstEver : {false, true}) {
        for (const Store when : {Store::usableAtTheEnd, Store::usableAtTheNextStart, Store::neverUsable}) {
            ReporterHarness own;
            own.count(1);
            own.stop();
            if (isFirstEver) {
                QFile::remove(own.path);
                own.defaults.remove(epochKey);
            }
            bool isFull = true;
            const FaultyDisk disk([&] { return isFull ? SQLITE_FULL : SQLITE_OK; });
            own.start();
            own.count(2);
            own.count(3);
            isFull = when != Store::usableAtTheEnd;
            own.stop();
            if (when == Store::neverUsable) {
                own.start();
                own.count(10);
                own.stop();
            }
            isFull = false;
            own.start();
            const int whole = (isFirstEver ? 5 : 6) + (when == Store::neverUsable ? 10 : 0);
            EXPECT_EQ(own.counted(), std::to_string(whole)) << isFirstEver << int(when);
            own.stop();
            own.start();
            EXPECT_EQ(own.counted(), std::to_string(whole)) << "once only";
        }
    }
}

TEST_F(ReporterTest, WhatWasLeftIsDroppedWhenCountingIsSwitchedOff) {
    bool isFull = true;
    stop();
    const FaultyDisk disk([&] { return isFull ? SQLITE_FULL : SQLITE_OK; });
    start();
    count(5);
    stop();
    EXPECT_NE(defaults.object(unsavedKey), QJsonValue(QJsonValue::Undefined));
    start();
    setEnabled(false);
    EXPECT_EQ(defaults.object(unsavedKey), QJsonValue(QJsonValue::Undefined));
    setEnabled(true);
    isFull = false;
    pass(6min);
    EXPECT_EQ(counted(), "0");
}

}  // namespace kestrant
