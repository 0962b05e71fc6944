#include "reminders/store/ReminderActionHistory.h"

#include "preferences/ProgramNames.h"

#include <QPointer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t capacity = 10;
constexpr Duration lifetime = 3600s;
constexpr Duration shortestDelay = 1ms;

/// Whether an action can no longer be replayed because of what somebody else did.
bool isOutOfReach(const ReminderStoreError& error) {
    return error.code == ReminderStoreError::Code::changedElsewhere ||
           error.code == ReminderStoreError::Code::reminderNotFound ||
           error.code == ReminderStoreError::Code::listUnavailable;
}

}  // namespace

ReminderActionHistory::ReminderActionHistory(Scheduler& scheduler, const Clock& clock, QObject* parent)
    : QObject(parent)
    , scheduler_(scheduler)
    , clock_(clock) {}

bool ReminderActionHistory::isExpired(const Entry& entry) const {
    return clock_.now() - entry.createdAt >= lifetime;
}

bool ReminderActionHistory::holdsAny(const Entries& entries) const {
    return std::any_of(entries.begin(), entries.end(), [&](const Entry& entry) { return !isExpired(entry); });
}

std::span<const ReminderActionHistory::Entry> ReminderActionHistory::undoEntries() const {
    const std::span all(undoEntries_);
    return all.last(std::min(all.size(), capacity));
}

std::optional<QUuid> ReminderActionHistory::record(const TextPair& title, Operation undo, Operation redo,
                                                   Outcome outcome) {
    return add({.id = QUuid::createUuid(),
                .title = title,
                .createdAt = clock_.now(),
                .undo = std::move(undo),
                .redo = std::move(redo),
                .outcome = std::move(outcome)});
}

std::optional<QUuid> ReminderActionHistory::recordPending(const TextPair& title, Operation undo,
                                                          Operation redo, Outcome outcome) {
    return add({.id = QUuid::createUuid(),
                .title = title,
                .createdAt = clock_.now(),
                .undo = std::move(undo),
                .redo = std::move(redo),
                .isPending = true,
                .outcome = std::move(outcome)});
}

std::optional<QUuid> ReminderActionHistory::add(Entry entry) {
    if (isReplaying_)
        return std::nullopt;
    removeExpired();
    if (!entry.isPending)
        forfeitRedo();
    undoEntries_.push_back(std::move(entry));
    const QUuid id = undoEntries_.back().id;
    trim();
    scheduleExpiry();
    Q_EMIT entriesChanged();
    return id;
}

void ReminderActionHistory::confirm(const QUuid& id) {
    const auto entry = std::find_if(undoEntries_.begin(), undoEntries_.end(), [&](const Entry& candidate) {
        return candidate.id == id && candidate.isPending;
    });
    if (entry == undoEntries_.end())
        return;
    entry->isPending = false;
    forfeitRedo();
    trim();
    scheduleExpiry();
    Q_EMIT entriesChanged();
}

void ReminderActionHistory::forfeitRedo() {
    redoEntries_.clear();
    for (Entry& entry : unsettledEntries_)
        entry.isForfeited = true;
}

void ReminderActionHistory::setOutcome(const QUuid& id, const Outcome& outcome) {
    for (Entries* entries : {&undoEntries_, &redoEntries_}) {
        const auto entry = std::find_if(entries->begin(), entries->end(),
                                        [&](const Entry& candidate) { return candidate.id == id; });
        if (entry == entries->end())
            continue;
        entry->outcome = outcome;
        Q_EMIT entriesChanged();
        return;
    }
}

void ReminderActionHistory::trim() {
    const auto pending =
        std::count_if(undoEntries_.begin(), undoEntries_.end(), [](const Entry& e) { return e.isPending; });
    const std::size_t most = capacity + static_cast<std::size_t>(pending);
    if (undoEntries_.size() > most)
        undoEntries_.erase(undoEntries_.begin(), undoEntries_.end() - static_cast<std::ptrdiff_t>(most));
}

int ReminderActionHistory::beginAction() {
    actions_.insert(++lastAction_);
    return lastAction_;
}

void ReminderActionHistory::endAction(int action, ActionEnd end) {
    actions_.erase(action);
    std::vector<Done> pointless;
    if (end == ActionEnd::failed) {
        for (Replay& replay : waiting_) {
            if (replay.behind == action)
                pointless.push_back(std::move(replay.done));
        }
        std::erase_if(waiting_, [&](const Replay& replay) { return replay.behind == action; });
    }
    const QPointer self(this);
    for (const Done& done : pointless) {
        if (done)
            done({});
    }
    if (self)
        replayNext();
}

void ReminderActionHistory::remove(const QUuid& id) {
    const auto isIt = [&](const Entry& entry) { return entry.id == id; };
    if (std::erase_if(undoEntries_, isIt) + std::erase_if(redoEntries_, isIt) +
            std::erase_if(unsettledEntries_, isIt) ==
        0)
        return;
    scheduleExpiry();
    Q_EMIT entriesChanged();
}

