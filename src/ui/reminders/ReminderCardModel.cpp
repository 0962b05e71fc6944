#include "ui/reminders/ReminderCardModel.h"

#include "ui/controls/RowChanges.h"

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

/// Beyond this many rows on the move nobody can follow them with the eye.
constexpr int largestAnimatedChange = 60;

std::vector<const ReminderTask*> rowsOf(const ReminderTaskList& tasks) {
    std::vector<const ReminderTask*> rows;
    rows.reserve(tasks.size());
    for (const ReminderTask& task : tasks)
        rows.push_back(&task);
    return rows;
}

std::vector<QString> idsOf(const std::vector<const ReminderTask*>& rows) {
    std::vector<QString> ids;
    ids.reserve(rows.size());
    for (const ReminderTask* task : rows)
        ids.push_back(task->id);
    return ids;
}

}  // namespace

ReminderCardModel::ReminderCardModel(Presenter presenter, QObject* parent)
    : QAbstractListModel(parent)
    , presenter_(std::move(presenter)) {}

void ReminderCardModel::setTasks(ReminderTaskList tasks) {
    const int previousCount = count();
    const std::vector<const ReminderTask*> wanted = rowsOf(tasks);
    const auto changes = rowChanges(idsOf(rows_), idsOf(wanted), largestAnimatedChange);
    if (!changes) {
        beginResetModel();
        rows_ = wanted;
        tasks_ = std::move(tasks);
        endResetModel();
    } else {
        const auto at = [this](int row) { return rows_.begin() + row; };
        for (const RowChange& change : *changes) {
            switch (change.kind) {
            case RowChange::Kind::remove:
                beginRemoveRows({}, change.first, change.last);
                rows_.erase(at(change.first), at(change.last + 1));
                endRemoveRows();
                break;
            case RowChange::Kind::insert:
                beginInsertRows({}, change.first, change.last);
                rows_.insert(at(change.first), wanted.begin() + change.first,
                             wanted.begin() + change.last + 1);
                endInsertRows();
                break;
            case RowChange::Kind::move: {
                const bool down = change.last > change.first;
                beginMoveRows({}, change.first, change.first, {}, change.last + (down ? 1 : 0));
                if (down)
                    std::rotate(at(change.first), at(change.first + 1), at(change.last + 1));
                else
                    std::rotate(at(change.last), at(change.first), at(change.first + 1));
                endMoveRows();
                break;
            }
            }
        }
        for (int row = 0; row < count(); ++row) {
            const bool looksTheSame = *std::exchange(rows_[row], wanted[row]) == *wanted[row];
            if (!looksTheSame)
                Q_EMIT dataChanged(index(row), index(row));
        }
        tasks_ = std::move(tasks);
    }
    if (count() != previousCount)
        Q_EMIT countChanged();
}

void ReminderCardModel::setPendingIDs(const QSet<QString>& ids) {
    const QSet<QString> changed = (pendingIDs_ - ids) + (ids - pendingIDs_);
    pendingIDs_ = ids;
    for (const QString& id : changed) {
        if (const int row = rowOf(id); row >= 0)
            Q_EMIT dataChanged(index(row), index(row));
    }
}

void ReminderCardModel::refreshTexts() {
    if (!rows_.empty())
        Q_EMIT dataChanged(index(0), index(count() - 1));
}

int ReminderCardModel::rowOf(const QString& taskId) const {
    const auto found = std::find_if(rows_.begin(), rows_.end(),
                                    [&](const ReminderTask* task) { return task->id == taskId; });
    return found == rows_.end() ? -1 : int(found - rows_.begin());
}

QString ReminderCardModel::taskIdAt(int row) const {
    return row >= 0 && row < count() ? rows_[row]->id : QString();
}

bool ReminderCardModel::isWritableAt(int row) const {
    return row >= 0 && row < count() && presenter_(*rows_[row], false).isWritable;
}

QString ReminderCardModel::listIdOf(const QString& taskId) const {
    const int row = rowOf(taskId);
    return row < 0 ? QString() : rows_[std::size_t(row)]->listID;
}

int ReminderCardModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant ReminderCardModel::data(const QModelIndex& index, int role) const {
    if (role != cardRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ReminderTask& task = *rows_[index.row()];
    return QVariant::fromValue(presenter_(task, pendingIDs_.contains(task.id)));
}

QHash<int, QByteArray> ReminderCardModel::roleNames() const {
    return {{cardRole, "card"}};
}

}  // namespace kestrant
