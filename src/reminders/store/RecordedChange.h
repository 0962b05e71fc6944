#pragma once

#include "reminders/store/ReminderStore.h"

namespace kestrant {

/// What entries of the history call a reminder by, whatever its identifier becomes.
struct ReminderStore::HistoryReference {
    QString identifier;
};

/// A change of one reminder that the history can take back and make again.
struct ReminderStore::RecordedChange {
    ChangeKind kind = ChangeKind::edit;
    TextPair title;
    ReminderActionHistory::Outcome outcome;
    HistoryReferenceRef reminder;
    /// The number of the history's action while the change is being written; unused by completions.
    std::optional<int> action;
    /// The history's entry of a completion, while it may still have to be withdrawn from it.
    std::optional<QUuid> entry;
    /// A completion that is being written for the first time; replays wait for the end.
    bool isUnderWay = false;
    std::vector<std::function<void()>> waiting;
    /// What the next replay takes back; null when nothing was written.
    std::shared_ptr<const EKItemChange> change;
    bool isTakenBack = false;
    std::optional<QString> completedCopy;
    /// The manual order before the change.
    QStringList order;
};

}  // namespace kestrant
