#pragma once

#include "foundation/Scheduler.h"
#include "foundation/Text.h"
#include "reminders/model/ReminderStoreError.h"

#include <QObject>
#include <QUuid>

#include <tl/expected.hpp>

#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace kestrant {

/// The last actions a person performed, so that they can be taken back and done again: no more than ten, none
/// older than an hour. Undo and redo are carried out one after the other, in the order they were asked for,
/// and not before the actions under way have ended. Thread: main.
class ReminderActionHistory : public QObject {
    Q_OBJECT

  public:
    using Result = tl::expected<void, ReminderStoreError>;
    using Done = std::function<void(Result)>;
    /// Calls its argument exactly once, within the call or later, when the operation has ended. Where it is
    /// not known for long whether it has, the argument is called with outcomeUnknown first.
    using Operation = std::function<void(Done)>;

    /// The sentences about an action: after it was done, and after it was undone. Empty where
    /// there is nothing to say.
    struct Outcome {
        TextPair done;
        TextPair undone;
    };

    struct Entry {
        QUuid id;
        /// A short verb phrase, for menus and tooltips.
        TextPair title;
        Instant createdAt;
        Operation undo;
        Operation redo;
        /// The action was requested and can still be cancelled.
        bool isPending = false;
        /// The person has been told that somebody else has changed what it would replay.
        bool isBlocked = false;
        /// A new action was performed while the outcome of its replay was unknown: it cannot be redone.
        bool isForfeited = false;
        Outcome outcome = {};
    };
    enum class ActionEnd { succeeded, failed };

    /// Scheduler and clock outlive the history.
    ReminderActionHistory(Scheduler& scheduler, const Clock& clock, QObject* parent = nullptr);

    /// Oldest first: the last one is the next to undo.
    [[nodiscard]] std::span<const Entry> undoEntries() const;
    /// The last one is the next to redo.
    [[nodiscard]] const std::vector<Entry>& redoEntries() const { return redoEntries_; }
    [[nodiscard]] bool canUndo() const { return holdsAny(undoEntries_); }
    [[nodiscard]] bool canRedo() const { return holdsAny(redoEntries_); }
    /// True while an undo or redo is being carried out.
    [[nodiscard]] bool isReplaying() const { return isReplaying_; }

    /// Adds an action that can be taken back; what was undone can no longer be redone. Gives the entry's id;
    /// absent when nothing was recorded because an entry is being replayed.
    std::optional<QUuid> record(const TextPair& title, Operation undo, Operation redo, Outcome outcome = {});
    /// The same for an action that was asked for and is yet to happen. What it would displace or forfeit is
    /// lost when it is confirmed, and not when it is withdrawn.
    std::optional<QUuid> recordPending(const TextPair& title, Operation undo, Operation redo,
                                       Outcome outcome = {});
    /// The action has happened. Does nothing when its entry was replayed or has gone meanwhile.
    void confirm(const QUuid& id);
    /// More is known of what an action did.
    void setOutcome(const QUuid& id, const Outcome& outcome);
    /// Withdraws an entry whose action did not happen after all.
    void remove(const QUuid& id);

    /// An action is under way that is recorded when it succeeds. An undo or redo that is asked for meanwhile
    /// waits for its end, and does nothing when it fails: it was meant for this action. Gives a number for
    /// endAction().
    [[nodiscard]] int beginAction();
    /// To be called once, after the action was recorded.
    void endAction(int action, ActionEnd end);
    [[nodiscard]] bool hasActionsUnderWay() const { return !actions_.empty(); }

    /// Takes the last action back, or does the last undone one again; nothing happens when there is none. On
    /// failure the entry stays where it was. One that fails again because somebody else has changed or
    /// removed what it would replay is dropped, and the one below it is replayed instead. While the outcome
    /// of one is unknown, its entry is set aside and others can be replayed. `done` may be empty, and is
    /// called as an operation's argument is. With `only`, nothing happens unless that entry is the one.
    void undo(Done done = {}, const std::optional<QUuid>& only = {});
    void redo(Done done = {}, const std::optional<QUuid>& only = {});

    /// Drops all entries: what they would take back is out of reach. One that is being replayed ends.
    void clear();
    /// Drops the entries that are too old. For when the machine has woken up: timers stand still while it
    /// sleeps.
    void removeExpired();

    /// The message for an undo or redo that fails.
    [[nodiscard]] static TextPair failureTitle();
    [[nodiscard]] static TextPair failureText();

  Q_SIGNALS:
    /// undoEntries() or redoEntries() has changed.
    void entriesChanged();

  private:
    using Entries = std::vector<Entry>;
    struct Replay {
        Entries ReminderActionHistory::*from;
        Entries ReminderActionHistory::*to;
        Operation Entry::*operation;
        Done done;
        std::optional<QUuid> only;
        /// The last action begun before it was asked for.
        int behind = 0;
        /// Its outcome is unknown, and its entry set aside.
        bool isUnsettled = false;
    };

    std::optional<QUuid> add(Entry entry);
    /// Drops the oldest entries beyond the capacity. As long as others are pending, as many more stay.
    void trim();
    [[nodiscard]] bool isExpired(const Entry& entry) const;
    [[nodiscard]] bool holdsAny(const Entries& entries) const;
    void ask(Replay replay);
    [[nodiscard]] bool isReady(const Replay& replay) const;
    void scheduleExpiry();
    void replayNext();
    void begin(Replay replay);
    /// The answer to a replay: that its outcome is unknown, or its end.
    void end(Replay& replay, const QUuid& id, const Result& result);
    /// What was undone can no longer be redone.
    void forfeitRedo();

    Scheduler& scheduler_;
    const Clock& clock_;
    Entries undoEntries_;
    Entries redoEntries_;
    /// Entries whose replay has no known outcome yet.
    Entries unsettledEntries_;
    bool isReplaying_ = false;
    std::deque<Replay> waiting_;
    /// Numbers of the actions under way.
    std::set<int> actions_;
    int lastAction_ = 0;
    bool isBeginning_ = false;
    ScheduledTask expiryTimer_;
};

}  // namespace kestrant
