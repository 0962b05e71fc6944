#include "ui/controls/RowChanges.h"

#include <QHash>

#include <algorithm>

namespace kestrant {
namespace {

/// Marks a longest increasing subsequence of `values`; negative values take no part.
std::vector<bool> longestIncreasing(const std::vector<int>& values) {
    std::vector<int> tails;
    std::vector<int> previous(values.size(), -1);
    for (int index = 0; index < int(values.size()); ++index) {
        const int value = values[index];
        if (value < 0)
            continue;
        const auto tail = std::lower_bound(tails.begin(), tails.end(), value,
                                           [&](int at, int wanted) { return values[at] < wanted; });
        if (tail != tails.begin())
            previous[index] = *std::prev(tail);
        if (tail == tails.end())
            tails.push_back(index);
        else
            *tail = index;
    }
    std::vector<bool> marked(values.size(), false);
    for (int index = tails.empty() ? -1 : tails.back(); index >= 0; index = previous[index])
        marked[index] = true;
    return marked;
}

QHash<QString, int> placesOf(const std::vector<QString>& ids) {
    QHash<QString, int> places;
    places.reserve(qsizetype(ids.size()));
    for (int row = 0; row < int(ids.size()); ++row)
        places.insert(ids[row], row);
    return places;
}

}  // namespace

std::optional<std::vector<RowChange>> rowChanges(const std::vector<QString>& before,
                                                 const std::vector<QString>& after, int limit) {
    if (before == after)
        return std::vector<RowChange>{};
    const QHash<QString, int> placeAfter = placesOf(after);
    std::vector<RowChange> changes;
    int touched = 0;

    std::vector<int> removed;
    std::vector<QString> rows;
    for (int row = 0; row < int(before.size()); ++row) {
        if (placeAfter.contains(before[row]))
            rows.push_back(before[row]);
        else
            removed.push_back(row);
    }
    for (auto row = removed.rbegin(); row != removed.rend(); ++row) {
        if (!changes.empty() && changes.back().first == *row + 1)
            changes.back().first = *row;
        else
            changes.push_back({RowChange::Kind::remove, *row, *row});
    }
    touched += int(removed.size());

    // Rows of the longest part that keeps its order stay where they are; each other one moves once, to behind
    // the row it follows in the new list.
    const QHash<QString, int> placeBefore = placesOf(rows);
    std::vector<int> places;
    places.reserve(after.size());
    for (const QString& id : after)
        places.push_back(placeBefore.value(id, -1));
    const std::vector<bool> stays = longestIncreasing(places);

    int moving = 0;
    for (int row = 0; row < int(after.size()); ++row) {
        touched += stays[row] ? 0 : 1;
        moving += !stays[row] && places[row] >= 0 ? 1 : 0;
    }
    if (touched > limit)
        return std::nullopt;

    if (moving > 0) {
        const auto placeOf = [&](const QString& id) {
            return int(std::find(rows.begin(), rows.end(), id) - rows.begin());
        };
        const QString* predecessor = nullptr;
        for (int row = 0; row < int(after.size()); ++row) {
            if (places[row] < 0)
                continue;
            if (!stays[row]) {
                const int from = placeOf(after[row]);
                rows.erase(rows.begin() + from);
                const int to = predecessor ? placeOf(*predecessor) + 1 : 0;
                rows.insert(rows.begin() + to, after[row]);
                if (to != from)
                    changes.push_back({RowChange::Kind::move, from, to});
            }
            predecessor = &after[row];
        }
    }

    for (int row = 0; row < int(after.size()); ++row) {
        if (places[row] >= 0)
            continue;
        if (!changes.empty() && changes.back().kind == RowChange::Kind::insert &&
            changes.back().last == row - 1)
            changes.back().last = row;
        else
            changes.push_back({RowChange::Kind::insert, row, row});
    }
    return changes;
}

}  // namespace kestrant
