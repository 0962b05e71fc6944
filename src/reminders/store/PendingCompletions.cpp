#include "reminders/store/PendingCompletions.h"

#include "eventkit/model/EKErrors.h"
#include "eventkit/model/EKEventStore.h"
#include "reminders/store/CompletionReconciler.h"
#include "reminders/store/ReminderLoader.h"
#include "reminders/store/ReminderWork.h"
#include "reminders/store/ShownReminders.h"

#include <QPointer>
#include <QStringList>

#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using Done = ReminderActionHistory::Done;

constexpr Duration completionDelay = std::chrono::milliseconds(750);

}  // namespace

PendingCompletions::PendingCompletions(const ReminderStoreServices& services, ReminderLoader& loader,
                                       ShownReminders& shown, RecordedChanges& recorder,
                                       CompletionReconciler& reconciler, ReminderWork& work)
    : services_(services)
    , loader_(loader)
    , shown_(shown)
    , recorder_(recorder)
    , reconciler_(reconciler)
    , work_(work) {}

void PendingCompletions::setPending(const QString& id, bool pending) {
    if (ids_.contains(id) == pending)
        return;
    if (pending)
        ids_.insert(id);
    else
        ids_.remove(id);
    Q_EMIT idsChanged();
}

void PendingCompletions::toggle(const QString& id) {
    if (committing_.contains(id))
        return;
    if (ids_.contains(id)) {
        if (const auto recorded = recorded_.extract(id))
            recorder_.withdraw(recorded.mapped());
        cancel(id);
        return;
    }
    recorded_[id] = record(id);
    delays_[id] = services_.scheduler.after(completionDelay, [this, id] { commit(id, nullptr); });
    setPending(id, true);
}

void PendingCompletions::cancel(const QString& id) {
    delays_.erase(id);
    setPending(id, false);
}

void PendingCompletions::completeNow(const QString& id, ReminderCompletion completion) {
    if (!ids_.contains(id))
        recorded_[id] = record(id);
    setPending(id, true);
    commit(id, std::move(completion));
}

void PendingCompletions::commitAll() {
    QStringList ids;
    for (const auto& [id, delay] : delays_)
        ids.append(id);
    for (const QString& id : ids)
        commit(id, nullptr);
}

RecordedChangeRef PendingCompletions::record(const QString& id) {
    const auto undo = [self = QPointer(this)](const RecordedChangeRef& recorded) {
        return [self, recorded](const Done& done) {
            if (!self)
                return done({});
            const QString& present = recorded->reminder->identifier;
            if (!self->delays_.contains(present))
                return self->recorder_.replay(recorded, done);
            // Nothing has been written yet.
            self->recorded_.erase(present);
            self->cancel(present);
            recorded->entry.reset();
            done({});
        };
    };
    const auto redo = [self = QPointer(this)](const RecordedChangeRef& recorded) {
        return [self, recorded](const Done& done) {
            if (!self)
                return done({});
            if (recorded->change)
                return self->recorder_.replay(recorded, done);
            self->setPending(recorded->reminder->identifier, true);
            self->commit(
                recorded->reminder->identifier,
                [recorded, done](const ReminderActionHistory::Result& result) {
                    if (recorded->unknown)
                        recorded->waiting.push_back({[recorded, done] {
                                                         done(recorded->change
                                                                  ? ReminderActionHistory::Result()
                                                                  : tl::unexpected(ReminderStoreError{}));
                                                     },
                                                     {}});
                    done(result);
                },
                recorded);
        };
    };
    return recorder_.beginPending(id, undo, redo);
}

void PendingCompletions::commit(const QString& id, ReminderCompletion completion) {
    auto recorded = recorded_.extract(id);
    commit(id, std::move(completion), recorded ? recorded.mapped() : nullptr);
}

void PendingCompletions::commit(const QString& id, ReminderCompletion completion,
                                const RecordedChangeRef& recorded) {
    delays_.erase(id);
    if (const auto underWay = committing_.find(id); underWay != committing_.end()) {
        underWay->second.push_back(std::move(completion));
        return;
    }
    // An earlier failure is past when the next one is tried.
    if (loader_.accessState().kind == ReminderAccessState::Kind::failed)
        loader_.refreshAccessState();
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (!reminder || !reminder->refresh() || reminder->data.isCompleted) {
        recorder_.end(recorded, tl::unexpected(itemNotFoundError()));
        setPending(id, false);
        loader_.reloadTasks();
        if (reminder && reminder->data.isCompleted)
            work_.answer(completion, {});
        else
            work_.answer(completion,
                         tl::unexpected(ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}}));
        return;
    }
    reminder->reset();
    reminder->data.isCompleted = true;
    committing_[id].push_back(std::move(completion));
    recorded->isUnderWay = true;
    work_.begin();
    services_.eventStore.save(reminder,
                              [self = QPointer(this), id, reminder, recorded](const Result& result) {
                                  if (self)
                                      self->saved(id, reminder, recorded, result);
                              });
}

void PendingCompletions::saved(const QString& id, const EKReminderRef& reminder,
                               const RecordedChangeRef& recorded, const Result& result) {
    const auto waiting = std::exchange(committing_[id], {});
    tl::expected<void, ReminderStoreError> outcome;
    if (!result)
        outcome = tl::unexpected(ReminderStoreError::from(result.error()));
    // The card stays as it is until it is known what became of it.
    const bool isUnknown = !result && result.error().code == EKError::Code::outcomeUnknown;
    if (isUnknown) {
        recorder_.leaveOpen(recorded, result.error());
        services_.eventStore.awaitOutcome(
            result.error(), [self = QPointer(this), id, reminder, recorded](const Result& known) {
                if (!self)
                    return;
                self->work_.begin();
                self->saved(id, reminder, recorded, known);
            });
    } else {
        committing_.erase(id);
        if (result) {
            committed(*reminder, *result);
        } else {
            loader_.reloadTasks();
            setPending(id, false);
            loader_.fail(result.error().message);
        }
        recorder_.end(recorded, result);
    }
    for (const ReminderCompletion& completion : waiting)
        work_.answer(completion, outcome);
    work_.end();
}

void PendingCompletions::committed(const EKReminder& reminder, const EKSaveResult& result) {
    const QString& id = result.calendarItemIdentifier;
    shown_.remove(id);
    setPending(id, false);
    // A fetch that began before the reminder was written may still find it open.
    if (loader_.isLoading())
        loader_.reloadTasks();
    if (!result.completedCopyIdentifier)
        reconciler_.note(id, ReminderCompletionState::completed(reminder.data.completionDate));
    else if (const auto copy = services_.eventStore.calendarItem(*result.completedCopyIdentifier))
        reconciler_.note(*result.completedCopyIdentifier,
                         ReminderCompletionState::completed(copy->data.completionDate));
    reconciler_.schedule();
    if (services_.completionsCommitted)
        services_.scheduler.post([report = services_.completionsCommitted] { report(1); });
}

}  // namespace kestrant
