#pragma once

#include "metrics/AggregateCompletionReporter.h"
#include "metrics/MetricsStore.h"
#include "network/HttpSession.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant::metrics {

/// The reporter's inside. Thread: the context's, except for `preferences` and latestDiagnostic().
class ReporterActor : public std::enable_shared_from_this<ReporterActor> {
  public:
    explicit ReporterActor(AggregateCompletionReporter::Services services);

    CollectionPreferences preferences;

    void record(qint64 count, const CollectionTicket& ticket);
    void check(std::function<void()> finished);
    /// The last work: one more try to store what is in memory, which is left to the next process otherwise.
    void finish();
    /// Thread: any.
    [[nodiscard]] std::optional<LocalDiagnostic> latestDiagnostic() const { return latestDiagnostic_; }

  private:
    using CurrentTicket = StoreResult<std::optional<CollectionTicket>>;

    /// Brings the store into line with the person's switch: discards, adopts the present epoch, stores what
    /// was kept in memory. The ticket to work under is absent while counting is off.
    [[nodiscard]] CurrentTicket reconcile();
    [[nodiscard]] StoreResult<> discard();
    /// A ticket from before the first epoch was chosen stands for that epoch.
    [[nodiscard]] CollectionTicket resolved(const CollectionTicket& ticket) const;
    /// The short way, where the store is in line and the next check arranged for. False when nothing was
    /// counted.
    [[nodiscard]] bool addAtOnce(qint64 count, const CollectionTicket& ticket);
    void keepInMemory(qint64 count, const CollectionTicket& ticket);
    /// Lets counting begin under `ticket` in a store of another epoch. `isFirst`: there was none before.
    [[nodiscard]] StoreResult<> adopt(const CollectionTicket& ticket, const AggregateState& state,
                                      bool isFirst);
    /// Stores what was kept in memory and what an earlier process left.
    [[nodiscard]] StoreResult<> storeUnsaved(const CollectionTicket& ticket);

    [[nodiscard]] StoreResult<> work(const CollectionTicket& ticket);
    [[nodiscard]] StoreResult<std::optional<Report>> cutIfDue();
    void upload(const Report& report, const CollectionTicket& ticket);
    void abandonUpload(int number);
    void finishUpload(const Report& report, int number,
                      const tl::expected<HttpReply, TransportError>& result);
    [[nodiscard]] StoreResult<> settle(const Report& report,
                                       const tl::expected<HttpReply, TransportError>& result);
    [[nodiscard]] StoreResult<> confirm(const Report& report, const HttpReply& reply);
    [[nodiscard]] StoreResult<> retryLater(const Report& report, const QString& why,
                                           const QByteArray& retryAfter = {});
    [[nodiscard]] double nextReportTime() const;

    [[nodiscard]] bool storageMayBeTried() const;
    void storageFailed();
    [[nodiscard]] StoreResult<> scheduleNext();
    void scheduleAt(double secondsSince1970);
    void diagnose(LocalDiagnostic diagnostic);
    void tellWaiting();

    AggregateCompletionReporter::Services services_;
    MetricsStore store_;
    std::atomic<std::optional<LocalDiagnostic>> latestDiagnostic_;
    ScheduledTask scheduledCheck_;
    std::optional<HttpSession> session_;
    std::unique_ptr<HttpExchange> exchange_;
    bool isSending_ = false;
    int uploadNumber_ = 0;
    UnsavedCount unpersisted_;
    /// The epoch chosen here because there was none.
    QUuid firstEpoch_;
    std::optional<Instant> storageRetryAt_;
    std::vector<std::function<void()>> waiting_;
};

}  // namespace kestrant::metrics
