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

/// `reason` has a place for the detail.
tl::unexpected<TextPair> unusable(const QString& path, const TextPair& reason, const QString& detail = {}) {
    const auto arranged = [&](const QString& because) {
        return detail.isNull() ? because : because.arg(detail);
    };
    return tl::unexpected(TextPair{
        QStringLiteral("The configuration in %1 cannot be used: %2.").arg(path, arranged(reason.english)),
        QStringLiteral("La configuration de %1 est inutilisable : %2.").arg(path, arranged(reason.french))});
}

tl::expected<QJsonObject, TextPair> parse(const QString& path, const QByteArray& content) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (error.error != QJsonParseError::NoError)
        return unusable(path,
                        text("it is not JSON from byte %1 on", "ce n’est pas du JSON à partir de l’octet %1"),
                        QString::number(error.offset));
    if (!document.isObject())
        return unusable(path, text("it holds no JSON object", "il ne contient pas d’objet JSON"));
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

tl::expected<InformationDictionary, TextPair>
InformationDictionary::load(const std::optional<QString>& namedFile, const QString& usualFile,
                            OverridePolicy policy) {
    if (!namedFile && policy == OverridePolicy::onlyNamedFile)
        return builtIn();
    const QString path = namedFile.value_or(usualFile);
    const auto content = readFile(path);
    if (!content) {
        if (!namedFile && content.error().errorNumber == ENOENT)
            return builtIn();
        return unusable(path, {QStringLiteral("%1"), QStringLiteral("%1")}, content.error().description);
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
