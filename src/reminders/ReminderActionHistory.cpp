#include "reminders/ReminderActionHistory.h"

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

std::optional<QUuid> ReminderActionHistory::record(const TextPair& title, Operation undo, Operation redo) {
    if (isReplaying_)
        return std::nullopt;
    removeExpired();
    redoEntries_.clear();
    undoEntries_.push_back({QUuid::createUuid(), title, clock_.now(), std::move(undo), std::move(redo)});
    if (undoEntries_.size() > capacity)
        undoEntries_.erase(undoEntries_.begin(), undoEntries_.end() - static_cast<std::ptrdiff_t>(capacity));
    const QUuid id = undoEntries_.back().id;
    scheduleExpiry();
    Q_EMIT entriesChanged();
    return id;
}

void ReminderActionHistory::remove(const QUuid& id) {
    const auto isIt = [&](const Entry& entry) { return entry.id == id; };
    if (std::erase_if(undoEntries_, isIt) + std::erase_if(redoEntries_, isIt) == 0)
        return;
    scheduleExpiry();
    Q_EMIT entriesChanged();
}

void ReminderActionHistory::clear() {
    undoEntries_.clear();
    redoEntries_.clear();
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

void ReminderActionHistory::undo(Done done) {
    waiting_.push_back({&ReminderActionHistory::undoEntries_, &ReminderActionHistory::redoEntries_,
                        &Entry::undo, std::move(done)});
    replayNext();
}

void ReminderActionHistory::redo(Done done) {
    waiting_.push_back({&ReminderActionHistory::redoEntries_, &ReminderActionHistory::undoEntries_,
                        &Entry::redo, std::move(done)});
    replayNext();
}

void ReminderActionHistory::replayNext() {
    // Operations that end within the call come back here; one loop serves them all.
    if (isBeginning_)
        return;
    const QPointer self(this);
    isBeginning_ = true;
    while (!isReplaying_ && !waiting_.empty()) {
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
    if (entries.empty()) {
        if (replay.done)
            replay.done({});
        return;
    }
    const QUuid id = entries.back().id;
    const Operation operation = entries.back().*replay.operation;
    const QPointer self(this);
    isReplaying_ = true;
    Q_EMIT isReplayingChanged();
    operation([self, replay = std::move(replay), id](const tl::expected<void, ReminderStoreError>& result) {
        if (self)
            self->end(replay, id, result);
    });
}

void ReminderActionHistory::end(const Replay& replay, const QUuid& id,
                                const tl::expected<void, ReminderStoreError>& result) {
    const QPointer self(this);
    Entries& from = this->*replay.from;
    // It may have expired or been withdrawn meanwhile.
    const auto entry =
        std::find_if(from.begin(), from.end(), [&](const Entry& candidate) { return candidate.id == id; });
    const bool moves = result && entry != from.end();
    if (moves) {
        (this->*replay.to).push_back(std::move(*entry));
        from.erase(entry);
    }
    isReplaying_ = false;
    scheduleExpiry();
    if (moves)
        Q_EMIT entriesChanged();
    if (self)
        Q_EMIT isReplayingChanged();
    if (replay.done)
        replay.done(result);
    if (self)
        replayNext();
}

TextPair ReminderActionHistory::failureTitle() {
    return text("Action could not be completed", "Action impossible");
}

TextPair ReminderActionHistory::failureText() {
    return text("The Reminders app rejected the change.", "L’app Rappels a refusé la modification.");
}

}  // namespace kestrant
