#include "reminders/ReminderOrdering.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace kestrant {
namespace {

constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
/// Priorities are stored as they come; these bounds keep a senseless one within its part of a key.
constexpr std::int64_t priorityLimit = std::int64_t{1} << 29;

/// More new titles than this are ordered with all the others by keys, which cost as much as many comparisons.
constexpr qsizetype mostInserted = 64;
constexpr auto unranked = std::numeric_limits<std::uint32_t>::max();

/// Date-only or timed, then priority, then the place in the title order, in one number.
std::int64_t packed(bool timed, std::int64_t priority, std::uint32_t titleRank) {
    return (timed ? std::int64_t{1} << 62 : 0) | ((priority + priorityLimit) << 32) | titleRank;
}

}  // namespace

std::vector<ReminderOrdering::RankedTitle>
ReminderOrdering::rankedTitles(const std::vector<ReminderTask>& tasks, const TextCollation& collation,
                               const std::vector<RankedTitle>& known) {
    QSet<QString> wanted;
    wanted.reserve(static_cast<qsizetype>(tasks.size()));
    for (const ReminderTask& task : tasks)
        wanted.insert(task.title);

    std::vector<RankedTitle> result;
    result.reserve(static_cast<std::size_t>(wanted.size()));
    for (const RankedTitle& title : known) {
        if (wanted.remove(title.title))
            result.push_back(title);
    }
    if (wanted.size() > mostInserted) {
        using Keyed = std::pair<QCollatorSortKey, QString>;
        std::vector<Keyed> keyed;
        for (const RankedTitle& title : result)
            wanted.insert(title.title);
        keyed.reserve(static_cast<std::size_t>(wanted.size()));
        for (const QString& title : wanted)
            keyed.emplace_back(collation.sortKey(title), title);
        std::sort(keyed.begin(), keyed.end(),
                  [](const Keyed& a, const Keyed& b) { return a.first.compare(b.first) < 0; });
        result.clear();
        for (std::size_t i = 0; i < keyed.size(); ++i) {
            const bool isEqual = i > 0 && keyed[i - 1].first.compare(keyed[i].first) == 0;
            result.push_back({keyed[i].second, i == 0 ? 0 : result.back().rank + (isEqual ? 0 : 1)});
        }
        return result;
    }

    for (const QString& title : wanted)
        result.insert(std::lower_bound(result.begin(), result.end(), title,
                                       [&](const RankedTitle& ranked, const QString& inserted) {
                                           return collation.compare(ranked.title, inserted) < 0;
                                       }),
                      {title, unranked});
    std::uint32_t before = unranked;
    for (std::size_t i = 0; i < result.size(); ++i) {
        const std::uint32_t own = std::exchange(result[i].rank, 0);
        if (i > 0) {
            const bool areKnown = own != unranked && before != unranked;
            const bool isEqual =
                areKnown ? own == before : collation.compare(result[i - 1].title, result[i].title) == 0;
            result[i].rank = result[i - 1].rank + (isEqual ? 0 : 1);
        }
        before = own;
    }
    return result;
}

ReminderOrdering::ReminderOrdering(const std::vector<ReminderTask>& tasks, const TextCollation& collation,
                                   const ReminderOrdering& previous)
    : titles_(rankedTitles(tasks, collation,
                           previous.locale_ == collation.locale() ? previous.titles_
                                                                  : std::vector<RankedTitle>()))
    , locale_(collation.locale()) {
    QHash<QString, std::uint32_t> ranks;
    ranks.reserve(static_cast<qsizetype>(titles_.size()));
    for (const RankedTitle& title : titles_)
        ranks.insert(title.title, title.rank);
    std::vector<std::uint32_t> ofTask;
    ofTask.reserve(tasks.size());
    facts_.reserve(tasks.size());
    ids_.reserve(tasks.size());
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
        ofTask.push_back(ranks.value(task.title));
    }
    byTitle_.resize(tasks.size());
    std::iota(byTitle_.begin(), byTitle_.end(), 0U);
    std::sort(byTitle_.begin(), byTitle_.end(), [&](std::uint32_t a, std::uint32_t b) {
        return ofTask[a] != ofTask[b] ? ofTask[a] < ofTask[b] : ids_[a] < ids_[b];
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
