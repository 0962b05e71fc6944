#include "metrics/AggregateCompletionReporter.h"

#include "metrics/ReporterActor.h"

#include <QRandomGenerator>

#include <utility>

namespace kestrant {

AggregateCompletionReporter::Randomness AggregateCompletionReporter::Randomness::system() {
    return {[] { return QRandomGenerator::system()->generateDouble(); }, [] { return QUuid::createUuid(); }};
}

AggregateCompletionReporter::AggregateCompletionReporter(Services services)
    : context_(services.context)
    , actor_(std::make_shared<metrics::ReporterActor>(std::move(services))) {}

AggregateCompletionReporter::~AggregateCompletionReporter() {
    // The store and the session belong to the context, so they end there.
    context_.post([actor = std::move(actor_)]() mutable {
        actor->finish();
        actor.reset();
    });
}

void AggregateCompletionReporter::recordCompletions(qint64 count) {
    const auto ticket = actor_->preferences.ticket();
    if (count <= 0 || !ticket)
        return;
    context_.post([actor = actor_, count, ticket = *ticket] { actor->record(count, ticket); });
}

void AggregateCompletionReporter::runDueCheck(std::function<void()> finished) {
    context_.post([actor = actor_, finished = std::move(finished)] { actor->check(finished); });
}

void AggregateCompletionReporter::setEnabled(bool enabled) {
    actor_->preferences.setEnabled(enabled);
    runDueCheck();
}

metrics::Configuration AggregateCompletionReporter::configuration() const {
    return actor_->preferences.configuration();
}

TextPair AggregateCompletionReporter::helpText() {
    return text(
        "Only a total count is sent in batches, without reminder contents or an installation identifier. "
        "Turning this off deletes unsent counts.",
        "Seul un nombre total est envoyé par lots, sans le contenu des rappels ni identifiant "
        "d’installation. "
        "La désactivation supprime les décomptes non envoyés.");
}

bool AggregateCompletionReporter::isUploading() const {
    return actor_->preferences.isUploading();
}

std::optional<LocalDiagnostic> AggregateCompletionReporter::latestDiagnostic() const {
    return actor_->latestDiagnostic();
}

}  // namespace kestrant
