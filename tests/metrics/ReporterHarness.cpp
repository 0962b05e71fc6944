#include "metrics/ReporterHarness.h"

#include "network/EventLoop.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <stdexcept>

namespace kestrant {

CountingService::CountingService()
    : server([this](const RecordedRequest& request) { return answer(request); }) {}

qint64 CountingService::total() const {
    qint64 sum = 0;
    for (const auto& [id, count] : stored)
        sum += count;
    return sum;
}

InformationDictionary CountingService::information() const {
    return InformationDictionary({{InformationDictionary::aggregateMetricsBaseUrlKey, server.url()},
                                  {InformationDictionary::aggregateMetricsPrivacyReadyKey, true},
                                  {InformationDictionary::aggregateMetricsUploadEnabledKey, true}});
}

Answer CountingService::answer(const RecordedRequest& request) {
    const std::optional<Mood> present = mood ? mood() : std::nullopt;
    if (present && present->storing == Mood::Storing::never)
        return present->answer;
    QJsonObject payload = QJsonDocument::fromJson(request.body()).object();
    const qint64 count = payload[QStringLiteral("count")].toInteger();
    const bool isNew = stored.emplace(payload[QStringLiteral("reportId")].toString(), count).second;
    if (present)
        return present->answer;
    payload[QStringLiteral("status")] = isNew ? QStringLiteral("stored") : QStringLiteral("duplicate");
    return Answer::status(200, QJsonDocument(payload).toJson());
}

qint64 accountedFor(const QString& path, const CountingService& service) {
    Sqlite look(path);
    qint64 sum = service.total() + std::stoll(look("SELECT pending_count FROM aggregate_state").at(0));
    for (const std::string& row : look("SELECT count, report_id FROM reports")) {
        if (!service.stored.contains(QString::fromStdString(row.substr(row.find('|') + 1))))
            sum += std::stoll(row);
    }
    return sum;
}

ReporterHarness::ReporterHarness() {
    start();
}

void ReporterHarness::start() {
    reporter.emplace(AggregateCompletionReporter::Services{
        .context = scheduler,
        .clock = scheduler,
        .defaults = defaults,
        .information = information,
        .folder = folder,
        .random = {[this] { return random; }, [] { return QUuid::createUuid(); }},
    });
    check();
}

void ReporterHarness::stop() {
    reporter.reset();
    scheduler.runPosted();
}

void ReporterHarness::count(qint64 completions) {
    reporter->recordCompletions(completions);
    settle();
}

void ReporterHarness::check() {
    reporter->runDueCheck();
    settle();
}

void ReporterHarness::setEnabled(bool enabled) {
    reporter->setEnabled(enabled);
    settle();
}

void ReporterHarness::settle() {
    scheduler.runPosted();
    if (!turnUntil([this] { return !reporter->isUploading(); }))
        throw std::runtime_error("the upload does not end");
    scheduler.runPosted();
}

void ReporterHarness::pass(Duration duration) {
    // Shorter than the timeouts of an upload, which begins within a step and is let end after it.
    constexpr Duration step = std::chrono::seconds(10);
    for (; duration > Duration::zero(); duration -= step) {
        scheduler.advance(std::min(duration, step));
        settle();
    }
}

}  // namespace kestrant
