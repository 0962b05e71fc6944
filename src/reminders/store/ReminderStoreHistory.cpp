#include "foundation/UserDefaults.h"
#include "preferences/Localization.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/model/ReminderManualOrder.h"
#include "reminders/store/RecordedChange.h"
#include "reminders/store/ReminderOutcomes.h"

#include <QPointer>

#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using Done = ReminderActionHistory::Done;

constexpr Duration reconciliationDelay = 150ms;

}  // namespace

void ReminderStore::record(const TextPair& title, const TextPair& outcome, std::function<void()> undo,
                           std::function<void()> redo) {
    if (!services_.history)
        return;
    const auto operation = [self = QPointer(this)](std::function<void()> work) {
        return [self, work = std::move(work)](const Done& done) {
            if (self)
                work();
            done({});
        };
    };
    services_.history->record(title, operation(std::move(undo)), operation(std::move(redo)),
                              {.done = outcome});
}

ReminderStore::HistoryReferenceRef ReminderStore::referenceTo(const QString& id) {
    std::erase_if(historyReferences_, [](const auto& entry) { return entry.second.expired(); });
    if (const auto known = historyReferences_.find(id); known != historyReferences_.end())
        return known->second.lock();
    auto reference = std::make_shared<HistoryReference>(HistoryReference{id});
    // A reminder that is about to be created is known once it has an identifier.
    if (!id.isEmpty())
        historyReferences_[id] = reference;
    return reference;
}

ReminderStore::RecordedChangeRef ReminderStore::newRecordedChange(ChangeKind kind, const QString& id) {
    auto recorded = std::make_shared<RecordedChange>();
    recorded->kind = kind;
    recorded->reminder = referenceTo(id);
    recorded->order = manualOrderIDs_;
    return recorded;
}

ReminderStore::RecordedChangeRef ReminderStore::recordChange(ChangeKind kind, const TextPair& title,
                                                             const TextPair& outcome, const QString& id) {
    RecordedChangeRef recorded = newRecordedChange(kind, id);
    recorded->title = title;
    recorded->outcome.done = outcome;
    if (services_.history)
        recorded->action = services_.history->beginAction();
    return recorded;
}

ReminderActionHistory::Operation ReminderStore::replayOf(const RecordedChangeRef& recorded) {
    return [self = QPointer(this), recorded](const Done& done) {
        if (self)
            self->replay(recorded, done);
        else
            done({});
    };
}

ReminderStore::RecordedChangeRef ReminderStore::recordCompletion(const QString& id) {
    RecordedChangeRef recorded = newRecordedChange(ChangeKind::completion, id);
    if (!services_.history)
        return recorded;
    const auto undo = [self = QPointer(this), recorded](const Done& done) {
        if (!self)
            return done({});
        const QString& present = recorded->reminder->identifier;
        if (!self->completionTasks_.contains(present))
            return self->replay(recorded, done);
        // Nothing has been written yet.
        self->recordedCompletions_.erase(present);
        self->cancelCompletion(present);
        recorded->entry.reset();
        done({});
    };
    const auto redo = [self = QPointer(this), recorded](const Done& done) {
        if (!self)
            return done({});
        if (recorded->change)
            return self->replay(recorded, done);
        self->setPendingCompletion(recorded->reminder->identifier, true);
        self->commitCompletion(recorded->reminder->identifier, done, recorded);
    };
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    recorded->entry = services_.history->recordPending(
        text("Complete reminder", "Terminer le rappel"), undo, redo,
        completionOutcome(reminder ? reminder->data.title : QString(), std::nullopt));
    return recorded;
}

void ReminderStore::endRecording(const RecordedChangeRef& recorded,
                                 const tl::expected<EKSaveResult, EKError>& result) {
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
            services_.history->setOutcome(*recorded->entry,
                                          completionOutcome(next->data.title, dueInWords(next->data)));
        services_.history->confirm(*recorded->entry);
    } else if (recorded->action) {
        services_.history->record(recorded->title, replayOf(recorded), replayOf(recorded), recorded->outcome);
    }
    for (const auto& waiting : std::exchange(recorded->waiting, {}))
        waiting();
    using End = ReminderActionHistory::ActionEnd;
    if (const auto action = std::exchange(recorded->action, std::nullopt))
        services_.history->endAction(*action, result ? End::succeeded : End::failed);
}

