#pragma once

#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/HistoryReferences.h"
#include "foundation/Text.h"
#include "reminders/store/ReminderActionHistory.h"
#include "reminders/store/ReminderStoreServices.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

class CompletionReconciler;
class ReminderArrangement;
class ReminderFlagSync;
class ReminderWork;

/// A change of one reminder that the history can take back and make again. Held by whoever writes it and by
/// the entry of the history.
struct RecordedChange {
    enum class Kind { creation, edit, removal, completion };

    Kind kind = Kind::edit;
    TextPair title;
    ReminderActionHistory::Outcome outcome;
    HistoryReferenceRef reminder;
    /// The number of the history's action while the change is being written; unused by completions.
    std::optional<int> action;
    /// The history's entry of a completion, while it may still have to be withdrawn from it.
    std::optional<QUuid> entry;
    /// A completion that is being written for the first time; replays wait for the end.
    bool isUnderWay = false;
    /// The sentence, once nobody knows what becomes of it.
    std::optional<ReminderStoreError> unknown;
    struct Waiter {
        std::function<void()> ended;
        /// Told that the outcome is unknown; may be empty.
        ReminderActionHistory::Done told;
    };
    std::vector<Waiter> waiting;
    /// The change that the next replay reverts; null when nothing was written.
    std::shared_ptr<const EKItemChange> change;
    bool isTakenBack = false;
    std::optional<QString> completedCopy;
    /// The manual order before the change.
    QStringList order;
};
using RecordedChangeRef = std::shared_ptr<RecordedChange>;

/// Records the changes of reminders in the history once they have been written, and carries out what takes
/// them back or makes them again: the database reverts the change, the reminder regains its place in the
/// manual order, and the record of completions is told. A reminder that comes back under another identifier
/// keeps its flag and its place. Thread: main.
class RecordedChanges : public QObject {
    Q_OBJECT

  public:
    /// Everything given here outlives this object.
    RecordedChanges(const ReminderStoreServices& services, HistoryReferences& references,
                    ReminderArrangement& arrangement, ReminderFlagSync& flags,
                    CompletionReconciler& reconciler, ReminderWork& work);

    /// For a change that is about to be written. `id` is empty for a reminder that is yet to be created.
    [[nodiscard]] RecordedChangeRef begin(RecordedChange::Kind kind, const TextPair& title,
                                          const TextPair& outcome, const QString& id);
    /// For a completion that was asked for; it has an entry in the history from now on.
    using OperationOf = std::function<ReminderActionHistory::Operation(const RecordedChangeRef&)>;
    [[nodiscard]] RecordedChangeRef beginPending(const QString& id, const OperationOf& undo,
                                                 const OperationOf& redo);
    /// The change that was written, or the reason why none was.
    void end(const RecordedChangeRef& recorded, const tl::expected<EKSaveResult, EKError>& result);
    using Result = tl::expected<EKSaveResult, EKError>;
    /// Calls `end` at once with the result of a change, or where that is unknown when it is known what became
    /// of it. Then changed() follows.
    void whenKnown(const Result& result, std::function<void(const Result& known)> end);
    /// Nobody knows yet what becomes of it.
    void leaveOpen(const RecordedChangeRef& recorded, const EKError& unknown);
    /// The change did not happen after all.
    void withdraw(const RecordedChangeRef& recorded);

    /// Takes the change back, or makes it again.
    void replay(const RecordedChangeRef& recorded, const ReminderActionHistory::Done& done);

  Q_SIGNALS:
    /// The database holds something else than was fetched.
    void changed();
    /// A replay has brought a reminder back.
    void cameBack(const QString& id);

  private:
    [[nodiscard]] RecordedChangeRef make(RecordedChange::Kind kind, const QString& id) const;
    [[nodiscard]] ReminderActionHistory::Operation replayOf(const RecordedChangeRef& recorded);
    void endReplay(const RecordedChangeRef& recorded, const Result& result,
                   const ReminderActionHistory::Done& done);
    void replayed(RecordedChange& recorded, const EKSaveResult& result);
    /// Carries everything stored under the reminder's identifier over to a new one.
    void follow(const RecordedChange& recorded, const QString& id);

    const ReminderStoreServices& services_;
    HistoryReferences& references_;
    ReminderArrangement& arrangement_;
    ReminderFlagSync& flags_;
    CompletionReconciler& reconciler_;
    ReminderWork& work_;
};

}  // namespace kestrant
