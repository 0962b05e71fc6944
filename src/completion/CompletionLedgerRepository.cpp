#include "completion/CompletionLedgerRepository.h"

#include "foundation/StandardFolders.h"

#include <QFileInfo>

#include <cerrno>
#include <utility>

namespace kestrant {

tl::expected<void, FileError> writeLedgerFile(const QString& path, const QByteArray& document) {
    if (auto folder = createFolder(QFileInfo(path).path()); !folder)
        return folder;
    const auto present = readFile(path);
    const bool isUnusable =
        present ? !decodeLedger(*present)
                : present.error().errorNumber == EACCES || present.error().errorNumber == EFBIG;
    if (isUnusable) {
        if (const auto aside = setFileAside(path); !aside)
            return tl::unexpected(aside.error());
    }
    return writeFileAtomically(path, document);
}

QString completionLedgerPath() {
    return applicationSupportFolder() + QStringLiteral("/completion-ledger-v1.json");
}

CompletionLedgerRepository::CompletionLedgerRepository(QString path, CompletionLedgerWriter writer)
    : path_(std::move(path))
    , writer_(std::move(writer)) {
    if (!writer_) {
        writer_ = [](const QString& file, const QByteArray& document, const auto& done) {
            done(writeLedgerFile(file, document));
        };
    }
    load();
}

void CompletionLedgerRepository::load() {
    const auto document = readFile(path_);
    if (document) {
        if (auto ledger = decodeLedger(*document)) {
            ledger_ = std::move(*ledger);
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
    writer_(
        path_, encodeLedger(ledger_),
        [this, number, alive = std::weak_ptr<bool>(isAlive_)](const tl::expected<void, FileError>& result) {
            if (!alive.expired())
                writeEnded(number, result);
        });
    if (endedWrites_ == number && lastFailure_)
        return tl::unexpected(*lastFailure_);
    return {};
}

Subscription
CompletionLedgerRepository::observeWrites(std::function<void(const std::optional<FileError>&)> observer) {
    return writeObservers_.add(std::move(observer));
}

void CompletionLedgerRepository::writeEnded(int number, const tl::expected<void, FileError>& result) {
    endedWrites_ = number;
    lastFailure_ = result ? std::nullopt : std::optional(result.error());
    if (lastFailure_)
        needsPersistenceRetry_ = true;
    else if (number == begunWrites_)
        needsPersistenceRetry_ = false;  // whatever failed before, this document holds it too
    writeObservers_.notify(lastFailure_);
}

}  // namespace kestrant
