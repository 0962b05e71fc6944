#include "ui/calendar/CalendarRowModel.h"

#include "ui/controls/RowChanges.h"

#include <algorithm>

namespace kestrant {
namespace {

/// Beyond this many separate changes the list is shown as a new one.
constexpr int mostRunsOfDays = 60;
constexpr int mostRowsOfADay = 60;

QDate dateOf(const QString& day) {
    return QDate::fromString(day, Qt::ISODate);
}

std::vector<QString> idsOf(const QList<CalendarEventItem>& events) {
    std::vector<QString> ids;
    ids.reserve(events.size());
    for (const CalendarEventItem& event : events)
        ids.push_back(event.id);
    return ids;
}

int rowsOf(const CalendarDayGroup& group) {
    return 1 + int(group.events.size());
}

}  // namespace

CalendarRowModel::CalendarRowModel(Presenter presenter, QObject* parent)
    : QAbstractListModel(parent)
    , presenter_(std::move(presenter)) {}

void CalendarRowModel::setGroups(const QList<CalendarDayGroup>& groups) {
    const int previousCount = count();
    Q_EMIT aboutToChange();
    if (!changesInRuns(groups)) {
        beginResetModel();
        groups_.assign(groups.begin(), groups.end());
        countRows();
        endResetModel();
    }
    // Rows before `at` are final.
    for (int at = 0; at < int(groups_.size()) || at < int(groups.size());) {
        int gone = 0;
        while (at + gone < int(groups_.size()) &&
               (at == int(groups.size()) || groups_[at + gone].day < groups[at].day))
            ++gone;
        if (gone > 0) {
            removeGroups(at, gone);
            continue;
        }
        int come = 0;
        while (at + come < int(groups.size()) &&
               (at == int(groups_.size()) || groups[at + come].day < groups_[at].day))
            ++come;
        if (come > 0) {
            insertGroups(at, groups, come);
            at += come;
            continue;
        }
        updateGroup(at, groups[at]);
        ++at;
    }
    Q_EMIT changed();
    if (count() != previousCount)
        Q_EMIT countChanged();
}

bool CalendarRowModel::changesInRuns(const QList<CalendarDayGroup>& groups) const {
    int runs = 0;
    enum { same, gone, come } last = same;
    const auto note = [&](auto kind) {
        runs += kind != same && kind != last ? 1 : 0;
        last = kind;
    };
    auto before = groups_.begin();
    auto after = groups.begin();
    while (before != groups_.end() || after != groups.end()) {
        if (after == groups.end() || (before != groups_.end() && before->day < after->day)) {
            note(gone);
            ++before;
        } else if (before == groups_.end() || after->day < before->day) {
            note(come);
            ++after;
        } else {
            note(same);
            runs += before->events != after->events ? 1 : 0;
            ++before;
            ++after;
        }
    }
    return runs <= mostRunsOfDays;
}

void CalendarRowModel::removeGroups(int first, int count) {
    beginRemoveRows({}, firstRows_[first], firstRows_[first + count] - 1);
    groups_.erase(groups_.begin() + first, groups_.begin() + first + count);
    countRows();
    endRemoveRows();
}

void CalendarRowModel::insertGroups(int at, const QList<CalendarDayGroup>& groups, int count) {
    int rows = 0;
    for (int index = at; index < at + count; ++index)
        rows += rowsOf(groups[index]);
    beginInsertRows({}, firstRows_[at], firstRows_[at] + rows - 1);
    groups_.insert(groups_.begin() + at, groups.begin() + at, groups.begin() + at + count);
    countRows();
    endInsertRows();
}

void CalendarRowModel::updateGroup(int index, const CalendarDayGroup& group) {
    CalendarDayGroup& present = groups_[index];
    if (present.events != group.events)
        updateRows(index, group.events);
    const bool headingDiffers = present.headerTitle != group.headerTitle || present.isToday != group.isToday;
    present.date = group.date;
    present.headerTitle = group.headerTitle;
    present.isToday = group.isToday;
    if (headingDiffers) {
        const QModelIndex heading = this->index(firstRows_[index]);
        Q_EMIT dataChanged(heading, heading);
    }
}

void CalendarRowModel::updateRows(int group, const QList<CalendarEventItem>& events) {
    QList<CalendarEventItem>& present = groups_[group].events;
    const int top = firstRows_[group] + 1;
    auto changes = rowChanges(idsOf(present), idsOf(events), mostRowsOfADay);
    if (!changes) {
        changes.emplace();
        if (!present.isEmpty())
            changes->push_back({RowChange::Kind::remove, 0, int(present.size()) - 1});
        if (!events.isEmpty())
            changes->push_back({RowChange::Kind::insert, 0, int(events.size()) - 1});
    }
    for (const RowChange& change : *changes) {
        const int first = top + change.first;
        const int last = top + change.last;
        switch (change.kind) {
        case RowChange::Kind::remove:
            beginRemoveRows({}, first, last);
            present.remove(change.first, change.last - change.first + 1);
            countRows();
            endRemoveRows();
            break;
        case RowChange::Kind::insert:
            beginInsertRows({}, first, last);
            present = present.mid(0, change.first) +
                      events.mid(change.first, change.last - change.first + 1) + present.mid(change.first);
            countRows();
            endInsertRows();
            break;
        case RowChange::Kind::move:
            beginMoveRows({}, first, first, {}, last + (last > first ? 1 : 0));
            present.move(change.first, change.last);
            endMoveRows();
            break;
        }
    }
    for (int row = 0; row < int(present.size()); ++row) {
        if (present.at(row) == events.at(row))
            continue;
        present[row] = events.at(row);
        Q_EMIT dataChanged(index(top + row), index(top + row));
    }
    // From here on the rows are shared with the store's.
    present = events;
}

void CalendarRowModel::countRows() {
    firstRows_.clear();
    firstRows_.reserve(groups_.size() + 1);
    int row = 0;
    for (const CalendarDayGroup& group : groups_) {
        firstRows_.push_back(row);
        row += rowsOf(group);
    }
    firstRows_.push_back(row);
}

void CalendarRowModel::refreshTexts() {
    if (count() > 0)
        Q_EMIT dataChanged(index(0), index(count() - 1));
}

void CalendarRowModel::refreshToday() {
    const auto today =
        std::find_if(groups_.begin(), groups_.end(), [](const auto& group) { return group.isToday; });
    if (today == groups_.end())
        return;
    const auto group = std::size_t(today - groups_.begin());
    Q_EMIT dataChanged(index(firstRows_[group]), index(firstRows_[group + 1] - 1));
}

int CalendarRowModel::groupOf(int row) const {
    return int(std::upper_bound(firstRows_.begin(), firstRows_.end(), row) - firstRows_.begin()) - 1;
}

std::vector<CalendarDayGroup>::const_iterator CalendarRowModel::groupFrom(const QString& day) const {
    return std::lower_bound(groups_.begin(), groups_.end(), dateOf(day),
                            [](const CalendarDayGroup& group, QDate date) { return group.day < date; });
}

const CalendarEventItem* CalendarRowModel::item(int row) const {
    if (!isRow(row))
        return nullptr;
    const int group = groupOf(row);
    const int event = row - firstRows_[group] - 1;
    return event < 0 ? nullptr : &groups_[group].events.at(event);
}

int CalendarRowModel::rowOf(const QString& day, const QString& id) const {
    const auto group = groupFrom(day);
    if (group == groups_.end() || group->day != dateOf(day))
        return -1;
    const int heading = firstRows_[std::size_t(group - groups_.begin())];
    if (id.isEmpty())
        return heading;
    const auto event = std::find_if(group->events.begin(), group->events.end(),
                                    [&](const CalendarEventItem& item) { return item.id == id; });
    return event == group->events.end() ? -1 : heading + 1 + int(event - group->events.begin());
}

int CalendarRowModel::headingFrom(const QString& day) const {
    if (groups_.empty())
        return -1;
    const auto group = groupFrom(day);
    return firstRows_[std::min(std::size_t(group - groups_.begin()), groups_.size() - 1)];
}

int CalendarRowModel::headingOf(int row) const {
    return isRow(row) ? firstRows_[groupOf(row)] : -1;
}

int CalendarRowModel::headingAfter(int row) const {
    const int next = isRow(row) ? firstRows_[groupOf(row) + 1] : -1;
    return isRow(next) ? next : -1;
}

int CalendarRowModel::nextItem(int row, int direction) const {
    for (int next = row + direction; isRow(next); next += direction) {
        if (item(next))
            return next;
    }
    return -1;
}

int CalendarRowModel::firstItemOfNextDay(int row, int direction) const {
    if (!isRow(row))
        return -1;
    for (int group = groupOf(row) + direction; group >= 0 && group < int(groups_.size());
         group += direction) {
        if (!groups_[group].events.isEmpty())
            return firstRows_[group] + 1;
    }
    return -1;
}

QString CalendarRowModel::dayAt(int row) const {
    return isRow(row) ? groups_[groupOf(row)].day.toString(Qt::ISODate) : QString();
}

QString CalendarRowModel::idAt(int row) const {
    const CalendarEventItem* found = item(row);
    return found ? found->id : QString();
}

int CalendarRowModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

CalendarRow CalendarRowModel::rowAt(int row) const {
    if (!isRow(row))
        return {};
    const int group = groupOf(row);
    return presenter_(groups_[group], row - firstRows_[group] - 1);
}

QVariant CalendarRowModel::data(const QModelIndex& index, int role) const {
    if (role != rowRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    return QVariant::fromValue(rowAt(index.row()));
}

QHash<int, QByteArray> CalendarRowModel::roleNames() const {
    return {{rowRole, "row"}};
}

}  // namespace kestrant
