#include "metrics/MetricsStore.h"

#include "metrics/FaultyDisk.h"
#include "metrics/Sqlite.h"

#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>
#include <tuple>

namespace kestrant::metrics {

namespace {

using ::testing::ElementsAre;

const QUuid epoch = QUuid::fromString(QStringLiteral("0F0E0D0C-0B0A-4908-8706-050403020100"));
constexpr auto epochSql = "'0F0E0D0C-0B0A-4908-8706-050403020100'";

/// Version 1 as it was: the state row had no epoch.
constexpr auto versionOne =
    "CREATE TABLE aggregate_state (singleton INTEGER PRIMARY KEY CHECK (singleton = 1), pending_count "
    "INTEGER NOT NULL "
    "DEFAULT 0 CHECK (pending_count >= 0), next_report_at REAL);"
    "INSERT INTO aggregate_state VALUES (1, 41, 1774000000.0); PRAGMA user_version = 1";

unsigned modeOf(const QString& path) {
    struct stat status {};
    return ::stat(path.toUtf8().constData(), &status) == 0 ? status.st_mode & 0777U : 0;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "no such file";
}

void makeByHand(const QString& folder, const char* sql) {
    ::mkdir(folder.toUtf8().constData(), 0700);
    Sqlite(MetricsDatabase::pathIn(folder))(sql);
}

std::vector<std::string> everythingIn(const QString& folder) {
    Sqlite look(MetricsDatabase::pathIn(folder));
    auto rows = look("SELECT * FROM aggregate_state");
    if (!look("SELECT 1 FROM sqlite_master WHERE name = 'reports'").empty())
        for (const std::string& row : look("SELECT * FROM reports ORDER BY report_id"))
            rows.push_back(row);
    return rows;
}

/// Drops the rights of root, who may write everything, while it lives.
class AsNobody {
  public:
    AsNobody() : wasRoot_(::geteuid() == 0) { set(wasRoot_, 65534); }
    ~AsNobody() { set(wasRoot_, 0); }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

  private:
    static void set(bool wasRoot, uid_t user) {
        if (wasRoot && ::seteuid(user) != 0)
            std::abort();
    }
    bool wasRoot_;
};

Report report(qint64 count, const QString& id = QStringLiteral("R")) {
    return {.reportID = id, .count = count, .createdDay = "2026-03-27", .nextAttemptAt = 100};
}

class MetricsStoreTest : public ::testing::Test {
  protected:
    void open() { ASSERT_TRUE(store.open()); }
    std::vector<std::string> look(const char* sql) { return Sqlite(path)(sql); }