void ReminderActionHistory::clear() {
    undoEntries_.clear();
    redoEntries_.clear();
    unsettledEntries_.clear();
    scheduleExpiry();
    Q_EMIT entriesChanged();
}

void ReminderActionHistory::removeExpired() {
    const auto isOld = [&](const Entry& entry) { return isExpired(entry); };
    const bool removed = std::erase_if(undoEntries_, isOld) + std::erase_if(redoEntries_, isOld) > 0;
    scheduleExpiry();
    if (removed)
        Q_EMIT entriesChanged();
}

void ReminderActionHistory::scheduleExpiry() {
    std::optional<Instant> earliest;
    for (const Entries* entries : {&undoEntries_, &redoEntries_}) {
        for (const Entry& entry : *entries)
            earliest = std::min(entry.createdAt, earliest.value_or(entry.createdAt));
    }
    if (!earliest) {
        expiryTimer_.cancel();
        return;
    }
    expiryTimer_ = scheduler_.after(std::max(*earliest + lifetime - clock_.now(), shortestDelay),
                                    [this] { removeExpired(); });
}

void ReminderActionHistory::undo(Done done, const std::optional<QUuid>& only) {
    ask({&ReminderActionHistory::undoEntries_, &ReminderActionHistory::redoEntries_, &Entry::undo,
         std::move(done), only});
}

void ReminderActionHistory::redo(Done done, const std::optional<QUuid>& only) {
    ask({&ReminderActionHistory::redoEntries_, &ReminderActionHistory::undoEntries_, &Entry::redo,
         std::move(done), only});
}

void ReminderActionHistory::ask(Replay replay) {
    if (!actions_.empty())
        replay.behind = *actions_.rbegin();
    waiting_.push_back(std::move(replay));
    replayNext();
}

bool ReminderActionHistory::isReady(const Replay& replay) const {
    return actions_.empty() || *actions_.begin() > replay.behind;
}

void ReminderActionHistory::replayNext() {
    // Operations that end within the call come back here; one loop serves them all.
    if (isBeginning_)
        return;
    const QPointer self(this);
    isBeginning_ = true;
    while (!isReplaying_ && !waiting_.empty() && isReady(waiting_.front())) {
        Replay next = std::move(waiting_.front());
        waiting_.pop_front();
        begin(std::move(next));
        if (!self)
            return;
    }
    isBeginning_ = false;
}

void ReminderActionHistory::begin(Replay replay) {
    removeExpired();
    Entries& entries = this->*replay.from;
    if (entries.empty() || (replay.only && *replay.only != entries.back().id)) {
        if (replay.done)
            replay.done({});
        return;
    }
    const QUuid id = entries.back().id;
    const Operation operation = entries.back().*replay.operation;
    isReplaying_ = true;
    const auto begun = std::make_shared<Replay>(std::move(replay));
    operation([self = QPointer(this), begun, id](const Result& result) {
        if (self)
            self->end(*begun, id, result);
    });
}

void ReminderActionHistory::end(Replay& replay, const QUuid& id, const Result& result) {
    const QPointer self(this);
    const bool isSettled = replay.isUnsettled;
    replay.isUnsettled = !result && result.error().code == ReminderStoreError::Code::outcomeUnknown;
    Entries& present = isSettled ? unsettledEntries_ : this->*replay.from;
    // The entry may have expired or been withdrawn meanwhile.
    const auto entry = std::find_if(present.begin(), present.end(),
                                    [&](const Entry& candidate) { return candidate.id == id; });
    const bool isThere = entry != present.end();
    const bool moves = isThere && (result || isSettled || replay.isUnsettled);
    bool isDropped = false;
    if (moves) {
        Entries& next = replay.isUnsettled ? unsettledEntries_ : this->*(result ? replay.to : replay.from);
        Entry moved = std::move(*entry);
        present.erase(entry);
        moved.isPending = moved.isPending && !result;
        moved.isBlocked = !result && isOutOfReach(result.error());
        if (&next == &undoEntries_)
            moved.isForfeited = false;
        if (!moved.isForfeited || &next == &unsettledEntries_)
            next.push_back(std::move(moved));
        trim();
    } else if (isThere && isOutOfReach(result.error())) {
        isDropped = std::exchange(entry->isBlocked, true);
        if (isDropped)
            present.erase(entry);
    }
    if (!isSettled)
        isReplaying_ = false;
    scheduleExpiry();
    if (moves || isDropped)
        Q_EMIT entriesChanged();
    if (self && isDropped)
        waiting_.push_front(replay);
    else if (replay.done)
        replay.done(result);
    if (self)
        replayNext();
}

TextPair ReminderActionHistory::failureTitle() {
    return text("Action could not be completed", "Action impossible");
}

TextPair ReminderActionHistory::failureText() {
    return programTexts::changeRejected();
}

}  // namespace kestrant
