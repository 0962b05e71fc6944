#pragma once

#include "completion/CompletionLedgerRepository.h"
#include "foundation/Scheduler.h"

#include <QThreadPool>

#include <memory>
#include <utility>

namespace kestrant {

/// Writes ledgers on a thread of its own, one after the other, so that a slow disk holds nobody up. Its end
/// waits until everything it was given has been written. Thread: the scheduler's, which must outlive it.
class BackgroundLedgerWriter {
  public:
    explicit BackgroundLedgerWriter(Scheduler& scheduler) : scheduler_(scheduler) {
        pool_.setMaxThreadCount(1);
    }
    BackgroundLedgerWriter(const BackgroundLedgerWriter&) = delete;
    BackgroundLedgerWriter& operator=(const BackgroundLedgerWriter&) = delete;
    ~BackgroundLedgerWriter() { pool_.waitForDone(); }

    /// The writer to give to a repository; good for as long as this object lives.
    [[nodiscard]] CompletionLedgerWriter writer() {
        return [this](const QString& path, const std::shared_ptr<const LedgerChange>& change, auto done) {
            pool_.start([this, path, change, done = std::move(done)] {
                scheduler_.post([done, result = writeLedgerFile(path, *change)] { done(result); });
            });
        };
    }

  private:
    Scheduler& scheduler_;
    QThreadPool pool_;
};

}  // namespace kestrant
