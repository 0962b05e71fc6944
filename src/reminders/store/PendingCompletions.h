#pragma once

#include "eventkit/model/EKEventStore.h"
#include "foundation/Scheduler.h"
#include "reminders/store/RecordedChanges.h"
#include "reminders/store/ReminderStoreServices.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <tl/expected.hpp>

#include <map>
#include <memory>
#include <vector>

namespace kestrant {

class CompletionReconciler;
class EKReminder;
class ReminderLoader;
class ReminderWork;
class ShownReminders;

/// Completions from the click on. They are pending for 0.75 seconds, in which they can be taken back and the
/// database is not touched; then they are written. A completed reminder is no longer shown; one whose
/// completion failed is open again, and the access state says why. Thread: main.
class PendingCompletions : public QObject {
    Q_OBJECT

  public:
    /// Everything given here outlives this object.
    PendingCompletions(const ReminderStoreServices& services, ReminderLoader& loader, ShownReminders& shown,
                       RecordedChanges& recorder, CompletionReconciler& reconciler, ReminderWork& work);

    /// Completions asked for and not yet written.
    [[nodiscard]] const QSet<QString>& ids() const { return ids_; }
    /// Asks for a completion, or takes it back. Does nothing while it is being written.
    void toggle(const QString& id);
    /// Completes without the wait.
    void completeNow(const QString& id, ReminderCompletion completion);
    /// Begins to write everything that is pending.
    void commitAll();

  Q_SIGNALS:
    void idsChanged();

  private:
    using Result = tl::expected<EKSaveResult, EKError>;

    void setPending(const QString& id, bool pending);
    void cancel(const QString& id);
    [[nodiscard]] RecordedChangeRef record(const QString& id);
    void commit(const QString& id, ReminderCompletion completion);
    void commit(const QString& id, ReminderCompletion completion, const RecordedChangeRef& recorded);
    void saved(const QString& id, const std::shared_ptr<EKReminder>& reminder,
               const RecordedChangeRef& recorded, const Result& result);
    void committed(const EKReminder& reminder, const EKSaveResult& result);

    const ReminderStoreServices& services_;
    ReminderLoader& loader_;
    ShownReminders& shown_;
    RecordedChanges& recorder_;
    CompletionReconciler& reconciler_;
    ReminderWork& work_;

    QSet<QString> ids_;
    std::map<QString, ScheduledTask> delays_;
    /// Those being written, with everybody who waits for them.
    std::map<QString, std::vector<ReminderCompletion>> committing_;
    /// The history's entries of pending completions.
    std::map<QString, RecordedChangeRef> recorded_;
};

}  // namespace kestrant
