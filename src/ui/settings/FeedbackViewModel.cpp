#include "ui/settings/FeedbackViewModel.h"

#include "ui/panel/Localizer.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

#include <utility>

namespace kestrant {
namespace {

qint64 characterCount(const QString& text) {
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, text);
    qint64 count = 0;
    while (boundaries.toNextBoundary() != -1)
        ++count;
    return count;
}

bool isValidAddress(const QString& address) {
    static const QRegularExpression shape(QStringLiteral("^[^\\s@]+@[^\\s@]+\\.[^\\s@]+$"),
                                          QRegularExpression::UseUnicodePropertiesOption);
    return address.isEmpty() ||
           (characterCount(address) <= FeedbackViewModel::emailLimit && shape.match(address).hasMatch());
}

}  // namespace

FeedbackViewModel::FeedbackViewModel(std::function<FeedbackAPIClient&()> client, Localizer& localizer,
                                     QObject* parent)
    : QObject(parent)
    , client_(std::move(client))
    , localizer_(localizer) {
    connect(&localizer, &Localizer::languageChanged, this, [this] {
        Q_EMIT textsChanged();
        Q_EMIT changed();
    });
}

void FeedbackViewModel::clear() {
    exchange_.reset();
    entry_ = {};
    Q_EMIT changed();
}

QVariantList FeedbackViewModel::categories() const {
    QVariantList result;
    for (const auto& [category, raw, english, french] : choicesOf<FeedbackCategory>)
        result.append(QVariantMap{{QStringLiteral("rawValue"), QString::fromUtf8(raw)},
                                  {QStringLiteral("title"), localizer_(title(category))}});
    return result;
}

QVariantMap FeedbackViewModel::texts() const {
    struct FixedText {
        const char* name;
        TextPair pair;
    };
    const FixedText fixed[] = {
        {"title", text("Send feedback", "Envoyer un retour")},
        {"subtitle", text("Your message goes straight to the Kestrant team.",
                          "Votre message est transmis directement à l’équipe Kestrant.")},
        {"categoryLabel", text("Feedback type", "Type de retour")},
        {"messageSection", text("YOUR MESSAGE", "VOTRE MESSAGE")},
        {"messagePlaceholder", text("What would you like us to know?", "Que souhaitez-vous nous dire ?")},
        {"emailSection", text("EMAIL FOR A REPLY (OPTIONAL)", "E-MAIL POUR UNE RÉPONSE (FACULTATIF)")},
        {"emailPlaceholder", text("you@example.com", "vous@example.com")},
        {"privacy",
         text("The app version is included automatically. No reminders, calendar events, or diagnostics are "
              "attached.",
              "La version de l’app est ajoutée automatiquement. Aucun rappel, événement ni diagnostic n’est "
              "joint.")},
        {"cancel", text("Cancel", "Annuler")},
        {"send", text("Send", "Envoyer")},
        {"sent", text("Your feedback has been sent.", "Votre retour a bien été envoyé.")},
        {"thanks", text("Thanks for helping improve Kestrant.", "Merci de contribuer à améliorer Kestrant.")},
        {"done", text("Done", "Terminer")},
    };
    QVariantMap result;
    for (const FixedText& each : fixed)
        result.insert(QLatin1String(each.name), localizer_(each.pair));
    return result;
}

QString FeedbackViewModel::entryHelp() const {
    return localizer_(text("Send feedback from Kestrant", "Envoyer un retour depuis Kestrant"));
}

void FeedbackViewModel::setCategory(const QString& rawValue) {
    if (const auto category = fromRawValue<FeedbackCategory>(rawValue))
        entry_.category = *category;
    Q_EMIT changed();
}

void FeedbackViewModel::setMessage(const QString& message) {
    if (entry_.message == message)
        return;
    entry_.message = message;
    entry_.messageLength = characterCount(message);
    Q_EMIT changed();
}

void FeedbackViewModel::setReplyEmail(const QString& address) {
    entry_.replyEmail = address;
    Q_EMIT changed();
}

QString FeedbackViewModel::messageCounter() const {
    return QStringLiteral("%1/%2").arg(entry_.messageLength).arg(messageLimit);
}

QString FeedbackViewModel::emailProblem() const {
    if (isValidAddress(entry_.replyEmail.trimmed()))
        return {};
    return localizer_(text("Enter a valid email address.", "Saisissez une adresse e-mail valide."));
}

bool FeedbackViewModel::canSend() const {
    return isAvailable() && !isSending() && !didSend() && !isMessageTooLong() &&
           !entry_.message.trimmed().isEmpty() && isValidAddress(entry_.replyEmail.trimmed());
}

QString FeedbackViewModel::errorText() const {
    return entry_.error ? localizer_(*entry_.error) : QString();
}

void FeedbackViewModel::send() {
    if (!canSend())
        return;
    entry_.error.reset();
    const QString address = entry_.replyEmail.trimmed();
    exchange_ = client_().submitFeedback(category(), entry_.message.trimmed(),
                                         address.isEmpty() ? std::nullopt : std::optional(address),
                                         [this](const auto& result) { finish(result); });
    Q_EMIT changed();
}

void FeedbackViewModel::finish(const tl::expected<void, FeedbackSubmissionError>& result) {
    exchange_.reset();
    if (result)
        entry_.isSent = true;
    else
        entry_.error = result.error().description();
    Q_EMIT changed();
}

}  // namespace kestrant
