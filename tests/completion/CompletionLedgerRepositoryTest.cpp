#include "completion/CompletionLedgerRepository.h"

#include "completion/BackgroundLedgerWriter.h"
#include "support/ManualScheduler.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <chrono>
#include <optional>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

const Instant now = instantFromSecondsSinceReferenceDate(796'305'600);

class LedgerRepository : public testing::Test {
  protected:
    [[nodiscard]] QString path() const { return folder.filePath(QStringLiteral("support/ledger.json")); }
    [[nodiscard]] QByteArray file() const { return readFile(path()).value_or(QByteArray("none")); }
    void putFile(const QByteArray& content) const {
        ASSERT_TRUE(createFolder(folder.filePath(QStringLiteral("support"))).has_value());
        ASSERT_TRUE(writeFileAtomically(path(), content).has_value());
    }
    static std::vector<CompletionObservation> observed(const char* identifier) {
        return {{QString::fromUtf8(identifier), now}};
    }

    QTemporaryDir folder;
};

TEST_F(LedgerRepository, BeginsEmptyAndIsThereAgainTheNextTime) {
    CompletionLedgerRepository first(path());
    EXPECT_EQ(first.ledger(), CompletionLedgerV1{});
    EXPECT_FALSE(first.recoveredCorruptFile());
    EXPECT_FALSE(QFile::exists(path()));
    EXPECT_EQ(first.reconcile({}, observed("a"), now), true);
    EXPECT_TRUE(first.finishBackfill().has_value());

    const CompletionLedgerRepository second(path());
    EXPECT_EQ(second.ledger(), first.ledger());
    EXPECT_TRUE(second.didBackfill());
    EXPECT_FALSE(second.recoveredCorruptFile());
    EXPECT_EQ(second.sortedRecords(), first.sortedRecords());
}

