#include "services/FeedbackForm.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

namespace kestrant {

namespace {

bool isValidAddress(const QString& address) {
    static const QRegularExpression shape(QStringLiteral("^[^\\s@]+@[^\\s@]+\\.[^\\s@]+$"),
                                          QRegularExpression::UseUnicodePropertiesOption);
    return address.isEmpty() ||
           (characterCount(address) <= FeedbackForm::emailLimit && shape.match(address).hasMatch());
}

}  // namespace

qint64 characterCount(const QString& text) {
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, text);
    qint64 count = 0;
    while (boundaries.toNextBoundary() != -1)
        ++count;
    return count;
}

const FeedbackForm::Texts& FeedbackForm::texts() {
    static const Texts texts{
        .title = text("Send feedback", "Envoyer un retour"),
        .subtitle = text("Your message goes straight to the Kestrant team.",
                         "Votre message est transmis directement à l’équipe Kestrant."),
        .categoryLabel = text("Feedback type", "Type de retour"),
        .messageSection = text("YOUR MESSAGE", "VOTRE MESSAGE"),
        .messagePlaceholder = text("What would you like us to know?", "Que souhaitez-vous nous dire ?"),
        .emailSection = text("EMAIL FOR A REPLY (OPTIONAL)", "E-MAIL POUR UNE RÉPONSE (FACULTATIF)"),
        .emailPlaceholder = text("you@example.com", "vous@example.com"),
        .invalidEmail = text("Enter a valid email address.", "Saisissez une adresse e-mail valide."),
        .privacy = text(
            "The app version is included automatically. No reminders, calendar events, or diagnostics are "
            "attached.",
            "La version de l’app est ajoutée automatiquement. Aucun rappel, événement ni diagnostic n’est "
            "joint."),
        .cancel = text("Cancel", "Annuler"),
        .send = text("Send", "Envoyer"),
        .sent = text("Your feedback has been sent.", "Votre retour a bien été envoyé."),
        .thanks = text("Thanks for helping improve Kestrant.", "Merci de contribuer à améliorer Kestrant."),
        .done = text("Done", "Terminer"),
    };
    return texts;
}

TextPair FeedbackForm::entryHelp() {
    return text("Send feedback from Kestrant", "Envoyer un retour depuis Kestrant");
}

FeedbackForm::FeedbackForm(FeedbackAPIClient& client, QObject* parent) : QObject(parent), client_(client) {}

void FeedbackForm::setCategory(FeedbackCategory category) {
    if (category_ == category)
        return;
    category_ = category;
    Q_EMIT changed();
}

void FeedbackForm::setMessage(const QString& message) {
    if (message_ == message)
        return;
    message_ = message;
    messageLength_ = characterCount(message);
    Q_EMIT changed();
}

void FeedbackForm::setReplyEmail(const QString& address) {
    if (replyEmail_ == address)
        return;
    replyEmail_ = address;
    Q_EMIT changed();
}

QString FeedbackForm::messageCounter() const {
    return QStringLiteral("%1/%2").arg(messageLength_).arg(messageLimit);
}

std::optional<TextPair> FeedbackForm::emailProblem() const {
    if (isValidAddress(replyEmail_.trimmed()))
        return std::nullopt;
    return texts().invalidEmail;
}

bool FeedbackForm::canSend() const {
    return !isSending() && !didSend_ && !isMessageTooLong() && !message_.trimmed().isEmpty() &&
           !emailProblem();
}

void FeedbackForm::send() {
    if (!canSend())
        return;
    errorMessage_.reset();
    const QString address = replyEmail_.trimmed();
    exchange_ = client_.submitFeedback(wireValue(category_), message_.trimmed(),
                                       address.isEmpty() ? std::nullopt : std::optional(address),
                                       [this](const auto& result) { finish(result); });
    Q_EMIT changed();
}

void FeedbackForm::finish(const tl::expected<void, FeedbackSubmissionError>& result) {
    exchange_.reset();
    if (result)
        didSend_ = true;
    else
        errorMessage_ = result.error().description();
    Q_EMIT changed();
}

}  // namespace kestrant
