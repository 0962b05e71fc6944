#pragma once

#include "completion/CompletionLedgerRepository.h"
#include "eventkit/model/EKEventStore.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "foundation/Text.h"

#include <QObject>

#include <optional>
#include <vector>

namespace kestrant {

/// Tells the completion ledger what the database and this program know about completed reminders, and holds
/// what the ledger answers. Thread: main.
class CompletionReconciler : public QObject {
    Q_OBJECT

  public:
    /// Everything given here outlives the reconciler.
    CompletionReconciler(EKEventStore& eventStore, Scheduler& scheduler, const Clock& clock,
                         const CurrentTimeZone& currentZone, CompletionLedgerRepository& ledger);

    /// The ledger's records, oldest first.
    [[nodiscard]] const std::vector<CompletionRecord>& records() const { return records_; }
    /// Set while the ledger cannot be written.
    [[nodiscard]] const std::optional<TextPair>& error() const { return error_; }

    /// Remembers, for the next reconciliation, what this program did to a reminder. One that is under way is
    /// void: schedule another.
    void note(const QString& reminderID, ReminderCompletionState state);

    /// Reconciles 0.15 s after the last call: the reminders completed in the present calendar year are
    /// fetched and handed to the ledger.
    void schedule();
    /// Starts a waiting reconciliation at once. False when none is under way, its writing included.
    bool bringForward();

  Q_SIGNALS:
    void recordsChanged();
    void errorChanged();
    /// Emitted when nothing is waiting or under way any more.
    void ended();

  private:
    void start();
    void apply(const EKReminders& completed);
    void takeRecords();
    void writeEnded(bool succeeded);
    [[nodiscard]] bool isBusy() const;

    EKEventStore& eventStore_;
    Scheduler& scheduler_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    CompletionLedgerRepository& ledger_;

    std::map<QString, ReminderCompletionState> states_;
    std::vector<CompletionRecord> records_;
    std::optional<TextPair> error_;
    ScheduledTask task_;
    int generation_ = 0;
    int underWay_ = 0;
    Subscription writeObserver_;
};

}  // namespace kestrant
