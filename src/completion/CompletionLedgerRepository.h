#pragma once

#include "completion/CompletionLedger.h"
#include "foundation/AtomicFile.h"
#include "foundation/ObserverList.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

/// The content of the ledger's file after a write, or the failure.
using LedgerWriteResult = tl::expected<CompletionLedgerV1, FileError>;

/// Writes what changed in a ledger to its file and tells `done`, exactly once, how that went: within the call
/// or later, on the thread of the call. Changes are written in the order they were given.
using CompletionLedgerWriter =
    std::function<void(const QString& path, const std::shared_ptr<const LedgerChange>& change,
                       std::function<void(const LedgerWriteResult& result)> done)>;

/// Creates the folder, does the change to what the file holds and writes it atomically; other processes that
/// do the same wait. A file that is missing then holds all of the ledger, and one that is no usable ledger is
/// set aside first. Thread: any; blocks for the disk, and up to five seconds for another process.
[[nodiscard]] LedgerWriteResult writeLedgerFile(const QString& path, const LedgerChange& change);

/// "completion-ledger-v1.json" in the application's own folder.
[[nodiscard]] QString completionLedgerPath();

/// Owns the completion ledger and its file, which other processes write too: what they have recorded is there
/// after the next write. The ledger in memory is right also while it cannot be written; a write that failed
/// is tried again with every later reconciliation. Thread: main.
class CompletionLedgerRepository {
  public:
    /// Loads the ledger; a file that is missing or unusable gives an empty one and stays as it is. Without a
    /// writer of its own the repository writes within the call.
    explicit CompletionLedgerRepository(QString path, CompletionLedgerWriter writer = {});
    CompletionLedgerRepository(const CompletionLedgerRepository&) = delete;
    CompletionLedgerRepository& operator=(const CompletionLedgerRepository&) = delete;

    [[nodiscard]] const QString& path() const { return path_; }
    [[nodiscard]] const CompletionLedgerV1& ledger() const { return ledger_; }
    /// Whether a file was there at the start and could not be used.
    [[nodiscard]] bool recoveredCorruptFile() const { return recoveredCorruptFile_; }
    /// Whether the ledger holds changes that are neither on the disk nor on their way to it.
    [[nodiscard]] bool needsPersistenceRetry() const { return needsPersistenceRetry_; }
    /// Whether a write has been begun that has not ended.
    [[nodiscard]] bool isWriting() const { return endedWrites_ < begunWrites_; }

    /// The records by completion date, then by identifier. Sorted once for each change.
    [[nodiscard]] const std::vector<CompletionRecord>& sortedRecords() const;

    /// Merges what is known about completions and saves when that changed the ledger or an earlier write
    /// failed. True when a write was done (or begun); false when there was nothing to do; the failure when it
    /// is known at once.
    [[nodiscard]] tl::expected<bool, FileError>
    reconcile(const std::map<QString, ReminderCompletionState>& states,
              const std::vector<CompletionObservation>& observations, Instant now);

    [[nodiscard]] bool didBackfill() const { return ledger_.didBackfill; }
    /// Notes that older completions have been taken over, and saves if that is news; the failure when it is
    /// known at once.
    [[nodiscard]] tl::expected<void, FileError> finishBackfill();

    /// Writes the whole ledger, or begins to; the failure when it is known at once.
    [[nodiscard]] tl::expected<void, FileError> save();

    /// Told after every write, with its failure if it failed. The way to learn about a write that ends later.
    [[nodiscard]] Subscription
    observeWrites(std::function<void(const std::optional<FileError>& failure)> observer);

  private:
    void load();
    void writeEnded(int number, const LedgerChange& change, const LedgerWriteResult& result);

    QString path_;
    CompletionLedgerWriter writer_;
    CompletionLedgerV1 ledger_;
    /// The file's content when it was last read or written here.
    CompletionLedgerV1 written_;
    bool recoveredCorruptFile_ = false;
    bool needsPersistenceRetry_ = false;
    mutable std::optional<std::vector<CompletionRecord>> sortedRecordsCache_;

    int begunWrites_ = 0;
    int endedWrites_ = 0;
    std::optional<FileError> lastFailure_;
    ObserverList<std::optional<FileError>> writeObservers_;
    /// Expires with the repository, for writes that end after it.
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace kestrant
