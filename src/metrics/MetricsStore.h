#pragma once

#include "metrics/MetricsDatabase.h"
#include "metrics/ReportMessages.h"
#include "metrics/ReportSchedule.h"

#include <QUuid>

#include <optional>

namespace kestrant::metrics {

/// The form in which the store and the preferences hold an epoch: upper-case hexadecimal, 8-4-4-4-12.
[[nodiscard]] QString epochText(const QUuid& epoch);
/// A null identifier when the text is none in that form.
[[nodiscard]] QUuid epochFrom(const QString& text);

/// The store's single row of state.
struct AggregateState {
    /// Counted since the last report was cut.
    qint64 pendingCount = 0;
    /// When the next report may be cut, seconds since 1970-01-01 UTC; absent while nothing is counted.
    std::optional<double> nextReportAt;
    /// Null while nothing may be counted.
    QUuid collectionEpoch;
};

/// What the database keeps, in this system's terms. The database is opened on demand, once; after close(), or
/// after an opening that failed, the next call opens it anew. Calls fail with StoreError::unavailable and
/// have changed nothing then. Thread: one at a time.
class MetricsStore {
  public:
    /// Without a folder it is never available.
    explicit MetricsStore(std::optional<QString> folder) : folder_(std::move(folder)) {}

    /// False when there is certainly nothing on the disk.
    [[nodiscard]] bool mayExist() const;
    [[nodiscard]] StoreResult<> open();
    void close() { database_.reset(); }

    [[nodiscard]] StoreResult<AggregateState> state();
    /// Fails unless `epoch` is the present one and the sum can be held.
    [[nodiscard]] StoreResult<> add(qint64 count, double firstReportAt, const QUuid& epoch);
    /// Lets counting begin under `epoch`, the first there is: what was counted before there were epochs
    /// stays. Fails where the store has an epoch.
    [[nodiscard]] StoreResult<> adoptFirstEpoch(const QUuid& epoch);
    /// Deletes every count and report and lets counting begin under `epoch`.
    [[nodiscard]] StoreResult<> adoptEpoch(const QUuid& epoch);
    /// Deletes every count and report; nothing may be counted afterwards.
    [[nodiscard]] StoreResult<> discardAll();

    /// The report waiting for upload, if there is one.
    [[nodiscard]] StoreResult<std::optional<Report>> pendingReport();
    /// Moves `report.count` completions into a report; what is still counted waits for `nextReportAt`. Fails
    /// while a report is pending.
    [[nodiscard]] StoreResult<> cut(const Report& report, double createdDayEpoch, double nextReportAt);
    /// Puts the time of the next report right: none while nothing is counted, `nextReportAt` where there is
    /// none or it was set while the clock was ahead.
    [[nodiscard]] StoreResult<> arrangeNextReport(Instant now, double nextReportAt);
    [[nodiscard]] StoreResult<> recordFailedAttempt(const QString& reportID, const Backoff& backoff);
    /// The report has arrived and is deleted; what is still counted waits for `nextReportAt`.
    [[nodiscard]] StoreResult<> acknowledge(const QString& reportID, double nextReportAt);
    /// The report is kept until it expires, but never sent again; what is still counted waits for
    /// `nextReportAt`.
    [[nodiscard]] StoreResult<> reject(const QString& reportID, int code, double nextReportAt);

    enum class Expired { nothingPending, pendingReport };
    /// Deletes the reports, pending and rejected, of days that began before the cutoff; says whether a
    /// pending one was.
    [[nodiscard]] StoreResult<Expired> expire(double cutoff);

  private:
    [[nodiscard]] StoreResult<> execute(const char* sql, const std::vector<SQLValue>& parameters = {});
    template <typename Body>
    [[nodiscard]] StoreResult<> transaction(Body body);
    [[nodiscard]] StoreResult<> succeedIfOneRowChanged() const;
    /// Counts `count` fewer.
    [[nodiscard]] StoreResult<> removeFromFile(qint64 count, std::optional<double> nextReportAt);
    [[nodiscard]] StoreResult<> postponeNextReport(double nextReportAt);

    std::optional<QString> folder_;
    std::optional<MetricsDatabase> database_;
};

}  // namespace kestrant::metrics
