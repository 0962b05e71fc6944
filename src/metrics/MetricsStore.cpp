#include "metrics/MetricsStore.h"

#include <QFile>

#include <sys/stat.h>

#include <cerrno>
#include <limits>

namespace kestrant::metrics {

namespace {

constexpr auto deleteReports = "DELETE FROM reports";

}  // namespace

QString epochText(const QUuid& epoch) {
    return epoch.toString(QUuid::WithoutBraces).toUpper();
}

QUuid epochFrom(const QString& text) {
    const QUuid epoch = QUuid::fromString(text);
    return epochText(epoch) == text ? epoch : QUuid();
}

bool MetricsStore::mayExist() const {
    if (!folder_)
        return false;
    struct stat status {};
    return ::stat(QFile::encodeName(MetricsDatabase::pathIn(*folder_)).constData(), &status) == 0 ||
           (errno != ENOENT && errno != ENOTDIR);
}

StoreResult<> MetricsStore::open() {
    if (database_)
        return {};
    if (!folder_)
        return tl::unexpected(StoreError::unavailable);
    auto database = MetricsDatabase::open(*folder_);
    if (!database)
        return tl::unexpected(database.error());
    database_ = std::move(*database);
    return {};
}

StoreResult<> MetricsStore::execute(const char* sql, const std::vector<SQLValue>& parameters) {
    return open().and_then([&] { return database_->execute(sql, parameters); });
}

template <typename Body>
StoreResult<> MetricsStore::transaction(Body body) {
    return open().and_then([&] { return database_->transaction(body); });
}

StoreResult<AggregateState> MetricsStore::state() {
    if (const auto opened = open(); !opened)
        return tl::unexpected(opened.error());
    auto row = database_->prepare(
        "SELECT pending_count, next_report_at, collection_epoch FROM aggregate_state WHERE singleton = 1");
    if (!row || !row->step().value_or(false))
        return tl::unexpected(StoreError::unavailable);
    return AggregateState{row->integer(0), row->real(1), epochFrom(row->text(2).value_or(QString()))};
}

StoreResult<> MetricsStore::add(qint64 count, double firstReportAt, const QUuid& epoch) {
    return execute("UPDATE aggregate_state SET pending_count = pending_count + ?,\n"
                   "    next_report_at = COALESCE(next_report_at, ?)\n"
                   "WHERE singleton = 1 AND pending_count <= ? AND collection_epoch = ?",
                   {count, firstReportAt, std::numeric_limits<qint64>::max() - count, epochText(epoch)})
        .and_then([this] { return succeedIfOneRowChanged(); });
}

StoreResult<> MetricsStore::succeedIfOneRowChanged() const {
    if (database_->changes() != 1)
        return tl::unexpected(StoreError::unavailable);
    return {};
}

StoreResult<> MetricsStore::adoptFirstEpoch(const QUuid& epoch) {
    return execute("UPDATE aggregate_state SET collection_epoch = ? WHERE singleton = 1 AND collection_epoch "
                   "IS NULL",
                   {epochText(epoch)})
        .and_then([this] { return succeedIfOneRowChanged(); });
}

StoreResult<> MetricsStore::adoptEpoch(const QUuid& epoch) {
    return transaction([&] {
        return execute(deleteReports).and_then([&] {
            return execute("UPDATE aggregate_state SET pending_count = 0, next_report_at = NULL, "
                           "collection_epoch = ? WHERE singleton = 1",
                           {epochText(epoch)});
        });
    });
}

StoreResult<> MetricsStore::discardAll() {
    return transaction([&] {
        return execute(deleteReports).and_then([&] {
            return execute("UPDATE aggregate_state SET pending_count = 0, next_report_at = NULL, "
                           "collection_epoch = NULL WHERE singleton = 1");
        });
    });
}

StoreResult<std::optional<Report>> MetricsStore::pendingReport() {
    if (const auto opened = open(); !opened)
        return tl::unexpected(opened.error());
    auto row =
        database_->prepare("SELECT report_id, count, created_day, attempts, next_attempt_at FROM reports "
                           "WHERE status = 'pending' LIMIT 1");
    if (!row)
        return tl::unexpected(row.error());
    const auto found = row->step();
    if (!found)
        return tl::unexpected(found.error());
    const auto reportID = *found ? row->text(0) : std::nullopt;
    const auto createdDay = *found ? row->text(2) : std::nullopt;
    if (!reportID || !createdDay)
        return std::nullopt;
    return Report{*reportID, row->integer(1), *createdDay, row->integer(3), row->real(4).value_or(0)};
}

StoreResult<> MetricsStore::cut(const Report& report, double createdDayEpoch, double nextReportAt) {
    return transaction([&] {
        return execute(
                   "INSERT INTO reports (report_id, count, created_day, created_day_epoch, next_attempt_at)\n"
                   "VALUES (?, ?, ?, ?, ?)",
                   {report.reportID, report.count, report.createdDay, createdDayEpoch, report.nextAttemptAt})
            .and_then([&] { return state(); })
            .and_then([&](const AggregateState& before) {
                return removeFromFile(report.count, before.pendingCount > report.count
                                                        ? std::optional(nextReportAt)
                                                        : std::nullopt);
            });
    });
}

StoreResult<> MetricsStore::removeFromFile(qint64 count, std::optional<double> nextReportAt) {
    return execute("UPDATE aggregate_state SET pending_count = pending_count - ?, next_report_at = ? "
                   "WHERE singleton = 1",
                   {count, nextReportAt ? SQLValue(*nextReportAt) : SQLValue(nullptr)});
}

StoreResult<> MetricsStore::arrangeNextReport(Instant now, double nextReportAt) {
    return transaction([&] {
        return state().and_then([&](const AggregateState& present) -> StoreResult<> {
            if (present.pendingCount == 0)
                return present.nextReportAt ? removeFromFile(0, std::nullopt) : StoreResult<>();
            if (!present.nextReportAt || isTooFarAhead(*present.nextReportAt, now))
                return postponeNextReport(nextReportAt);
            return {};
        });
    });
}

StoreResult<> MetricsStore::recordFailedAttempt(const QString& reportID, const Backoff& backoff) {
    return execute(
        "UPDATE reports SET attempts = ?, next_attempt_at = ? WHERE report_id = ? AND status = 'pending'",
        {qint64(backoff.attempts), backoff.nextAttemptAt, reportID});
}

StoreResult<> MetricsStore::acknowledge(const QString& reportID, double nextReportAt) {
    return transaction([&] {
        return execute("DELETE FROM reports WHERE report_id = ?", {reportID}).and_then([&] {
            return postponeNextReport(nextReportAt);
        });
    });
}

StoreResult<> MetricsStore::reject(const QString& reportID, int code, double nextReportAt) {
    return transaction([&] {
        return execute("UPDATE reports SET status = 'rejected', rejection_code = ? WHERE report_id = ?",
                       {qint64(code), reportID})
            .and_then([&] { return postponeNextReport(nextReportAt); });
    });
}

StoreResult<> MetricsStore::postponeNextReport(double nextReportAt) {
    return execute("UPDATE aggregate_state SET next_report_at = ? WHERE singleton = 1 AND pending_count > 0",
                   {nextReportAt});
}

StoreResult<MetricsStore::Expired> MetricsStore::expire(double cutoff) {
    auto result = execute("DELETE FROM reports WHERE status = 'pending' AND created_day_epoch < ?", {cutoff});
    if (!result)
        return tl::unexpected(result.error());
    const auto expired = database_->changes() > 0 ? Expired::pendingReport : Expired::nothingPending;
    result = execute("DELETE FROM reports WHERE status = 'rejected' AND created_day_epoch < ?", {cutoff});
    if (!result)
        return tl::unexpected(result.error());
    return expired;
}

}  // namespace kestrant::metrics