TEST_F(LedgerRepository, WritesNothingWithoutNews) {
    CompletionLedgerRepository repository(path());
    EXPECT_EQ(repository.reconcile({}, {}, now), false);
    EXPECT_FALSE(QFile::exists(path()));
    EXPECT_EQ(repository.reconcile({}, observed("a"), now), true);
    ASSERT_TRUE(QFile::remove(path()));
    EXPECT_EQ(repository.reconcile({}, observed("a"), now + 86'399s), false);
    EXPECT_FALSE(QFile::exists(path()));
    EXPECT_EQ(repository.reconcile({}, observed("a"), now + 86'400s), true);
    EXPECT_EQ(file(), encodeLedger(repository.ledger()));
}

TEST_F(LedgerRepository, TheFirstReconciliationOfNothingLeavesAFileThatSaysSo) {
    CompletionLedgerRepository repository(path());
    EXPECT_EQ(repository.reconcile({}, {}, now), false);
    EXPECT_TRUE(repository.finishBackfill().has_value());
    EXPECT_EQ(file(), R"({"didBackfill":true,"records":{},"schemaVersion":1})");
    ASSERT_TRUE(QFile::remove(path()));
    EXPECT_TRUE(repository.finishBackfill().has_value());
    EXPECT_FALSE(QFile::exists(path())) << "once is enough";
}

TEST_F(LedgerRepository, AnUnusableFileStaysUntilTheFirstSaveAndIsThenSetAside) {
    for (const char* content :
         {"", "{\"didBackfill\":tr", R"({"didBackfill":true,"records":{},"schemaVersion":2})"}) {
        putFile(content);
        CompletionLedgerRepository repository(path());
        EXPECT_TRUE(repository.recoveredCorruptFile());
        EXPECT_EQ(repository.ledger(), CompletionLedgerV1{});
        EXPECT_EQ(file(), content);
        EXPECT_EQ(repository.reconcile({}, observed("a"), now), true);
        EXPECT_EQ(repository.reconcile({}, observed("b"), now), true);
        EXPECT_EQ(file(), encodeLedger(repository.ledger()));
        EXPECT_EQ(readFile(path() + QStringLiteral(".damaged-1")).value(), content);
        EXPECT_FALSE(QFile::exists(path() + QStringLiteral(".damaged-2")));
        ASSERT_TRUE(QFile::remove(path() + QStringLiteral(".damaged-1")));
    }
}

TEST_F(LedgerRepository, AFailedWriteIsReportedAndTriedAgainWithoutNews) {
    CompletionLedgerRepository repository(path());
    ASSERT_TRUE(createFolder(path()).has_value()) << "a folder where the file should be";
    EXPECT_EQ(repository.reconcile({}, observed("a"), now).error().errorNumber, EISDIR);
    EXPECT_TRUE(repository.needsPersistenceRetry());
    EXPECT_EQ(repository.sortedRecords().size(), 1U) << "what is in memory is right";
    EXPECT_EQ(repository.reconcile({}, {}, now).error().errorNumber, EISDIR);

    ASSERT_TRUE(QDir().rmdir(path()));
    EXPECT_EQ(repository.reconcile({}, {}, now), true);
    EXPECT_FALSE(repository.needsPersistenceRetry());
    EXPECT_EQ(file(), encodeLedger(repository.ledger()));
    EXPECT_EQ(repository.reconcile({}, {}, now), false);
}

TEST_F(LedgerRepository, KeepsWhatOthersHaveRecordedAndTakesItOver) {
    CompletionLedgerRepository first(path());
    EXPECT_EQ(first.reconcile({}, {{"a", now}, {"b", now}}, now), true);
    CompletionLedgerRepository second(path());
    EXPECT_EQ(second.reconcile({{"a", ReminderCompletionState::incomplete()}}, observed("c"), now), true);
    EXPECT_EQ(first.reconcile({}, observed("d"), now), true);
    const CompletionLedgerRepository third(path());
    for (const CompletionLedgerRepository* each : {&std::as_const(first), &third}) {
        std::vector<QString> recorded;
        for (const CompletionRecord& record : each->sortedRecords())
            recorded.push_back(record.reminderIdentifier);
        EXPECT_THAT(recorded, testing::ElementsAre("b", "c", "d"));
    }

    // A ledger file that was deleted is written again in full.
    ASSERT_TRUE(QFile::remove(path()));
    EXPECT_EQ(first.reconcile({}, observed("e"), now), true);
    EXPECT_EQ(CompletionLedgerRepository(path()).sortedRecords().size(), 4U);
}

/// A disk that takes its time: writes end when the test says so.
class SlowDisk {
  public:
    CompletionLedgerWriter writer() {
        return [this](const QString&, const std::shared_ptr<const LedgerChange>& change, auto done) {
            ++begun;
            waiting.emplace_back([change, done](const std::optional<FileError>& failure) {
                done(failure ? LedgerWriteResult(tl::unexpected(*failure)) : change->after);
            });
        };
    }
    void endNext(std::optional<int> errorNumber = {}) {
        const auto done = waiting.front();
        waiting.erase(waiting.begin());
        done(errorNumber ? std::optional(FileError{QStringLiteral("ledger"), *errorNumber, {}})
                         : std::nullopt);
    }

    int begun = 0;
    std::vector<std::function<void(const std::optional<FileError>&)>> waiting;
};

TEST_F(LedgerRepository, AWriteThatFailsLaterIsTriedAgainAndTheObserversLearnOfIt) {
    SlowDisk disk;
    CompletionLedgerRepository repository(path(), disk.writer());
    std::vector<int> told;
    const Subscription subscription = repository.observeWrites(
        [&](const std::optional<FileError>& failure) { told.push_back(failure ? failure->errorNumber : 0); });

    EXPECT_EQ(repository.reconcile({}, observed("a"), now), true);
    EXPECT_TRUE(repository.isWriting());
    EXPECT_EQ(repository.reconcile({}, {}, now), false) << "the document is on its way";
    disk.endNext(ENOSPC);
    EXPECT_FALSE(repository.isWriting());
    EXPECT_TRUE(repository.needsPersistenceRetry());
    EXPECT_EQ(repository.reconcile({}, {}, now), true);
    disk.endNext();
    EXPECT_FALSE(repository.needsPersistenceRetry());
    EXPECT_THAT(told, testing::ElementsAre(ENOSPC, 0));
    EXPECT_EQ(disk.begun, 2);
}

TEST_F(LedgerRepository, AFailureOvertakenByALaterSuccessIsNotTriedAgain) {
    SlowDisk disk;
    CompletionLedgerRepository repository(path(), disk.writer());
    EXPECT_EQ(repository.reconcile({}, observed("a"), now), true);
    EXPECT_EQ(repository.reconcile({}, observed("b"), now), true);
    disk.endNext(EIO);
    EXPECT_TRUE(repository.isWriting());
    disk.endNext();
    EXPECT_FALSE(repository.needsPersistenceRetry());

    EXPECT_EQ(repository.reconcile({}, observed("c"), now), true);
    EXPECT_EQ(repository.reconcile({}, observed("d"), now), true);
    disk.endNext();
    disk.endNext(EIO);
    EXPECT_TRUE(repository.needsPersistenceRetry());
}

TEST_F(LedgerRepository, AWriteMayEndAfterTheRepositoryIsGone) {
    SlowDisk disk;
    {
        CompletionLedgerRepository repository(path(), disk.writer());
        EXPECT_EQ(repository.reconcile({}, observed("a"), now), true);
    }
    disk.endNext(EIO);
}

TEST_F(LedgerRepository, WritesInTheBackgroundEndInOrderAndBeforeTheWriterDoes) {
    ManualScheduler scheduler(now);
    std::optional<BackgroundLedgerWriter> background(scheduler);
    CompletionLedgerRepository repository(path(), background->writer());
    int written = 0;
    const Subscription subscription = repository.observeWrites(
        [&](const std::optional<FileError>& failure) { written += failure ? 0 : 1; });
    EXPECT_EQ(repository.reconcile({}, observed("a"), now), true);
    EXPECT_TRUE(scheduler.runUntil([&] { return !repository.isWriting(); }));
    EXPECT_EQ(written, 1);
    for (const char* identifier : {"b", "c", "d"})
        EXPECT_EQ(repository.reconcile({}, observed(identifier), now), true);
    background.reset();
    EXPECT_EQ(file(), encodeLedger(repository.ledger()));
}

}  // namespace
}  // namespace kestrant
