#include "completion/CompletionLedgerRepository.h"

#include "foundation/FileLock.h"
#include "foundation/StandardFolders.h"

#include <QFileInfo>

#include <cerrno>
#include <utility>

namespace kestrant {
namespace {

/// Of replacing a file that others change at the same time.
constexpr int mostTries = 20;

}  // namespace

LedgerWriteResult writeLedgerFile(const QString& path, const LedgerChange& change) {
    if (auto folder = createFolder(QFileInfo(path).path()); !folder)
        return tl::unexpected(std::move(folder.error()));
    const auto lock = FileLock::besideFile(path);
    if (!lock)
        return tl::unexpected(lock.error());
    // Again where a program that does not lock it has changed the file meanwhile.
    for (int tries = 1;; ++tries) {
        const auto document = readFile(path);
        if (!document && document.error().errorNumber != ENOENT && document.error().errorNumber != EACCES &&
            document.error().errorNumber != EFBIG)
            return tl::unexpected(document.error());
        auto present = document ? decodeLedger(*document) : std::nullopt;
        const bool isUnusable = !present && (document || document.error().errorNumber != ENOENT);
        if (isUnusable) {
            if (const auto aside = setFileAside(path); !aside)
                return tl::unexpected(aside.error());
        }
        CompletionLedgerV1 ledger = present ? withChange(std::move(*present), change) : change.after;
        const auto replaced = present ? std::optional(*document) : std::nullopt;
        const auto written = replaceContent(path, replaced, encodeLedger(ledger));
        if (written)
            return ledger;
        if (written.error().errorNumber != ESTALE || tries == mostTries)
            return tl::unexpected(written.error());
    }
}

QString completionLedgerPath() {
    return applicationSupportFolder() + QStringLiteral("/completion-ledger-v1.json");
}

CompletionLedgerRepository::CompletionLedgerRepository(QString path, CompletionLedgerWriter writer)
    : path_(std::move(path))
    , writer_(std::move(writer)) {
    if (!writer_) {
        writer_ = [](const QString& file, const std::shared_ptr<const LedgerChange>& change,
                     const auto& done) { done(writeLedgerFile(file, *change)); };
    }
    load();
}

void CompletionLedgerRepository::load() {
    removeAbandonedFiles(QFileInfo(path_).path());
    const auto document = readFile(path_);
    if (document) {
        if (auto ledger = decodeLedger(*document)) {
            ledger_ = std::move(*ledger);
            written_ = ledger_;
            return;
        }
    }
    recoveredCorruptFile_ = document || document.error().errorNumber != ENOENT;
}

const std::vector<CompletionRecord>& CompletionLedgerRepository::sortedRecords() const {
    if (!sortedRecordsCache_)
        sortedRecordsCache_ = kestrant::sortedRecords(ledger_);
    return *sortedRecordsCache_;
}

tl::expected<bool, FileError>
CompletionLedgerRepository::reconcile(const std::map<QString, ReminderCompletionState>& states,
                                      const std::vector<CompletionObservation>& observations, Instant now) {
    if (mergeCompletions(ledger_, states, observations, now)) {
        sortedRecordsCache_.reset();
        needsPersistenceRetry_ = true;
    }
    if (!needsPersistenceRetry_)
        return false;
    if (const auto saved = save(); !saved)
        return tl::unexpected(saved.error());
    return true;
}

tl::expected<void, FileError> CompletionLedgerRepository::finishBackfill() {
    if (!std::exchange(ledger_.didBackfill, true))
        needsPersistenceRetry_ = true;
    if (!needsPersistenceRetry_)
        return {};
    return save();
}

tl::expected<void, FileError> CompletionLedgerRepository::save() {
    needsPersistenceRetry_ = false;
    const int number = ++begunWrites_;
    const auto change = std::make_shared<const LedgerChange>(LedgerChange{written_, ledger_});
    writer_(path_, change,
            [this, number, change, alive = std::weak_ptr<bool>(isAlive_)](const LedgerWriteResult& result) {
                if (!alive.expired())
                    writeEnded(number, *change, result);
            });
    if (endedWrites_ == number && lastFailure_)
        return tl::unexpected(*lastFailure_);
    return {};
}

Subscription
CompletionLedgerRepository::observeWrites(std::function<void(const std::optional<FileError>&)> observer) {
    return writeObservers_.add(std::move(observer));
}

void CompletionLedgerRepository::writeEnded(int number, const LedgerChange& change,
                                            const LedgerWriteResult& result) {
    endedWrites_ = number;
    if (result) {
        written_ = *result;
        // Other processes' records, and the changes made here since the write began.
        if (auto merged = withChange(*result, {change.after, ledger_}); merged != ledger_) {
            ledger_ = std::move(merged);
            sortedRecordsCache_.reset();
        }
    }
    lastFailure_ = result ? std::nullopt : std::optional(result.error());
    if (lastFailure_)
        needsPersistenceRetry_ = true;
    else if (number == begunWrites_)
        needsPersistenceRetry_ = false;  // whatever failed before, this document holds it too
    writeObservers_.notify(lastFailure_);
}

}  // namespace kestrant
