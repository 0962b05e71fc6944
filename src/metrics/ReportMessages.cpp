#include "metrics/ReportMessages.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace kestrant::metrics {

namespace {

/// JSON numbers are doubles; beyond this not every integer is one.
constexpr double largestExactInteger = 9007199254740992.0;

}  // namespace

Payload Payload::of(const Report& report) {
    return {.reportId = report.reportID, .count = report.count, .reportCreatedDay = report.createdDay};
}

QByteArray Payload::toJson() const {
    const QJsonObject object{{QStringLiteral("schemaVersion"), schemaVersion},
                             {QStringLiteral("reportId"), reportId},
                             {QStringLiteral("count"), count},
                             {QStringLiteral("reportCreatedDay"), reportCreatedDay}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<Acknowledgement> Acknowledgement::fromJson(const QByteArray& json) {
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const QJsonValue reportId = object.value(QLatin1String("reportId"));
    const QJsonValue count = object.value(QLatin1String("count"));
    const QJsonValue status = object.value(QLatin1String("status"));
    if (!reportId.isString() || !count.isDouble() || !status.isString())
        return std::nullopt;
    const double number = count.toDouble();
    if (std::trunc(number) != number || std::abs(number) > largestExactInteger)
        return std::nullopt;
    return Acknowledgement{reportId.toString(), static_cast<qint64>(number), status.toString()};
}

bool Acknowledgement::isFor(const Report& report) const {
    return reportId == report.reportID && count == report.count &&
           (status == QLatin1String("stored") || status == QLatin1String("duplicate"));
}

}  // namespace kestrant::metrics
