#include "services/FeedbackAPIClient.h"

#include "foundation/Choice.h"
#include "network/ServiceUrl.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>

#include <chrono>
#include <utility>

namespace kestrant {

namespace {

constexpr auto timeout = std::chrono::seconds(20);
/// An answer that trickles in without end is none.
constexpr auto longestExchange = std::chrono::seconds(60);

Q_LOGGING_CATEGORY(logger, "kestrant.feedback")

std::optional<QUrl> configuredUrl(const InformationDictionary& information) {
    const auto text = information.string(InformationDictionary::feedbackBaseUrlKey);
    return text ? serviceUrl(*text) : std::nullopt;
}

std::optional<QJsonObject> objectFrom(const QByteArray& json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

tl::expected<void, FeedbackSubmissionError> outcome(const tl::expected<HttpReply, TransportError>& result) {
    using Kind = FeedbackSubmissionError::Kind;
    if (!result) {
        qCInfo(logger, "A message was not sent: %s", qUtf8Printable(result.error().description));
        return tl::unexpected(FeedbackSubmissionError{Kind::unavailable});
    }
    const QByteArray body = result->body.value_or(QByteArray());
    if (result->status < 200 || result->status > 299) {
        const auto response = ErrorResponse::fromJson(body).value_or(ErrorResponse());
        return tl::unexpected(FeedbackSubmissionError{Kind::server, response.code, response.error});
    }
    const auto response = FeedbackResponse::fromJson(body);
    if (!response || !response->ok)
        return tl::unexpected(FeedbackSubmissionError{Kind::invalidResponse});
    return {};
}

}  // namespace

QByteArray FeedbackRequest::toJson() const {
    QJsonObject object{{QStringLiteral("category"), category}, {QStringLiteral("message"), message}};
    if (replyEmail)
        object.insert(QStringLiteral("replyEmail"), *replyEmail);
    if (appVersion)
        object.insert(QStringLiteral("appVersion"), *appVersion);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<FeedbackResponse> FeedbackResponse::fromJson(const QByteArray& json) {
    const auto object = objectFrom(json);
    if (!object || !object->value(QLatin1String("ok")).isBool())
        return std::nullopt;
    return FeedbackResponse{object->value(QLatin1String("ok")).toBool()};
}

std::optional<ErrorResponse> ErrorResponse::fromJson(const QByteArray& json) {
    const auto object = objectFrom(json);
    if (!object)
        return std::nullopt;
    ErrorResponse response;
    for (const auto& [key, target] :
         {std::pair("code", &response.code), std::pair("error", &response.error)}) {
        const QJsonValue value = object->value(QLatin1String(key));
        if (value.isUndefined() || value.isNull())
            continue;
        if (!value.isString())
            return std::nullopt;
        *target = value.toString();
    }
    return response;
}

TextPair FeedbackSubmissionError::description() const {
    if (kind == Kind::unavailable)
        return text("Couldn’t send feedback. Check your internet connection and try again.",
                    "Envoi impossible. Vérifiez votre connexion puis réessayez.");
    if (kind == Kind::invalidResponse)
        return text("The feedback service returned an invalid response. Please try again.",
                    "Le service de retours a renvoyé une réponse invalide.");
    if (code == QLatin1String("rate_limited"))
        return text("A few messages were sent recently. Please try again later.",
                    "Plusieurs messages ont été envoyés récemment. Réessayez un peu plus tard.");
    if (code == QLatin1String("invalid_feedback") || code == QLatin1String("invalid_email"))
        return text("Check your message and email address, then try again.",
                    "Vérifiez votre message et votre adresse e-mail, puis réessayez.");
    if (code == QLatin1String("not_found"))
        return text("The feedback service isn’t available yet. Please try again later.",
                    "Le service de retours n’est pas encore activé. Réessayez plus tard.");
    if (message && !message->trimmed().isEmpty())
        return {*message, *message};
    return text("Couldn’t send feedback. Please try again.", "L’envoi du retour a échoué. Réessayez.");
}

bool FeedbackAPIClient::isConfigured(const InformationDictionary& information) {
    return configuredUrl(information).has_value();
}

FeedbackAPIClient::FeedbackAPIClient(const InformationDictionary& information, HttpSession& session)
    : feedbackBaseURL_(configuredUrl(information).value_or(QUrl(QLatin1String(defaultBaseUrl))))
    , appVersion_(information.string(InformationDictionary::shortVersionKey))
    , session_(session) {
    if (feedbackBaseURL_.scheme() == QLatin1String("http") && !isLoopback(feedbackBaseURL_.host()))
        qCWarning(logger, "Messages go to %s without encryption", qUtf8Printable(feedbackBaseURL_.host()));
}

std::unique_ptr<HttpExchange> FeedbackAPIClient::submitFeedback(const QString& category,
                                                                const QString& message,
                                                                const std::optional<QString>& replyEmail,
                                                                Completion completion) {
    const FeedbackRequest request{category, message, replyEmail, appVersion_};
    const JsonPost post{.url = appendingPath(feedbackBaseURL_, QStringLiteral("v1/feedback")),
                        .userAgent = "Kestrant",
                        .body = request.toJson(),
                        .idleTimeout = timeout,
                        .totalTimeout = longestExchange,
                        .redirects = JsonPost::Redirects::followed};
    return session_.post(
        post, [completion = std::move(completion)](const auto& result) { completion(outcome(result)); });
}

}  // namespace kestrant