    QTemporaryDir root{scratchTemplate()};
    QString folder = root.filePath("AggregateMetrics");
    QString path = MetricsDatabase::pathIn(folder);
    MetricsStore store{folder};
};

}  // namespace

TEST_F(MetricsStoreTest, AFreshStoreIsPrivateAndEmpty) {
    MetricsStore deep(root.filePath("not/yet/there"));
    ASSERT_TRUE(deep.open());
    EXPECT_EQ(modeOf(root.filePath("not/yet/there")), 0700U);
    open();
    EXPECT_EQ(path, root.filePath("AggregateMetrics/aggregate-completions-v1.sqlite"));
    EXPECT_EQ(modeOf(folder), 0700U);
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_THAT(everythingIn(folder), ElementsAre("1|0|NULL|NULL"));
    EXPECT_THAT(look("PRAGMA user_version"), ElementsAre("2"));
    EXPECT_THAT(look("SELECT type, name FROM sqlite_master WHERE name NOT LIKE 'sqlite_%' ORDER BY name"),
                ElementsAre("table|aggregate_state", "index|one_pending_report", "table|reports"));
}

TEST_F(MetricsStoreTest, WhateverTheMaskNobodyElseMayReadWhatIsMadeAtAnyTime) {
    for (const mode_t mask : {mode_t(0), mode_t(022), mode_t(0777)}) {
        const QTemporaryDir own(scratchTemplate());
        const QString made = own.filePath("folder");
        const mode_t before = ::umask(mask);
        unsigned widest = 0;
        {
            const FaultyDisk disk([&] {
                for (const char* file : {"", "-journal"})
                    widest |= modeOf(MetricsDatabase::pathIn(made) + file);
                return SQLITE_OK;
            });
            EXPECT_TRUE(MetricsStore(made).open()) << mask;
        }
        ::umask(before);
        EXPECT_EQ(modeOf(made), 0700U) << mask;
        EXPECT_EQ(modeOf(MetricsDatabase::pathIn(made)), 0600U) << mask;
        EXPECT_EQ(widest, 0600U) << mask;
    }
    const QTemporaryDir shared(scratchTemplate());
    ASSERT_EQ(::chmod(shared.path().toUtf8().constData(), 0750), 0);
    EXPECT_TRUE(MetricsStore(shared.path()).open());
    EXPECT_EQ(modeOf(shared.path()), 0750U) << "not a folder made here";
}

TEST_F(MetricsStoreTest, WritesAreSynchronisedAndDeletedContentIsOverwritten) {
    auto database = MetricsDatabase::open(folder);
    ASSERT_TRUE(database);
    for (const auto& [pragma, value] :
         {std::pair("PRAGMA journal_mode", "delete"), std::pair("PRAGMA synchronous", "2"),
          std::pair("PRAGMA fullfsync", "1"), std::pair("PRAGMA secure_delete", "1"),
          std::pair("PRAGMA busy_timeout", "250")}) {
        auto row = database->prepare(pragma);
        ASSERT_TRUE(row && row->step().value_or(false));
        EXPECT_EQ(row->text(0), QString(value)) << pragma;
    }
}

TEST_F(MetricsStoreTest, AVersionOneDatabaseKeepsItsCounts) {
    makeByHand(folder, versionOne);
    open();
    EXPECT_THAT(everythingIn(folder), ElementsAre("1|41|1774000000|NULL"));
    EXPECT_THAT(look("PRAGMA user_version"), ElementsAre("2"));
    store.close();
    open();
    EXPECT_THAT(everythingIn(folder), ElementsAre("1|41|1774000000|NULL"));
}

TEST_F(MetricsStoreTest, ADatabaseThatCannotBeTrustedIsLeftAsItIs) {
    open();
    ASSERT_TRUE(store.adoptEpoch(epoch) && store.add(5, 7, epoch));
    store.close();
    const QByteArray sound = contentOf(path);
    QByteArray newer = sound;
    newer[63] = 3;  // the last byte of the user version in the header
    QByteArray torn = sound;
    torn.replace(4096 + 8, 4000, QByteArray(4000, '\xa5'));
    for (const QByteArray& content :
         {newer, torn, sound.left(sound.size() / 2), QByteArray("hello"), QByteArray(8192, '\0'),
          QByteArray("SQLite format 3\0 but no more", 28)}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
        file.close();
        EXPECT_FALSE(store.open()) << content.left(80).toStdString();
        EXPECT_FALSE(store.add(1, 1, epoch));
        EXPECT_EQ(contentOf(path), content);
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(sound);
    file.close();
    EXPECT_TRUE(store.open()) << "a sound file is taken again";
    EXPECT_THAT(look("SELECT pending_count FROM aggregate_state"), ElementsAre("5"));
}

TEST_F(MetricsStoreTest, WithoutAFolderNothingIsAvailable) {
    MetricsStore nowhere{std::nullopt};
    EXPECT_FALSE(nowhere.open());
    QFile file(root.filePath("file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_FALSE(MetricsStore(root.filePath("file")).open());
    EXPECT_FALSE(MetricsStore(root.filePath("file/below")).open());
}

TEST_F(MetricsStoreTest, ALockedDatabaseIsUnavailableUntilItIsReleased) {
    open();
    ASSERT_TRUE(store.adoptEpoch(epoch));
    Sqlite other(path);
    other("BEGIN IMMEDIATE");
    EXPECT_FALSE(store.add(1, 1, epoch));
    EXPECT_FALSE(MetricsStore(folder).open());
    other("COMMIT");
    EXPECT_TRUE(store.add(1, 1, epoch));
    EXPECT_THAT(look("SELECT pending_count FROM aggregate_state"), ElementsAre("1"));
}

TEST_F(MetricsStoreTest, AReadOnlyDatabaseIsUnavailable) {
    open();
    store.close();
    ASSERT_EQ(::chmod(root.path().toUtf8().constData(), 0755), 0);
    ASSERT_EQ(::chmod(folder.toUtf8().constData(), 0555), 0);
    ASSERT_EQ(::chmod(path.toUtf8().constData(), 0444), 0);
    {
        const AsNobody nobody;
        EXPECT_FALSE(store.open());
    }
    EXPECT_EQ(modeOf(path), 0444U);
    ASSERT_EQ(::chmod(folder.toUtf8().constData(), 0700), 0);
}

TEST_F(MetricsStoreTest, AFullDiskTakesAWholeChangeBackWhereverItStrikes) {
    using Step = std::function<StoreResult<>(MetricsStore&)>;
    const Step none = [](MetricsStore&) { return StoreResult<>(); };
    const Step open = [](MetricsStore& s) { return s.open(); };
    const Step count = [](MetricsStore& s) {
        return s.adoptEpoch(epoch).and_then([&] { return s.add(9, 50, epoch); });
    };
    const Step cut = [&](MetricsStore& s) {
        return count(s).and_then([&] { return s.cut(report(8), 0, 60); });
    };
    struct Change {
        const char* name;
        Step prepare;
        Step change;
    };
    for (const Change& c :
         {Change{"open", none, open}, Change{"add", count, [](auto& s) { return s.add(3, 50, epoch); }},
          Change{"cut", count, [](auto& s) { return s.cut(report(8), 0, 99); }},
          Change{"acknowledge", cut, [](auto& s) { return s.acknowledge("R", 99); }},
          Change{"reject", cut, [](auto& s) { return s.reject("R", 400, 99); }},
          Change{"adopt", cut, [](auto& s) { return s.adoptEpoch(QUuid::createUuid()); }},
          Change{"discard", cut, [](auto& s) { return s.discardAll(); }}}) {
        bool isHealthy = false;
        for (int room = 0; !isHealthy; ++room) {
            const QTemporaryDir own(scratchTemplate());
            makeByHand(own.path(), versionOne);
            int changes = 0;
            bool isWatching = false;
            bool isFull = false;
            const FaultyDisk disk([&] {
                isFull = isFull || (isWatching && ++changes > room);
                return isFull ? SQLITE_FULL : SQLITE_OK;
            });
            MetricsStore tested(own.path());
            ASSERT_TRUE(c.prepare(tested));
            const auto before = everythingIn(own.path());
            isWatching = true;
            const bool done = c.change(tested).has_value();
            isHealthy = !isFull;
            EXPECT_EQ(done, isHealthy) << c.name << " with room for " << room;
            if (isHealthy) {
                EXPECT_GT(room, 1) << c.name << " changes nothing";
                continue;
            }
            tested.close();
            isWatching = isFull = false;
            EXPECT_EQ(everythingIn(own.path()), before) << c.name << " with room for " << room;
            EXPECT_TRUE(tested.open() && c.change(tested)) << c.name << " with room for " << room;
        }
    }
}

TEST_F(MetricsStoreTest, OnlyTheRightEpochIsCountedAndOnlyTheFirstCountSetsTheReportTime) {
    open();
    EXPECT_FALSE(store.add(1, 10, epoch)) << "no epoch yet";
    ASSERT_TRUE(store.adoptEpoch(epoch));
    EXPECT_FALSE(store.add(1, 10, QUuid::createUuid()));
    EXPECT_TRUE(store.add(2, 10, epoch));
    EXPECT_TRUE(store.add(3, 20, epoch));
    const auto state = store.state();
    ASSERT_TRUE(state);
    EXPECT_EQ(std::tuple(state->pendingCount, state->nextReportAt, state->collectionEpoch),
              std::tuple(5, std::optional(10.0), epoch));
    const qint64 most = std::numeric_limits<qint64>::max();
    EXPECT_FALSE(store.add(most - 4, 10, epoch)) << "beyond what can be held";
    EXPECT_TRUE(store.add(most - 5, 10, epoch));
}

TEST_F(MetricsStoreTest, AReportIsCutOnceAndWithinBounds) {
    open();
    ASSERT_TRUE(store.adoptEpoch(epoch) && store.add(20000, 10, epoch));
    EXPECT_FALSE(store.cut(report(0), 0, 99));
    EXPECT_FALSE(store.cut(report(10001), 0, 99));
    EXPECT_THAT(look("SELECT pending_count, next_report_at FROM aggregate_state"), ElementsAre("20000|10"));
    EXPECT_TRUE(store.cut(report(10000, "A"), 1774569600, 99));
    EXPECT_FALSE(store.cut(report(1, "B"), 1774569600, 99)) << "one is pending";
    EXPECT_THAT(look("SELECT pending_count, next_report_at FROM aggregate_state; SELECT * FROM reports"),
                ElementsAre("10000|99", "A|10000|2026-03-27|1774569600|100|0|pending|NULL"));
    EXPECT_EQ(store.pendingReport().value(), report(10000, "A"));
    ASSERT_TRUE(store.acknowledge("A", 99) && store.cut(report(10000, "B"), 1774569600, 99));
    EXPECT_THAT(look("SELECT pending_count, next_report_at FROM aggregate_state"), ElementsAre("0|NULL"));
}

TEST_F(MetricsStoreTest, TheTimeOfTheNextReportIsPutRight) {
    const Instant now = *parseIso8601(u"2026-03-27T12:00:00Z");
    open();
    for (const auto& [before, after] :
         {std::pair("0, 1774000000.0", "0|NULL"), std::pair("0, NULL", "0|NULL"),
          std::pair("3, NULL", "3|77"), std::pair("3, 1774000000.0", "3|1774000000"),
          std::pair("3, 1774699200.0", "3|1774699200"), std::pair("3, 1900000000.0", "3|77")}) {
        look(("UPDATE aggregate_state SET (pending_count, next_report_at) = (" + std::string(before) + ")")
                 .c_str());
        EXPECT_TRUE(store.arrangeNextReport(now, 77));
        EXPECT_THAT(look("SELECT pending_count, next_report_at FROM aggregate_state"), ElementsAre(after))
            << before;
    }
}

TEST_F(MetricsStoreTest, TheFirstEpochKeepsWhatWasCountedBeforeAndALaterOneDoesNot) {
    makeByHand(folder, versionOne);
    open();
    ASSERT_TRUE(store.cut(report(1, "A"), 1000, 1774000000));
    EXPECT_TRUE(store.adoptFirstEpoch(epoch));
    EXPECT_FALSE(store.adoptFirstEpoch(QUuid::createUuid()));
    EXPECT_THAT(
        look("SELECT pending_count, next_report_at, collection_epoch FROM aggregate_state; SELECT count "
             "FROM reports"),
        ElementsAre("40|1774000000|" + std::string(epochSql).substr(1, 36), "1"));
    EXPECT_TRUE(store.adoptEpoch(QUuid::createUuid()));
    EXPECT_THAT(look("SELECT pending_count, next_report_at FROM aggregate_state; SELECT count FROM reports"),
                ElementsAre("0|NULL"));
}

TEST_F(MetricsStoreTest, ReportsEndByAcknowledgementRejectionOrAge) {
    open();
    ASSERT_TRUE(store.adoptEpoch(epoch) && store.add(10, 10, epoch));
    ASSERT_TRUE(store.cut(report(4, "A"), 1000, 20) && store.recordFailedAttempt("A", {3, 77}));
    EXPECT_EQ(store.pendingReport().value()->attempts, 3);
    EXPECT_EQ(store.pendingReport().value()->nextAttemptAt, 77);
    ASSERT_TRUE(store.reject("A", 418, 30));
    EXPECT_FALSE(store.pendingReport().value());
    ASSERT_TRUE(store.cut(report(5, "B"), 2000, 40) && store.acknowledge("B", 50));
    ASSERT_TRUE(store.cut(report(1, "C"), 2000, 60));
    EXPECT_THAT(everythingIn(folder),
                ElementsAre((std::string("1|0|NULL|") + std::string(epochSql).substr(1, 36)),
                            "A|4|2026-03-27|1000|77|3|rejected|418",
                            "C|1|2026-03-27|2000|100|0|pending|NULL"));
    EXPECT_EQ(store.expire(2000).value(), MetricsStore::Expired::nothingPending);
    EXPECT_THAT(look("SELECT report_id FROM reports"), ElementsAre("C"));
    EXPECT_EQ(store.expire(2001).value(), MetricsStore::Expired::pendingReport);
    EXPECT_TRUE(look("SELECT report_id FROM reports").empty());
    ASSERT_TRUE(store.add(1, 10, epoch) && store.discardAll());
    EXPECT_THAT(everythingIn(folder), ElementsAre("1|0|NULL|NULL"));
}

}  // namespace kestrant::metrics
