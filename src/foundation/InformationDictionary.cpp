#include "foundation/InformationDictionary.h"

#include "InformationDictionaryValues.h"
#include "foundation/AtomicFile.h"

#include <QJsonDocument>

#include <cerrno>

namespace kestrant {

namespace {

void insertText(QJsonObject& values, const char* key, const char* text) {
    if (*text != '\0')
        values.insert(QLatin1String(key), QString::fromUtf8(text));
}

tl::expected<QJsonObject, QString> parse(const QString& path, const QByteArray& content) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (error.error != QJsonParseError::NoError)
        return tl::unexpected(
            QStringLiteral("%1: %2 (at byte %3)").arg(path, error.errorString()).arg(error.offset));
    if (!document.isObject())
        return tl::unexpected(QStringLiteral("%1: not a JSON object").arg(path));
    return document.object();
}

}  // namespace

InformationDictionary InformationDictionary::builtIn() {
    QJsonObject values;
    insertText(values, shortVersionKey, built_in::shortVersion);
    insertText(values, aggregateMetricsBaseUrlKey, built_in::aggregateMetricsBaseUrl);
    insertText(values, feedbackBaseUrlKey, built_in::feedbackBaseUrl);
    insertText(values, recapShareBaseUrlKey, built_in::recapShareBaseUrl);
    values.insert(QLatin1String(aggregateMetricsPrivacyReadyKey), built_in::aggregateMetricsPrivacyReady);
    values.insert(QLatin1String(aggregateMetricsUploadEnabledKey), built_in::aggregateMetricsUploadEnabled);
    return InformationDictionary(values);
}

InformationDictionary::OverridePolicy InformationDictionary::builtInPolicy() {
    return built_in::isRelease ? OverridePolicy::onlyNamedFile : OverridePolicy::usualFile;
}

tl::expected<InformationDictionary, QString>
InformationDictionary::load(const std::optional<QString>& namedFile, const QString& usualFile,
                            OverridePolicy policy) {
    if (!namedFile && policy == OverridePolicy::onlyNamedFile)
        return builtIn();
    const QString path = namedFile.value_or(usualFile);
    const auto content = readFile(path);
    if (!content) {
        if (!namedFile && content.error().errorNumber == ENOENT)
            return builtIn();
        return tl::unexpected(QStringLiteral("%1: %2").arg(path, content.error().description));
    }
    return parse(path, *content).map([](const QJsonObject& values) { return builtIn().overlaidBy(values); });
}

std::optional<QString> InformationDictionary::string(const QString& key) const {
    const QJsonValue value = values_.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<bool> InformationDictionary::boolean(const QString& key) const {
    const QJsonValue value = values_.value(key);
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

InformationDictionary InformationDictionary::overlaidBy(const QJsonObject& values) const {
    QJsonObject merged = values_;
    for (auto value = values.begin(); value != values.end(); ++value)
        merged.insert(value.key(), value.value());
    return InformationDictionary(merged);
}

}  // namespace kestrant