void ReminderStore::endRecordingOnceKnown(const RecordedChangeRef& recorded, const QString& id,
                                          const tl::expected<EKSaveResult, EKError>& result) {
    if (result || result.error().code != EKError::Code::outcomeUnknown)
        return endRecording(recorded, result);
    services_.eventStore.awaitOutcome(
        id, [self = QPointer(this), recorded](const tl::expected<EKSaveResult, EKError>& known) {
            if (!self)
                return;
            self->endRecording(recorded, known);
            if (known && recorded->kind == ChangeKind::removal)
                self->reconciler_.note(known->calendarItemIdentifier, ReminderCompletionState::deleted());
            self->reload();
        });
}

std::optional<TextPair> ReminderStore::dueInWords(const EKReminderData& reminder) const {
    return kestrant::dueInWords(reminder, services_.clock.now(), services_.calendar.calendar(),
                                services_.localization.clockHours());
}

void ReminderStore::withdraw(const RecordedChangeRef& recorded) {
    if (services_.history && recorded->entry)
        services_.history->remove(*std::exchange(recorded->entry, std::nullopt));
}

void ReminderStore::replay(const RecordedChangeRef& recorded, const Done& done) {
    if (recorded->isUnderWay) {
        recorded->waiting.push_back([self = QPointer(this), recorded, done] {
            if (self)
                self->replay(recorded, done);
        });
        return;
    }
    if (!recorded->change)
        return done({});
    beginActivity();
    services_.eventStore.revert(
        recorded->change, recorded->reminder->identifier,
        [self = QPointer(this), recorded, done](const tl::expected<EKSaveResult, EKError>& result) {
            if (!self)
                return;
            if (result)
                self->replayed(recorded, *result);
            self->reload();
            if (result)
                done({});
            else
                done(tl::unexpected(ReminderStoreError::from(result.error())));
            if (self)
                self->endActivity();
        });
}

void ReminderStore::replayed(const RecordedChangeRef& recorded, const EKSaveResult& result) {
    const bool isTakenBack = !std::exchange(recorded->isTakenBack, !recorded->isTakenBack);
    recorded->change = result.change;
    const QString& id = result.calendarItemIdentifier;
    follow(*recorded, id);

    const bool wentAway = isTakenBack == (recorded->kind == ChangeKind::creation);
    if (recorded->kind != ChangeKind::edit && !wentAway) {
        QStringList former;
        for (const QString& formerID : std::as_const(recorded->order))
            former.append(currentID(formerID));
        QStringList order = withPlaceRestored(manualOrderIDs_, former, id);
        if (order != manualOrderIDs_)
            setManualOrderIDs(std::move(order));
        revealOnceLoaded_ = id;
    }
    if (recorded->kind == ChangeKind::removal && wentAway)
        reconciler_.note(id, ReminderCompletionState::deleted());
    if (recorded->kind != ChangeKind::completion)
        return;
    if (isTakenBack) {
        reconciler_.note(recorded->completedCopy.value_or(id), ReminderCompletionState::incomplete());
    } else {
        recorded->completedCopy = result.completedCopyIdentifier;
        const QString completed = recorded->completedCopy.value_or(id);
        if (const auto reminder = services_.eventStore.calendarItem(completed))
            reconciler_.note(completed, ReminderCompletionState::completed(reminder->data.completionDate));
    }
    reconciler_.schedule(reconciliationDelay);
}

void ReminderStore::follow(const RecordedChange& recorded, const QString& id) {
    const QString formerID = std::exchange(recorded.reminder->identifier, id);
    if (formerID == id)
        return;
    historyReferences_[id] = recorded.reminder;
    if (formerID.isEmpty())
        return;
    flags_.follow(formerID, id);
    const auto rename = [&](QStringList& ids) {
        const auto place = ids.indexOf(formerID);
        if (place >= 0)
            ids[place] = id;
        return place >= 0;
    };
    if (QStringList order = manualOrderIDs_; rename(order))
        setManualOrderIDs(std::move(order));
    QStringList stored =
        services_.defaults.stringList(preferenceKeys::reminderManualOrder).value_or(QStringList());
    if (rename(stored))
        services_.defaults.setStringList(preferenceKeys::reminderManualOrder, stored);
}

QString ReminderStore::currentID(const QString& id) const {
    const auto found = historyReferences_.find(id);
    const auto reference = found == historyReferences_.end() ? nullptr : found->second.lock();
    return reference ? reference->identifier : id;
}

}  // namespace kestrant
