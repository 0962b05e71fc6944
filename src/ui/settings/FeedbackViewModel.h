#pragma once

#include "foundation/Text.h"
#include "services/FeedbackAPIClient.h"

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

namespace kestrant {

class Localizer;

/// The form from which a person writes to the makers: what has been entered, whether it can be sent, what
/// became of it. Nothing is kept from one opening to the next. Thread: main.
class FeedbackViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    /// {rawValue, title} each.
    Q_PROPERTY(QVariantList categories READ categories NOTIFY textsChanged)
    /// Every fixed text of the form, by its name.
    Q_PROPERTY(QVariantMap texts READ texts NOTIFY textsChanged)
    /// The tooltip of the entry that opens the form, also for screen readers.
    Q_PROPERTY(QString entryHelp READ entryHelp NOTIFY textsChanged)

    /// Whether there is a service to write to; without one there is no entry.
    Q_PROPERTY(bool isAvailable READ isAvailable CONSTANT)

    Q_PROPERTY(QString category READ category WRITE setCategory NOTIFY changed)
    /// May be longer than what can be sent.
    Q_PROPERTY(QString message READ message WRITE setMessage NOTIFY changed)
    Q_PROPERTY(QString replyEmail READ replyEmail WRITE setReplyEmail NOTIFY changed)
    /// "12/4000", in characters as a person counts them: what looks like one is one, whatever it is made of.
    Q_PROPERTY(QString messageCounter READ messageCounter NOTIFY changed)
    Q_PROPERTY(bool isMessageTooLong READ isMessageTooLong NOTIFY changed)
    /// Empty while the address is right or there is none.
    Q_PROPERTY(QString emailProblem READ emailProblem NOTIFY changed)
    Q_PROPERTY(bool canSend READ canSend NOTIFY changed)
    Q_PROPERTY(bool isSending READ isSending NOTIFY changed)
    /// The message has been accepted: only the thanks are left to show.
    Q_PROPERTY(bool didSend READ didSend NOTIFY changed)
    /// Why sending failed; may be the service's own words, to be shown as plain text. Empty for none.
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)

  public:
    static constexpr qint64 messageLimit = 4000;
    static constexpr qint64 emailLimit = 254;

    /// `client` gives the way to the service, asked when something is sent; an empty one: there is none.
    /// Everything must outlive the view model.
    FeedbackViewModel(std::function<FeedbackAPIClient&()> client, Localizer& localizer,
                      QObject* parent = nullptr);

    /// Forgets what was entered, when the form opens and when it closes; a submission under way ends.
    Q_INVOKABLE void clear();
    /// Does nothing while canSend() is false.
    Q_INVOKABLE void send();

    [[nodiscard]] bool isAvailable() const { return client_ != nullptr; }
    [[nodiscard]] QVariantList categories() const;
    [[nodiscard]] QVariantMap texts() const;
    [[nodiscard]] QString entryHelp() const;
    [[nodiscard]] QString category() const { return rawValue(entry_.category); }
    void setCategory(const QString& rawValue);
    [[nodiscard]] const QString& message() const { return entry_.message; }
    void setMessage(const QString& message);
    [[nodiscard]] const QString& replyEmail() const { return entry_.replyEmail; }
    void setReplyEmail(const QString& address);
    [[nodiscard]] QString messageCounter() const;
    [[nodiscard]] bool isMessageTooLong() const { return entry_.messageLength > messageLimit; }
    [[nodiscard]] QString emailProblem() const;
    [[nodiscard]] bool canSend() const;
    [[nodiscard]] bool isSending() const { return exchange_ != nullptr; }
    [[nodiscard]] bool didSend() const { return entry_.isSent; }
    [[nodiscard]] QString errorText() const;

  Q_SIGNALS:
    void changed();
    void textsChanged();

  private:
    /// What is entered in one opening, and what became of it.
    struct Entry {
        FeedbackCategory category = FeedbackCategory::suggestion;
        QString message;
        qint64 messageLength = 0;
        QString replyEmail;
        bool isSent = false;
        std::optional<TextPair> error;
    };

    void finish(const tl::expected<void, FeedbackSubmissionError>& result);

    std::function<FeedbackAPIClient&()> client_;
    Localizer& localizer_;
    Entry entry_;
    std::unique_ptr<HttpExchange> exchange_;
};

}  // namespace kestrant
