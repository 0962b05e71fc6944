#pragma once

#include "foundation/Text.h"
#include "services/FeedbackAPIClient.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace kestrant {

/// Characters as a person counts them: what looks like one is one, whatever it is made of.
[[nodiscard]] qint64 characterCount(const QString& text);

/// The form from which a person writes to the makers: what has been entered, whether it can be sent, what
/// became of it. One form is one opening; nothing of it is kept. Destroying it ends a submission under way.
/// Thread: main.
class FeedbackForm : public QObject {
    Q_OBJECT

  public:
    static constexpr qint64 messageLimit = 4000;
    static constexpr qint64 emailLimit = 254;

    /// Every fixed text of the form.
    struct Texts {
        TextPair title, subtitle;
        TextPair categoryLabel;
        TextPair messageSection, messagePlaceholder;
        TextPair emailSection, emailPlaceholder, invalidEmail;
        TextPair privacy;
        TextPair cancel, send;
        TextPair sent, thanks, done;
    };
    [[nodiscard]] static const Texts& texts();
    /// The tooltip of the entry that opens the form, also for screen readers.
    [[nodiscard]] static TextPair entryHelp();

    /// `client` must outlive the form.
    explicit FeedbackForm(FeedbackAPIClient& client, QObject* parent = nullptr);

    [[nodiscard]] FeedbackCategory category() const { return category_; }
    [[nodiscard]] const QString& message() const { return message_; }
    [[nodiscard]] const QString& replyEmail() const { return replyEmail_; }
    void setCategory(FeedbackCategory category);
    /// Takes a longer message than can be sent.
    void setMessage(const QString& message);
    void setReplyEmail(const QString& address);

    /// "12/4000"
    [[nodiscard]] QString messageCounter() const;
    [[nodiscard]] bool isMessageTooLong() const { return messageLength_ > messageLimit; }
    /// The problem with the address, to be shown under its field; absent while it is empty or right.
    [[nodiscard]] std::optional<TextPair> emailProblem() const;
    [[nodiscard]] bool canSend() const;

    [[nodiscard]] bool isSending() const { return exchange_ != nullptr; }
    /// The message has been accepted: only the thanks are left to show.
    [[nodiscard]] bool didSend() const { return didSend_; }
    /// Why the last submission failed; what was entered is still there. To be shown as plain text.
    [[nodiscard]] const std::optional<TextPair>& errorMessage() const { return errorMessage_; }

    /// Does nothing while canSend() is false.
    void send();

  Q_SIGNALS:
    /// Emitted when any of the above has changed.
    void changed();

  private:
    void finish(const tl::expected<void, FeedbackSubmissionError>& result);

    FeedbackAPIClient& client_;
    FeedbackCategory category_ = FeedbackCategory::suggestion;
    QString message_;
    qint64 messageLength_ = 0;
    QString replyEmail_;
    bool didSend_ = false;
    std::optional<TextPair> errorMessage_;
    std::unique_ptr<HttpExchange> exchange_;
};

}  // namespace kestrant
