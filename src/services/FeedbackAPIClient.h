#pragma once

#include "foundation/Choice.h"
#include "foundation/InformationDictionary.h"
#include "foundation/Text.h"
#include "network/HttpSession.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <tl/expected.hpp>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace kestrant {

/// The subject of a message.
enum class FeedbackCategory { suggestion, problem, question, other };
/// With the names by which the service knows them.
template <>
inline constexpr auto choicesOf<FeedbackCategory> = std::to_array<Choice<FeedbackCategory>>({
    {FeedbackCategory::suggestion, "suggestion", "Suggestion", "Suggestion"},
    {FeedbackCategory::problem, "problem", "Problem", "Problème"},
    {FeedbackCategory::question, "question", "Question", "Question"},
    {FeedbackCategory::other, "other", "Other", "Autre"},
});

/// The message as sent; nothing else is sent.
struct FeedbackRequest {
    QString category;
    QString message;
    std::optional<QString> replyEmail;
    std::optional<QString> appVersion;

    /// Absent values have no key.
    [[nodiscard]] QByteArray toJson() const;
};

/// The body of a success. Absent when the text is none.
struct FeedbackResponse {
    bool ok = false;
    [[nodiscard]] static std::optional<FeedbackResponse> fromJson(const QByteArray& json);
};

/// The body of a refusal. Absent when the text is none; both values may be missing in one.
struct ErrorResponse {
    std::optional<QString> code;
    std::optional<QString> error;
    [[nodiscard]] static std::optional<ErrorResponse> fromJson(const QByteArray& json);
};

/// Why a message was not accepted.
struct FeedbackSubmissionError {
    enum class Kind {
        /// The service answered that it does not take it.
        server,
        /// The service was not reached.
        unavailable,
        /// The service answered something else than it should.
        invalidResponse,
    };
    Kind kind = Kind::unavailable;
    /// Of a `server` error, as received, where the service gave them.
    std::optional<QString> code;
    std::optional<QString> message;

    /// The sentence for the person. May be the service's own words: to be shown as plain text.
    [[nodiscard]] TextPair description() const;
    bool operator==(const FeedbackSubmissionError&) const = default;
};

/// Hands messages to the feedback service. Thread: that of its session.
class FeedbackAPIClient {
  public:
    using Completion = std::function<void(tl::expected<void, FeedbackSubmissionError>)>;

    /// Where messages go when the configuration names no address; a placeholder, which takes none.
    static constexpr auto defaultBaseUrl = "https://feedback.kestrant.example/";

    /// Whether the configuration names an address, and there is a service to write to.
    [[nodiscard]] static bool isConfigured(const InformationDictionary& information);

    /// An address that is configured is used as it is. Where it is http to another machine, which lets others
    /// read what is sent, the log says so. `session` must outlive the client.
    FeedbackAPIClient(const InformationDictionary& information, HttpSession& session);

    /// Sends one message. The completion is called once, on a later turn, unless the exchange is destroyed
    /// before.
    [[nodiscard]] std::unique_ptr<HttpExchange> submitFeedback(const QString& category,
                                                               const QString& message,
                                                               const std::optional<QString>& replyEmail,
                                                               Completion completion);

    [[nodiscard]] const QUrl& feedbackBaseURL() const { return feedbackBaseURL_; }

  private:
    QUrl feedbackBaseURL_;
    std::optional<QString> appVersion_;
    HttpSession& session_;
};

}  // namespace kestrant
