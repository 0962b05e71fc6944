#include "metrics/ReporterActor.h"

#include "network/ServiceUrl.h"

#include <QLoggingCategory>

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrant::metrics {

namespace {

Q_LOGGING_CATEGORY(logger, "kestrant.metrics")

constexpr auto requestTimeout = std::chrono::seconds(20);
constexpr auto resourceTimeout = std::chrono::seconds(30);
/// Timers do not run while the machine sleeps and clocks are set: look again at least this often.
constexpr double longestDelay = 86400;
/// Keeps a check from running a rounding error too early, again and again.
constexpr double timerMargin = 0.001;

const char* caseName(LocalDiagnostic diagnostic) {
    switch (diagnostic) {
    case LocalDiagnostic::storageUnavailable:
        return "storageUnavailable";
    case LocalDiagnostic::invalidAcknowledgement:
        return "invalidAcknowledgement";
    case LocalDiagnostic::reportRejected:
        return "reportRejected";
    case LocalDiagnostic::expiredPendingReport:
        return "expiredPendingReport";
    }
    return "";
}

}  // namespace

ReporterActor::ReporterActor(AggregateCompletionReporter::Services services)
    : preferences(services.information, services.defaults, services.random.uuid)
    , services_(std::move(services))
    , store_(services_.folder) {}

void ReporterActor::record(qint64 count, const CollectionTicket& ticket) {
    if (!storageMayBeTried()) {
        keepInMemory(count, resolved(ticket));
        return;
    }
    if (addAtOnce(count, resolved(ticket)))
        return;
    const auto current = reconcile();
    if (current && *current != resolved(ticket))
        return;
    const StoreResult<> added = current.and_then(
        [&](const auto& present) { return store_.add(count, nextReportTime(), present->epoch); });
    if (!added) {
        keepInMemory(count, resolved(ticket));
        storageFailed();
    } else if (!isSending_ && !scheduledCheck_.isPending() && !scheduleNext()) {
        storageFailed();
    }
}

void ReporterActor::check(std::function<void()> finished) {
    if (finished)
        waiting_.push_back(std::move(finished));
    scheduledCheck_.cancel();
    if (!storageMayBeTried()) {
        scheduleAt(secondsSince1970(*storageRetryAt_));
    } else {
        const StoreResult<> done = reconcile().and_then(
            [&](const auto& ticket) { return ticket && !isSending_ ? work(*ticket) : StoreResult<>(); });
        if (!done)
            storageFailed();
    }
    if (!isSending_)
        tellWaiting();
}

void ReporterActor::finish() {
    scheduledCheck_.cancel();
    exchange_.reset();
    if (unpersisted_.count == 0 || reconcile() || unpersisted_.count == 0)
        return;
    qCWarning(logger,
              "Completions that could not be stored: %lld; the next start finds them in the settings, unless "
              "these cannot be saved either",
              static_cast<long long>(unpersisted_.count));
    preferences.leave(std::exchange(unpersisted_, {}));
}

ReporterActor::CurrentTicket ReporterActor::reconcile() {
    if (preferences.isDiscardPending()) {
        if (const auto discarded = discard(); !discarded)
            return tl::unexpected(discarded.error());
    }
    auto ticket = preferences.ticket();
    if (!ticket)
        return std::nullopt;
    const auto state = store_.state();
    if (!state)
        return tl::unexpected(state.error());
    const bool isFirst = ticket->epoch.isNull();
    if (isFirst) {
        ticket = preferences.ticketWithEpoch(state->collectionEpoch);
        if (!ticket)
            return std::nullopt;
        firstEpoch_ = ticket->epoch;
    }
    return adopt(*ticket, *state, isFirst)
        .and_then([&] { return storeUnsaved(*ticket); })
        .and_then([&] { return store_.arrangeNextReport(services_.clock.now(), nextReportTime()); })
        .map([&] { return ticket; });
}

StoreResult<> ReporterActor::adopt(const CollectionTicket& ticket, const AggregateState& state,
                                   bool isFirst) {
    if (state.collectionEpoch == ticket.epoch)
        return {};
    return isFirst ? store_.adoptFirstEpoch(ticket.epoch) : store_.adoptEpoch(ticket.epoch);
}

StoreResult<> ReporterActor::storeUnsaved(const CollectionTicket& ticket) {
    const UnsavedCount left = preferences.left();
    qint64 count = 0;
    for (const UnsavedCount& unsaved : {unpersisted_, left}) {
        // Counted before an epoch was chosen: switching off would have dropped it.
        if (unsaved.epoch == ticket.epoch || unsaved.epoch.isNull())
            count = cappedSum(count, unsaved.count);
    }
    if (count > 0) {
        if (const auto added = store_.add(count, nextReportTime(), ticket.epoch); !added)
            return added;
    }
    unpersisted_ = {};
    if (left.count > 0)
        preferences.forgetLeft();
    return {};
}

StoreResult<> ReporterActor::discard() {
    const auto ticket = preferences.ticket();
    if (!ticket || unpersisted_.epoch != ticket->epoch)
        unpersisted_ = {};
    if (store_.mayExist()) {
        if (const auto discarded = store_.discardAll(); !discarded)
            return discarded;
        store_.close();
    }
    preferences.discardDone();
    return {};
}

CollectionTicket ReporterActor::resolved(const CollectionTicket& ticket) const {
    return ticket.epoch.isNull() ? CollectionTicket{firstEpoch_} : ticket;
}

bool ReporterActor::addAtOnce(qint64 count, const CollectionTicket& ticket) {
    // The store refuses any epoch but its own, and a check is on its way.
    return (isSending_ || scheduledCheck_.isPending()) && unpersisted_.count == 0 &&
           !preferences.isDiscardPending() && preferences.ticket() == ticket &&
           store_.add(count, nextReportTime(), ticket.epoch);
}

void ReporterActor::keepInMemory(qint64 count, const CollectionTicket& ticket) {
    if (unpersisted_.epoch != ticket.epoch)
        unpersisted_ = {.epoch = ticket.epoch};
    unpersisted_.count = cappedSum(unpersisted_.count, count);
}

StoreResult<> ReporterActor::work(const CollectionTicket& ticket) {
    const auto expired = store_.expire(expiryCutoff(services_.clock.now()));
    if (!expired)
        return tl::unexpected(expired.error());
    if (*expired == MetricsStore::Expired::pendingReport)
        diagnose(LocalDiagnostic::expiredPendingReport);
    const auto report = cutIfDue();
    if (!report)
        return tl::unexpected(report.error());
    const Instant now = services_.clock.now();
    if (!*report ||
        ((*report)->nextAttemptAt > secondsSince1970(now) && !isTooFarAhead((*report)->nextAttemptAt, now)))
        return scheduleNext();
    upload(**report, ticket);
    return {};
}

StoreResult<std::optional<Report>> ReporterActor::cutIfDue() {
    auto pending = store_.pendingReport();
    if (!pending || *pending)
        return pending;
    const auto state = store_.state();
    if (!state)
        return tl::unexpected(state.error());
    const Instant now = services_.clock.now();
    if (state->pendingCount < 1 || !state->nextReportAt || *state->nextReportAt > secondsSince1970(now))
        return std::nullopt;
    const DayStamp today = dayStamp(now);
    const Report report{.reportID = epochText(services_.random.uuid()),
                        .count = std::min(state->pendingCount, maximumReportCount),
                        .createdDay = today.day,
                        .nextAttemptAt = secondsSince1970(now)};
    return store_.cut(report, today.startOfDay, nextReportTime()).map([&] { return std::optional(report); });
}

void ReporterActor::upload(const Report& report, const CollectionTicket& ticket) {
    const int number = ++uploadNumber_;
    const auto cancel = [&context = services_.context, weak = weak_from_this(), number] {
        context.post([weak, number] {
            if (const auto actor = weak.lock())
                actor->abandonUpload(number);
        });
    };
    const auto baseURL = preferences.configuration().baseURL;
    // Otherwise the switch was just turned, which has a check of its own follow.
    if (!baseURL || !preferences.beginUpload({ticket, number, cancel}))
        return;
    isSending_ = true;
    if (!session_)
        session_.emplace(services_.context, services_.tls);
    const JsonPost post{.url = appendingPath(*baseURL, QStringLiteral("v1/completions")),
                        .userAgent = "Kestrant-AggregateMetrics/1",
                        .body = Payload::of(report).toJson(),
                        .idleTimeout = requestTimeout,
                        .totalTimeout = resourceTimeout};
    exchange_ = session_->post(
        post, [this, report, number](const auto& result) { finishUpload(report, number, result); });
}

void ReporterActor::abandonUpload(int number) {
    if (!isSending_ || number != uploadNumber_)
        return;
    exchange_.reset();
    isSending_ = false;
    tellWaiting();
}

void ReporterActor::finishUpload(const Report& report, int number,
                                 const tl::expected<HttpReply, TransportError>& result) {
    exchange_.reset();
    isSending_ = false;
    if (preferences.endUpload(number) && storageMayBeTried()) {
        const auto settled = settle(report, result).and_then([this] { return scheduleNext(); });
        if (!settled)
            storageFailed();
    }
    tellWaiting();
}

StoreResult<> ReporterActor::settle(const Report& report,
                                    const tl::expected<HttpReply, TransportError>& result) {
    if (!result)
        return retryLater(report, result.error().description);
    const int status = result->status;
    if (status >= 200 && status <= 299)
        return confirm(report, *result);
    if (status < 400 || status >= 500 || status == 408 || status == 429)
        return retryLater(report, QStringLiteral("status %1").arg(status), result->retryAfter);
    const auto rejected = store_.reject(report.reportID, status, nextReportTime());
    if (rejected)
        diagnose(LocalDiagnostic::reportRejected);
    return rejected;
}

StoreResult<> ReporterActor::confirm(const Report& report, const HttpReply& reply) {
    const auto acknowledgement = Acknowledgement::fromJson(reply.body.value_or(QByteArray()));
    if (acknowledgement && acknowledgement->isFor(report))
        return store_.acknowledge(report.reportID, nextReportTime());
    diagnose(LocalDiagnostic::invalidAcknowledgement);
    return retryLater(report, QStringLiteral("not acknowledged"), reply.retryAfter);
}

StoreResult<> ReporterActor::retryLater(const Report& report, const QString& why,
                                        const QByteArray& retryAfter) {
    qCInfo(logger, "Upload failed: %s", qUtf8Printable(why));
    const Instant now = services_.clock.now();
    return store_.recordFailedAttempt(report.reportID, backoff(report.attempts, now, services_.random.unit(),
                                                               retryAfterSeconds(retryAfter, now)));
}

double ReporterActor::nextReportTime() const {
    return metrics::nextReportTime(services_.clock.now(), services_.random.unit());
}

bool ReporterActor::storageMayBeTried() const {
    if (!storageRetryAt_)
        return true;
    const Duration wait = *storageRetryAt_ - services_.clock.now();
    // A longer wait than was ever set means that the clock was set back.
    return wait <= Duration::zero() || wait > seconds(longestStorageRetry);
}

void ReporterActor::storageFailed() {
    store_.close();
    diagnose(LocalDiagnostic::storageUnavailable);
    storageRetryAt_ = storageRetryTime(services_.clock.now(), services_.random.unit());
    scheduleAt(secondsSince1970(*storageRetryAt_));
}

StoreResult<> ReporterActor::scheduleNext() {
    const auto report = store_.pendingReport();
    if (!report)
        return tl::unexpected(report.error());
    if (*report) {
        scheduleAt((*report)->nextAttemptAt);
        return {};
    }
    const auto state = store_.state();
    if (!state)
        return tl::unexpected(state.error());
    if (state->pendingCount > 0 && state->nextReportAt)
        scheduleAt(*state->nextReportAt);
    return {};
}

void ReporterActor::scheduleAt(double time) {
    const double delay = time - secondsSince1970(services_.clock.now());
    scheduledCheck_ = services_.context.after(seconds(std::clamp(delay, 0.0, longestDelay) + timerMargin),
                                              [this] { check({}); });
}

void ReporterActor::diagnose(LocalDiagnostic diagnostic) {
    latestDiagnostic_ = diagnostic;
    qCWarning(logger, "Aggregate completion collection issue: %s", caseName(diagnostic));
}

void ReporterActor::tellWaiting() {
    for (const auto& finished : std::exchange(waiting_, {}))
        finished();
}

}  // namespace kestrant::metrics
