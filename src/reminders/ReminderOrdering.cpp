#include "reminders/ReminderOrdering.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace kestrant {
namespace {

constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
/// Priorities are stored as they come; these bounds keep a senseless one within its part of a key.
constexpr std::int64_t priorityLimit = std::int64_t{1} << 29;

/// Date-only or timed, then priority, then the place in the title order, in one number.
std::int64_t packed(bool timed, std::int64_t priority, std::uint32_t titleRank) {
    return (timed ? std::int64_t{1} << 62 : 0) | ((priority + priorityLimit) << 32) | titleRank;
}

}  // namespace

ReminderOrdering::ReminderOrdering(const std::vector<ReminderTask>& tasks, const TextCollation& collation,
                                   const ReminderOrdering& previous)
    : locale_(collation.locale()) {
    const bool lends = previous.locale_ == locale_;
    std::vector<QCollatorSortKey> keys;
    keys.reserve(tasks.size());
    facts_.reserve(tasks.size());
    ids_.reserve(tasks.size());
    sortKeys_.reserve(static_cast<qsizetype>(tasks.size()));
    for (const ReminderTask& task : tasks) {
        facts_.push_back(
            {.due = task.dueDate ? task.dueDate->time_since_epoch().count() : last,
             .created = task.creationDate ? task.creationDate->time_since_epoch().count() : last,
             .priority = task.priority == 0
                             ? 10
                             : std::clamp<std::int64_t>(task.priority, -priorityLimit, priorityLimit - 1),
             .timed = task.dueDate && task.dueDateIncludesTime,
             .hasCreationDate = task.creationDate.has_value(),
             .place = last});
        ids_.push_back(task.id);
        auto known = sortKeys_.constFind(task.title);
        if (known == sortKeys_.constEnd()) {
            const auto lent =
                lends ? previous.sortKeys_.constFind(task.title) : previous.sortKeys_.constEnd();
            known = sortKeys_.insert(
                task.title, lent != previous.sortKeys_.constEnd() ? *lent : collation.sortKey(task.title));
        }
        keys.push_back(*known);
    }
    byTitle_.resize(tasks.size());
    std::iota(byTitle_.begin(), byTitle_.end(), 0U);
    std::sort(byTitle_.begin(), byTitle_.end(), [&](std::uint32_t a, std::uint32_t b) {
        const int compared = keys[a].compare(keys[b]);
        return compared != 0 ? compared < 0 : ids_[a] < ids_[b];
    });
    titleRanks_.resize(tasks.size());
    for (std::uint32_t rank = 0; rank < byTitle_.size(); ++rank)
        titleRanks_[byTitle_[rank]] = rank;
}

void ReminderOrdering::setManualOrder(const QStringList& ids) {
    QHash<QString, std::int64_t> places;
    places.reserve(ids.size());
    for (qsizetype place = ids.size() - 1; place >= 0; --place)
        places.insert(ids[place], place);
    for (std::uint32_t index = 0; index < facts_.size(); ++index)
        facts_[index].place = places.value(ids_[index], last);
}

ReminderOrdering::Key ReminderOrdering::key(ReminderSortMode mode, std::uint32_t index) const {
    const Facts& facts = facts_[index];
    const std::int64_t rank = titleRanks_[index];
    switch (mode) {
    case ReminderSortMode::manual:
        return {facts.place, facts.due, packed(facts.timed, facts.priority, titleRanks_[index])};
    case ReminderSortMode::dueDate:
        return {facts.due, packed(facts.timed, facts.priority, titleRanks_[index]), rank};
    case ReminderSortMode::priority:
        return {facts.priority, facts.due, packed(facts.timed, 0, titleRanks_[index])};
    case ReminderSortMode::title:
        break;
    case ReminderSortMode::creationOldestFirst:
        return {facts.created, rank, rank};
    case ReminderSortMode::creationNewestFirst:
        return {facts.hasCreationDate ? -facts.created : last, rank, rank};
    }
    return {rank, rank, rank};
}

std::vector<std::uint32_t>
ReminderOrdering::ordered(ReminderSortMode mode,
                          const std::function<bool(std::uint32_t index)>& included) const {
    std::vector<std::uint32_t> result;
    result.reserve(facts_.size());
    if (mode == ReminderSortMode::title) {
        std::copy_if(byTitle_.begin(), byTitle_.end(), std::back_inserter(result), included);
        return result;
    }
    std::vector<Key> keys;
    keys.reserve(facts_.size());
    for (std::uint32_t index = 0; index < facts_.size(); ++index) {
        if (included(index))
            keys.push_back(key(mode, index));
    }
    std::sort(keys.begin(), keys.end());
    for (const Key& sorted : keys)
        result.push_back(byTitle_[static_cast<std::uint32_t>(sorted.back())]);
    return result;
}

}  // namespace kestrant
