#include "reminders/store/RecordedChanges.h"

#include "eventkit/model/EKEventStore.h"
#include "foundation/TimeZone.h"
#include "preferences/Localization.h"
#include "reminders/flags/ReminderFlagSync.h"
#include "reminders/store/CompletionReconciler.h"
#include "reminders/store/ReminderArrangement.h"
#include "reminders/store/ReminderOutcomes.h"
#include "reminders/store/ReminderWork.h"

#include <QPointer>

#include <utility>

namespace kestrant {

using Kind = RecordedChange::Kind;
using Done = ReminderActionHistory::Done;

namespace {

bool isUnknown(const tl::expected<EKSaveResult, EKError>& result) {
    return !result && result.error().code == EKError::Code::outcomeUnknown;
}

}  // namespace

RecordedChanges::RecordedChanges(const ReminderStoreServices& services, HistoryReferences& references,
                                 ReminderArrangement& arrangement, ReminderFlagSync& flags,
                                 CompletionReconciler& reconciler, ReminderWork& work)
    : services_(services)
    , references_(references)
    , arrangement_(arrangement)
    , flags_(flags)
    , reconciler_(reconciler)
    , work_(work) {}

RecordedChangeRef RecordedChanges::make(Kind kind, const QString& id) const {
    auto recorded = std::make_shared<RecordedChange>();
    recorded->kind = kind;
    recorded->reminder = references_.to(id);
    recorded->order = arrangement_.manualOrderIDs();
    return recorded;
}

RecordedChangeRef RecordedChanges::begin(Kind kind, const TextPair& title, const TextPair& outcome,
                                         const QString& id) {
    RecordedChangeRef recorded = make(kind, id);
    recorded->title = title;
    recorded->outcome.done = outcome;
    if (services_.history)
        recorded->action = services_.history->beginAction();
    return recorded;
}

RecordedChangeRef RecordedChanges::beginPending(const QString& id, const OperationOf& undo,
                                                const OperationOf& redo) {
    RecordedChangeRef recorded = make(Kind::completion, id);
    if (!services_.history)
        return recorded;
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    recorded->entry = services_.history->recordPending(
        text("Complete reminder", "Terminer le rappel"), undo(recorded), redo(recorded),
        completionOutcome(reminder ? reminder->data.title : QString(), std::nullopt));
    return recorded;
}

ReminderActionHistory::Operation RecordedChanges::replayOf(const RecordedChangeRef& recorded) {
    return [self = QPointer(this), recorded](const Done& done) {
        if (self)
            self->replay(recorded, done);
        else
            done({});
    };
}

void RecordedChanges::end(const RecordedChangeRef& recorded, const Result& result) {
    recorded->isUnderWay = false;
    if (result) {
        recorded->change = result->change;
        recorded->completedCopy = result->completedCopyIdentifier;
        follow(*recorded, result->calendarItemIdentifier);
    }
    if (!recorded->change) {
        withdraw(recorded);
    } else if (recorded->entry) {
        // A repeating reminder now is at its next date.
        const auto next = services_.eventStore.calendarItem(recorded->reminder->identifier);
        if (recorded->completedCopy && next)
            services_.history->setOutcome(
                *recorded->entry,
                completionOutcome(next->data.title,
                                  dueInWords(next->data, services_.clock.now(), services_.currentZone.zone(),
                                             services_.localization.clockHours())));
        services_.history->confirm(*recorded->entry);
    } else if (recorded->action) {
        services_.history->record(recorded->title, replayOf(recorded), replayOf(recorded), recorded->outcome);
    }
    recorded->unknown.reset();
    for (const RecordedChange::Waiter& waiter : std::exchange(recorded->waiting, {}))
        waiter.ended();
    using End = ReminderActionHistory::ActionEnd;
    if (const auto action = std::exchange(recorded->action, std::nullopt))
        services_.history->endAction(*action, result ? End::succeeded : End::failed);
}

void RecordedChanges::whenKnown(const Result& result, std::function<void(const Result& known)> end) {
    if (!isUnknown(result))
        return end(result);
    services_.eventStore.awaitOutcome(result.error(),
                                      [self = QPointer(this), end = std::move(end)](const Result& known) {
                                          if (!self)
                                              return;
                                          end(known);
                                          if (self)
                                              Q_EMIT self->changed();
                                      });
}

void RecordedChanges::leaveOpen(const RecordedChangeRef& recorded, const EKError& unknown) {
    recorded->unknown = ReminderStoreError::from(unknown);
    const auto waiting = recorded->waiting;
    for (const RecordedChange::Waiter& waiter : waiting) {
        if (waiter.told)
            waiter.told(tl::unexpected(*recorded->unknown));
    }
}

void RecordedChanges::withdraw(const RecordedChangeRef& recorded) {
    if (services_.history && recorded->entry)
        services_.history->remove(*std::exchange(recorded->entry, std::nullopt));
}

void RecordedChanges::replay(const RecordedChangeRef& recorded, const Done& done) {
    if (recorded->isUnderWay) {
        recorded->waiting.push_back({[operation = replayOf(recorded), done] { operation(done); }, done});
        if (recorded->unknown)
            done(tl::unexpected(*recorded->unknown));
        return;
    }
    if (!recorded->change)
        return done({});
    work_.begin();
    services_.eventStore.revert(recorded->change, recorded->reminder->identifier,
                                [self = QPointer(this), recorded, done](const Result& result) {
                                    if (!self)
                                        return;
                                    const auto end = [self, recorded, done](const Result& known) {
                                        self->endReplay(recorded, known, done);
                                    };
                                    if (isUnknown(result))
                                        end(result);
                                    self->whenKnown(result, end);
                                    if (self)
                                        self->work_.end();
                                });
}

void RecordedChanges::endReplay(const RecordedChangeRef& recorded, const Result& result, const Done& done) {
    if (result)
        replayed(*recorded, *result);
    Q_EMIT changed();
    done(result ? ReminderActionHistory::Result() : tl::unexpected(ReminderStoreError::from(result.error())));
}

void RecordedChanges::replayed(RecordedChange& recorded, const EKSaveResult& result) {
    recorded.isTakenBack = !recorded.isTakenBack;
    recorded.change = result.change;
    const QString& id = result.calendarItemIdentifier;
    follow(recorded, id);

    const bool wentAway = recorded.isTakenBack == (recorded.kind == Kind::creation);
    if (recorded.kind != Kind::edit && !wentAway) {
        arrangement_.restorePlace(id, recorded.order);
        Q_EMIT cameBack(id);
    }
    if (recorded.kind == Kind::removal && wentAway)
        reconciler_.note(id, ReminderCompletionState::deleted());
    if (recorded.kind != Kind::completion)
        return;
    if (!recorded.isTakenBack)
        recorded.completedCopy = result.completedCopyIdentifier;
    const QString completed = recorded.completedCopy.value_or(id);
    if (recorded.isTakenBack)
        reconciler_.note(completed, ReminderCompletionState::incomplete());
    else if (const auto reminder = services_.eventStore.calendarItem(completed))
        reconciler_.note(completed, ReminderCompletionState::completed(reminder->data.completionDate));
    reconciler_.schedule();
}

void RecordedChanges::follow(const RecordedChange& recorded, const QString& id) {
    const QString formerID = references_.follow(recorded.reminder, id);
    if (formerID == id || formerID.isEmpty())
        return;
    flags_.follow(formerID, id);
    arrangement_.follow(formerID, id);
}

}  // namespace kestrant
