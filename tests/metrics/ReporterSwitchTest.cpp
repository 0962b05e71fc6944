#include "metrics/FaultyDisk.h"
#include "metrics/ReporterHarness.h"
#include "network/EventLoop.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <chrono>

namespace kestrant {

namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto enabledKey = "kestrantAggregateMetricsEnabled";
constexpr auto discardKey = "kestrantAggregateMetricsDiscardPending";
constexpr auto epochKey = "kestrantAggregateMetricsCollectionEpoch";

class ReporterSwitchTest : public ::testing::Test, protected ReporterHarness {};

}  // namespace

TEST_F(ReporterSwitchTest, TheSwitchKeepsOrChangesTheEpochAsItStood) {
    struct Case {
        std::optional<bool> before;
        bool set;
        bool isNewEpoch;
    };
    for (const Case& c : {Case{{}, true, false}, Case{{}, false, true}, Case{true, true, false},
                          Case{true, false, true}, Case{false, true, true}, Case{false, false, false}}) {
        const QString old = "0F0E0D0C-0B0A-4908-8706-050403020100";
        defaults.set(enabledKey, c.before ? QJsonValue(*c.before) : QJsonValue(QJsonValue::Undefined));
        defaults.set(epochKey, old);
        defaults.remove(discardKey);
        reporter->setEnabled(c.set);
        const QString epoch = defaults.string(epochKey).value_or("none");
        EXPECT_EQ(epoch != old, c.isNewEpoch);
        EXPECT_EQ(QUuid::fromString(epoch).toString(QUuid::WithoutBraces).toUpper(), epoch);
        EXPECT_EQ(defaults.boolean(enabledKey), c.set);
        EXPECT_EQ(defaults.boolean(discardKey), c.set ? std::optional<bool>() : true);
        settle();
        EXPECT_FALSE(defaults.boolean(discardKey));
    }
}

TEST_F(ReporterSwitchTest, SwitchingOffDuringAnUploadEndsItAndDeletesEverything) {
    service.mood = [] { return CountingService::Mood{Answer::silence()}; };
    count(10003);
    scheduler.advance(18h + 1s);
    ASSERT_TRUE(turnUntil([this] { return !service.server.requests().empty(); }));
    bool finished = false;
    reporter->runDueCheck([&] { finished = true; });
    scheduler.runPosted();
    EXPECT_FALSE(finished) << "the upload has not ended";

    reporter->setEnabled(false);
    EXPECT_FALSE(reporter->isUploading());
    scheduler.runPosted();
    EXPECT_TRUE(finished);
    EXPECT_THAT(reports(), IsEmpty());
    EXPECT_THAT(look("SELECT * FROM aggregate_state"), ElementsAre("1|0|NULL|NULL"));
    EXPECT_FALSE(reporter->latestDiagnostic());
    count(1);
    EXPECT_EQ(counted(), "0");
    EXPECT_EQ(scheduler.pendingCount(), 0U) << "nothing is left to do";
}

TEST_F(ReporterSwitchTest, AnAnswerThatArrivesAfterSwitchingOffCountsForNothing) {
    count(3);
    scheduler.advance(18h + 1s);
    service.mood = [this] {
        reporter->setEnabled(false);
        return CountingService::Mood{Answer::status(400)};
    };
    // The timeouts end with the exchange; the reporter has not yet been told to end it.
    ASSERT_TRUE(turnUntil([this] { return scheduler.pendingCount() == 0; }));
    EXPECT_FALSE(reporter->latestDiagnostic());
    EXPECT_THAT(reports(), ElementsAre("3|0|pending|NULL"));
    settle();
    EXPECT_THAT(look("SELECT * FROM aggregate_state; SELECT * FROM reports"), ElementsAre("1|0|NULL|NULL"));
}

TEST_F(ReporterSwitchTest, CountsFromBeforeSwitchingOffAndOnAreDropped) {
    count(7);
    reporter->recordCompletions(5);
    reporter->setEnabled(false);
    reporter->recordCompletions(3);
    reporter->setEnabled(true);
    reporter->recordCompletions(2);
    settle();
    EXPECT_EQ(counted(), "2");
    EXPECT_EQ(look("SELECT collection_epoch FROM aggregate_state").at(0),
              defaults.string(epochKey)->toStdString());
}

TEST_F(ReporterSwitchTest, WhatTheSwitchAskedForIsDoneAtTheNextStart) {
    count(7);
    stop();
    defaults.set(enabledKey, false);
    defaults.set(discardKey, true);
    start();
    EXPECT_THAT(look("SELECT * FROM aggregate_state"), ElementsAre("1|0|NULL|NULL"));
    EXPECT_FALSE(defaults.boolean(discardKey));
}

TEST_F(ReporterSwitchTest, LostPreferencesDoNotLoseCounts) {
    count(7);
    const QString epoch = *defaults.string(epochKey);
    for (const QJsonValue& lost :
         {QJsonValue(QJsonValue::Undefined), QJsonValue("no epoch"), QJsonValue(4)}) {
        stop();
        defaults.set(epochKey, lost);
        start();
        count(1);
        EXPECT_EQ(defaults.string(epochKey), epoch);
    }
    EXPECT_EQ(counted(), "10");
}

TEST_F(ReporterSwitchTest, AStoreOfAnotherEpochBeginsAnew) {
    count(7);
    stop();
    defaults.set(epochKey, "0F0E0D0C-0B0A-4908-8706-050403020100");
    start();
    count(1);
    EXPECT_THAT(look("SELECT pending_count, collection_epoch FROM aggregate_state"),
                ElementsAre("1|0F0E0D0C-0B0A-4908-8706-050403020100"));
}

TEST_F(ReporterSwitchTest, CountsInMemoryAreDroppedWhenSwitchedOff) {
    bool isFull = true;
    stop();
    const FaultyDisk disk([&] { return isFull ? SQLITE_FULL : SQLITE_OK; });
    start();
    count(2);
    setEnabled(false);
    setEnabled(true);
    count(4);
    isFull = false;
    pass(6min);
    EXPECT_EQ(counted(), "4");
}

}  // namespace kestrant
