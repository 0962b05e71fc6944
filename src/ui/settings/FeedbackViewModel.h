#pragma once

#include "services/FeedbackForm.h"

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

#include <functional>
#include <optional>

namespace kestrant {

class Localizer;

/// The form from which a person writes to the makers, as the views show it. Thread: main.
class FeedbackViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    /// {rawValue, title} each.
    Q_PROPERTY(QVariantList categories READ categories NOTIFY textsChanged)
    /// Every fixed text of the form, by the names of FeedbackForm::Texts.
    Q_PROPERTY(QVariantMap texts READ texts NOTIFY textsChanged)
    /// The tooltip of the entry that opens the form, also for screen readers.
    Q_PROPERTY(QString entryHelp READ entryHelp NOTIFY textsChanged)

    /// Whether there is a service to write to; without one there is no entry.
    Q_PROPERTY(bool isAvailable READ isAvailable CONSTANT)

    Q_PROPERTY(QString category READ category WRITE setCategory NOTIFY changed)
    Q_PROPERTY(QString message READ message WRITE setMessage NOTIFY changed)
    Q_PROPERTY(QString replyEmail READ replyEmail WRITE setReplyEmail NOTIFY changed)
    /// "12/4000"
    Q_PROPERTY(QString messageCounter READ messageCounter NOTIFY changed)
    Q_PROPERTY(bool isMessageTooLong READ isMessageTooLong NOTIFY changed)
    /// Empty while the address is right or there is none.
    Q_PROPERTY(QString emailProblem READ emailProblem NOTIFY changed)
    Q_PROPERTY(bool canSend READ canSend NOTIFY changed)
    Q_PROPERTY(bool isSending READ isSending NOTIFY changed)
    /// Only the thanks are left to show.
    Q_PROPERTY(bool didSend READ didSend NOTIFY changed)
    /// Why sending failed; may be the service's own words, to be shown as plain text. Empty for none.
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)

  public:
    /// `client` gives the way to the service, asked when the form is opened; an empty one: there is none.
    /// Everything must outlive the view model.
    FeedbackViewModel(std::function<FeedbackAPIClient&()> client, Localizer& localizer,
                      QObject* parent = nullptr);

    /// Opens an empty form.
    Q_INVOKABLE void begin();
    /// Closes it; nothing of it is kept, and a submission under way ends.
    Q_INVOKABLE void end();
    Q_INVOKABLE void send();

    [[nodiscard]] bool isAvailable() const { return client_ != nullptr; }
    [[nodiscard]] QVariantList categories() const;
    [[nodiscard]] QVariantMap texts() const;
    [[nodiscard]] QString entryHelp() const;
    [[nodiscard]] QString category() const;
    void setCategory(const QString& rawValue);
    [[nodiscard]] QString message() const;
    void setMessage(const QString& message);
    [[nodiscard]] QString replyEmail() const;
    void setReplyEmail(const QString& address);
    [[nodiscard]] QString messageCounter() const;
    [[nodiscard]] bool isMessageTooLong() const;
    [[nodiscard]] QString emailProblem() const;
    [[nodiscard]] bool canSend() const;
    [[nodiscard]] bool isSending() const;
    [[nodiscard]] bool didSend() const;
    [[nodiscard]] QString errorText() const;

  Q_SIGNALS:
    void changed();
    void textsChanged();

  private:
    std::function<FeedbackAPIClient&()> client_;
    Localizer& localizer_;
    std::optional<FeedbackForm> form_;
};

}  // namespace kestrant
