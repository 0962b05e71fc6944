#include "eventkit/model/EKErrors.h"
#include "reminders/store/RecordedChange.h"

#include <QPointer>

#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

constexpr Duration completionDelay = 750ms;
constexpr Duration reconciliationDelay = 150ms;

}  // namespace

void ReminderStore::setPendingCompletion(const QString& id, bool pending) {
    if (pendingCompletionIDs_.contains(id) == pending)
        return;
    if (pending)
        pendingCompletionIDs_.insert(id);
    else
        pendingCompletionIDs_.remove(id);
    Q_EMIT pendingCompletionIDsChanged();
}

void ReminderStore::toggleCompletion(const QString& id) {
    if (committing_.contains(id))
        return;
    if (pendingCompletionIDs_.contains(id)) {
        if (const auto recorded = recordedCompletions_.extract(id))
            withdraw(recorded.mapped());
        cancelCompletion(id);
        return;
    }
    recordedCompletions_[id] = recordCompletion(id);
    completionTasks_[id] =
        services_.scheduler.after(completionDelay, [this, id] { commitCompletion(id, nullptr); });
    setPendingCompletion(id, true);
}

void ReminderStore::cancelCompletion(const QString& id) {
    completionTasks_.erase(id);
    setPendingCompletion(id, false);
}

void ReminderStore::completeNow(const QString& id, Completion completion) {
    if (!pendingCompletionIDs_.contains(id))
        recordedCompletions_[id] = recordCompletion(id);
    setPendingCompletion(id, true);
    commitCompletion(id, std::move(completion));
}

void ReminderStore::commitPendingCompletions(std::function<void()> done) {
    QStringList ids;
    for (const auto& [id, task] : completionTasks_)
        ids.append(id);
    for (const QString& id : ids)
        commitCompletion(id, nullptr);
    // Before anything was shown nothing can have been changed, and the first reading may take long.
    if (!hasLoaded_)
        return services_.scheduler.post(std::move(done));
    whenIdle(std::move(done));
}

void ReminderStore::commitCompletion(const QString& id, Completion completion) {
    auto recorded = recordedCompletions_.extract(id);
    commitCompletion(id, std::move(completion), recorded ? recorded.mapped() : nullptr);
}

void ReminderStore::commitCompletion(const QString& id, Completion completion,
                                     const RecordedChangeRef& recorded) {
    completionTasks_.erase(id);
    if (const auto underWay = committing_.find(id); underWay != committing_.end()) {
        underWay->second.push_back(std::move(completion));
        return;
    }
    // An earlier failure is past when the next one is tried.
    if (accessState_.kind == ReminderAccessState::Kind::failed)
        refreshAccessState();
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (!reminder || !reminder->refresh() || reminder->data.isCompleted) {
        endRecording(recorded, tl::unexpected(itemNotFoundError()));
        setPendingCompletion(id, false);
        reloadTasks();
        if (reminder && reminder->data.isCompleted)
            answer(completion, {});
        else
            answer(completion,
                   tl::unexpected(ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}}));
        return;
    }
    reminder->reset();
    reminder->data.isCompleted = true;
    committing_[id].push_back(std::move(completion));
    recorded->isUnderWay = true;
    beginActivity();
    services_.eventStore.save(reminder, [self = QPointer(this), id, reminder,
                                         recorded](const tl::expected<EKSaveResult, EKError>& result) {
        if (self)
            self->completionSaved(id, reminder, recorded, result);
    });
}

void ReminderStore::completionSaved(const QString& id, const EKReminderRef& reminder,
                                    const RecordedChangeRef& recorded,
                                    const tl::expected<EKSaveResult, EKError>& result) {
    const auto waiting = std::exchange(committing_[id], {});
    tl::expected<void, ReminderStoreError> outcome;
    if (!result)
        outcome = tl::unexpected(ReminderStoreError::from(result.error()));
    // The card stays as it is until it is known what became of it.
    if (!result && result.error().code == EKError::Code::outcomeUnknown) {
        services_.eventStore.awaitOutcome(id, [self = QPointer(this), id, reminder,
                                               recorded](const tl::expected<EKSaveResult, EKError>& known) {
            if (!self)
                return;
            self->beginActivity();
            self->completionSaved(id, reminder, recorded, known);
        });
        for (const Completion& completion : waiting)
            answer(completion, outcome);
        return endActivity();
    }
    committing_.erase(id);
    if (result) {
        completionCommitted(*reminder, *result);
    } else {
        reloadTasks();
        setPendingCompletion(id, false);
        setAccessState(ReminderAccessState::failed(result.error().message));
    }
    endRecording(recorded, result);
    for (const Completion& completion : waiting)
        answer(completion, outcome);
    endActivity();
}

void ReminderStore::completionCommitted(const EKReminder& reminder, const EKSaveResult& result) {
    const QString& id = result.calendarItemIdentifier;
    std::vector<ReminderTask> remaining = *fetchedTasks_;
    std::erase_if(remaining, [&](const ReminderTask& task) { return task.id == id; });
    setFetchedTasks(std::move(remaining));
    setPendingCompletion(id, false);
    // A fetch that began before the reminder was written may still find it open.
    if (isLoading_)
        reloadTasks();
    if (!result.completedCopyIdentifier)
        reconciler_.note(id, ReminderCompletionState::completed(reminder.data.completionDate));
    else if (const auto copy = services_.eventStore.calendarItem(*result.completedCopyIdentifier))
        reconciler_.note(*result.completedCopyIdentifier,
                         ReminderCompletionState::completed(copy->data.completionDate));
    reconciler_.schedule(reconciliationDelay);
    if (services_.completionsCommitted)
        services_.scheduler.post([report = services_.completionsCommitted] { report(1); });
}

}  // namespace kestrant
