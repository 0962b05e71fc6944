#include "ui/settings/FeedbackViewModel.h"

#include "ui/panel/Localizer.h"

#include <QVariantMap>

#include <utility>

namespace kestrant {

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

void FeedbackViewModel::begin() {
    if (!isAvailable())
        return;
    connect(&form_.emplace(client_()), &FeedbackForm::changed, this, &FeedbackViewModel::changed);
    Q_EMIT changed();
}

void FeedbackViewModel::end() {
    form_.reset();
    Q_EMIT changed();
}

void FeedbackViewModel::send() {
    if (form_)
        form_->send();
}

QVariantList FeedbackViewModel::categories() const {
    QVariantList result;
    for (const FeedbackCategory category : feedbackCategories)
        result.append(QVariantMap{{QStringLiteral("rawValue"), wireValue(category)},
                                  {QStringLiteral("title"), localizer_(label(category))}});
    return result;
}

QVariantMap FeedbackViewModel::texts() const {
    const FeedbackForm::Texts& texts = FeedbackForm::texts();
    const auto in = [this](const TextPair& pair) { return localizer_(pair); };
    return {
        {QStringLiteral("title"), in(texts.title)},
        {QStringLiteral("subtitle"), in(texts.subtitle)},
        {QStringLiteral("categoryLabel"), in(texts.categoryLabel)},
        {QStringLiteral("messageSection"), in(texts.messageSection)},
        {QStringLiteral("messagePlaceholder"), in(texts.messagePlaceholder)},
        {QStringLiteral("emailSection"), in(texts.emailSection)},
        {QStringLiteral("emailPlaceholder"), in(texts.emailPlaceholder)},
        {QStringLiteral("privacy"), in(texts.privacy)},
        {QStringLiteral("cancel"), in(texts.cancel)},
        {QStringLiteral("send"), in(texts.send)},
        {QStringLiteral("sent"), in(texts.sent)},
        {QStringLiteral("thanks"), in(texts.thanks)},
        {QStringLiteral("done"), in(texts.done)},
    };
}

QString FeedbackViewModel::entryHelp() const {
    return localizer_(FeedbackForm::entryHelp());
}

QString FeedbackViewModel::category() const {
    return form_ ? wireValue(form_->category()) : QString();
}

void FeedbackViewModel::setCategory(const QString& rawValue) {
    if (!form_)
        return;
    for (const FeedbackCategory category : feedbackCategories)
        if (wireValue(category) == rawValue)
            form_->setCategory(category);
}

QString FeedbackViewModel::message() const {
    return form_ ? form_->message() : QString();
}

void FeedbackViewModel::setMessage(const QString& message) {
    if (form_)
        form_->setMessage(message);
}

QString FeedbackViewModel::replyEmail() const {
    return form_ ? form_->replyEmail() : QString();
}

void FeedbackViewModel::setReplyEmail(const QString& address) {
    if (form_)
        form_->setReplyEmail(address);
}

QString FeedbackViewModel::messageCounter() const {
    return form_ ? form_->messageCounter() : QString();
}

bool FeedbackViewModel::isMessageTooLong() const {
    return form_ && form_->isMessageTooLong();
}

QString FeedbackViewModel::emailProblem() const {
    const auto problem = form_ ? form_->emailProblem() : std::nullopt;
    return problem ? localizer_(*problem) : QString();
}

bool FeedbackViewModel::canSend() const {
    return form_ && form_->canSend();
}

bool FeedbackViewModel::isSending() const {
    return form_ && form_->isSending();
}

bool FeedbackViewModel::didSend() const {
    return form_ && form_->didSend();
}

QString FeedbackViewModel::errorText() const {
    return form_ && form_->errorMessage() ? localizer_(*form_->errorMessage()) : QString();
}

}  // namespace kestrant
