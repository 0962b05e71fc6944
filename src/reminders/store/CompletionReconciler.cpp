#include "reminders/store/CompletionReconciler.h"

#include <QPointer>

#include <chrono>
#include <utility>

namespace kestrant {
namespace {

constexpr Duration reconciliationDelay = std::chrono::milliseconds(150);

}  // namespace

CompletionReconciler::CompletionReconciler(EKEventStore& eventStore, Scheduler& scheduler, const Clock& clock,
                                           const CurrentTimeZone& currentZone,
                                           CompletionLedgerRepository& ledger)
    : eventStore_(eventStore)
    , scheduler_(scheduler)
    , clock_(clock)
    , currentZone_(currentZone)
    , ledger_(ledger)
    , records_(ledger.sortedRecords())
    , writeObserver_(ledger.observeWrites([this](const auto& failure) { writeEnded(!failure); })) {}

void CompletionReconciler::note(const QString& reminderID, ReminderCompletionState state) {
    states_.insert_or_assign(reminderID, state);
    // A fetch under way may still return the state before this.
    ++generation_;
}

void CompletionReconciler::schedule() {
    task_ = scheduler_.after(reconciliationDelay, [this] { start(); });
}

bool CompletionReconciler::bringForward() {
    if (task_.isPending()) {
        task_.cancel();
        start();
    }
    return isBusy();
}

bool CompletionReconciler::isBusy() const {
    return task_.isPending() || underWay_ > 0 || ledger_.isWriting();
}

void CompletionReconciler::start() {
    const int generation = ++generation_;
    ++underWay_;
    const Instant startOfYear = currentZone_.zone().yearContaining(clock_.now()).start;
    eventStore_.fetchReminders(
        EKEventStore::predicateForCompletedReminders(startOfYear, std::nullopt, std::nullopt),
        [self = QPointer(this), generation](const EKReminders& completed) {
            if (!self)
                return;
            if (generation == self->generation_)
                self->apply(completed);
            --self->underWay_;
            if (!self->isBusy())
                Q_EMIT self->ended();
        });
}

void CompletionReconciler::apply(const EKReminders& completed) {
    std::vector<CompletionObservation> observations;
    observations.reserve(completed.size());
    for (const auto& reminder : completed)
        observations.push_back({reminder->calendarItemIdentifier, reminder->completionDate});
    // How the writes go is told to writeEnded(), whether they end here or later.
    if (ledger_.reconcile(std::exchange(states_, {}), observations, clock_.now()))
        (void)ledger_.finishBackfill();
    takeRecords();
}

void CompletionReconciler::takeRecords() {
    if (const auto& records = ledger_.sortedRecords(); records != records_) {
        records_ = records;
        Q_EMIT recordsChanged();
    }
}

void CompletionReconciler::writeEnded(bool succeeded) {
    // With it came what other processes have recorded.
    takeRecords();
    std::optional<TextPair> error;
    if (!succeeded)
        error = text("Completion history could not be saved.",
                     "L’historique des tâches terminées n’a pas pu être enregistré.");
    if (error != error_) {
        error_ = std::move(error);
        Q_EMIT errorChanged();
    }
    if (!isBusy())
        Q_EMIT ended();
}

}  // namespace kestrant
