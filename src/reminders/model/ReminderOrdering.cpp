#include "reminders/model/ReminderOrdering.h"

#include <QCollatorSortKey>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace kestrant {
namespace {

constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
/// Priorities are stored as they come; these bounds keep a senseless one within its part of a key.
constexpr std::int64_t priorityLimit = std::int64_t{1} << 29;

/// More new tasks than this are ordered with all the others by keys, which cost as much as many comparisons.
constexpr std::ptrdiff_t mostInserted = 64;
constexpr auto isNew = std::numeric_limits<std::uint32_t>::max();

/// Date-only or timed, then priority, then the place in the title order, in one number.
std::int64_t packed(bool timed, std::int64_t priority, std::uint32_t titleRank) {
    return (timed ? std::int64_t{1} << 62 : 0) | ((priority + priorityLimit) << 32) | titleRank;
}

bool haveSameTitle(const ReminderTask& a, const ReminderTask& b) {
    return a.id == b.id && a.title == b.title;
}

/// Of each task, its index in `before`, where it was there with the same title.
std::vector<std::uint32_t> formerIndices(const std::vector<ReminderTask>& tasks,
                                         const std::vector<ReminderTask>& before) {
    std::vector<std::uint32_t> result(tasks.size(), isNew);
    // Most changes are of one task: all is the same before it and after it.
    std::size_t begin = 0;
    std::size_t end = tasks.size();
    std::size_t formerEnd = before.size();
    for (; begin < std::min(end, formerEnd) && haveSameTitle(tasks[begin], before[begin]); ++begin)
        result[begin] = static_cast<std::uint32_t>(begin);
    while (end > begin && formerEnd > begin && haveSameTitle(tasks[end - 1], before[formerEnd - 1]))
        result[--end] = static_cast<std::uint32_t>(--formerEnd);
    QHash<QString, std::uint32_t> between;
    between.reserve(static_cast<qsizetype>(formerEnd - begin));
    for (std::size_t index = begin; index < formerEnd; ++index)
        between.insert(before[index].id, static_cast<std::uint32_t>(index));
    for (std::size_t index = begin; index < end; ++index) {
        const std::uint32_t former = between.value(tasks[index].id, isNew);
        if (former != isNew && haveSameTitle(tasks[index], before[former]))
            result[index] = former;
    }
    return result;
}

}  // namespace

ReminderOrdering::ReminderOrdering() : tasks_(std::make_shared<const std::vector<ReminderTask>>()) {}

ReminderOrdering::ReminderOrdering(Tasks tasks, const TextCollation& collation,
                                   const ReminderOrdering& previous)
    : tasks_(std::move(tasks))
    , places_(previous.places_)
    , locale_(collation.locale()) {
    const std::vector<std::uint32_t> former = formerIndices(*tasks_, *previous.tasks_);
    facts_.reserve(tasks_->size());
    for (std::size_t index = 0; index < tasks_->size(); ++index) {
        facts_.push_back(factsOf((*tasks_)[index]));
        facts_.back().place = former[index] == isNew ? places_.value((*tasks_)[index].id, withoutPlace)
                                                     : previous.facts_[former[index]].place;
    }
    if (previous.locale_ == locale_ && std::count(former.begin(), former.end(), isNew) <= mostInserted)
        insertTitles(collation, previous, former);
    else
        orderTitles(collation);
    titleRanks_.resize(tasks_->size());
    for (std::uint32_t rank = 0; rank < byTitle_.size(); ++rank)
        titleRanks_[byTitle_[rank]] = rank;
}

ReminderOrdering::Facts ReminderOrdering::factsOf(const ReminderTask& task) {
    return {.due = task.dueDate ? task.dueDate->time_since_epoch().count() : last,
            .created = task.creationDate ? task.creationDate->time_since_epoch().count() : last,
            .priority = task.priority == 0
                            ? 10
                            : std::clamp<std::int64_t>(task.priority, -priorityLimit, priorityLimit - 1),
            .timed = task.dueDate && task.dueDateIncludesTime,
            .hasCreationDate = task.creationDate.has_value()};
}

void ReminderOrdering::orderTitles(const TextCollation& collation) {
    const std::vector<ReminderTask>& tasks = *tasks_;
    QHash<QString, std::uint32_t> ranks;
    for (const ReminderTask& task : tasks)
        ranks.insert(task.title, 0);
    using Keyed = std::pair<QCollatorSortKey, std::uint32_t*>;
    std::vector<Keyed> keyed;
    keyed.reserve(static_cast<std::size_t>(ranks.size()));
    for (auto title = ranks.begin(); title != ranks.end(); ++title)
        keyed.emplace_back(collation.sortKey(title.key()), &title.value());
    std::sort(keyed.begin(), keyed.end(),
              [](const Keyed& a, const Keyed& b) { return a.first.compare(b.first) < 0; });
    // Titles that count as equal have the same rank.
    for (std::size_t i = 1; i < keyed.size(); ++i)
        *keyed[i].second = *keyed[i - 1].second + (keyed[i - 1].first.compare(keyed[i].first) == 0 ? 0 : 1);
    std::vector<std::uint32_t> ofTask;
    ofTask.reserve(tasks.size());
    for (const ReminderTask& task : tasks)
        ofTask.push_back(ranks.value(task.title));
    byTitle_.resize(tasks.size());
    std::iota(byTitle_.begin(), byTitle_.end(), 0U);
    std::sort(byTitle_.begin(), byTitle_.end(), [&](std::uint32_t a, std::uint32_t b) {
        return ofTask[a] != ofTask[b] ? ofTask[a] < ofTask[b] : tasks[a].id < tasks[b].id;
    });
}

void ReminderOrdering::insertTitles(const TextCollation& collation, const ReminderOrdering& previous,
                                    const std::vector<std::uint32_t>& former) {
    std::vector<std::uint32_t> present(previous.facts_.size(), isNew);
    for (std::uint32_t index = 0; index < former.size(); ++index) {
        if (former[index] != isNew)
            present[former[index]] = index;
    }
    byTitle_.reserve(former.size());
    for (const std::uint32_t index : previous.byTitle_) {
        if (present[index] != isNew)
            byTitle_.push_back(present[index]);
    }
    const auto isBefore = [&](std::uint32_t a, std::uint32_t b) {
        const int compared = collation.compare((*tasks_)[a].title, (*tasks_)[b].title);
        return compared != 0 ? compared < 0 : (*tasks_)[a].id < (*tasks_)[b].id;
    };
    for (std::uint32_t index = 0; index < former.size(); ++index) {
        if (former[index] == isNew)
            byTitle_.insert(std::lower_bound(byTitle_.begin(), byTitle_.end(), index, isBefore), index);
    }
}

void ReminderOrdering::setManualOrder(const QStringList& ids) {
    places_.clear();
    places_.reserve(ids.size());
    for (qsizetype place = ids.size() - 1; place >= 0; --place)
        places_.insert(ids[place], place);
    for (std::size_t index = 0; index < facts_.size(); ++index)
        facts_[index].place = places_.value((*tasks_)[index].id, withoutPlace);
}

std::size_t ReminderOrdering::placedTasks() const {
    return static_cast<std::size_t>(std::count_if(
        facts_.begin(), facts_.end(), [](const Facts& facts) { return facts.place != withoutPlace; }));
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
