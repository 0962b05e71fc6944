#pragma once

#include <QAbstractListModel>
#include <QString>

#include <functional>
#include <vector>

namespace kestrant::test {

/// Keeps the rows of a model by nothing but what the model tells.
class RowFollower : public QObject {
  public:
    /// `read` gives what a row of the model holds now.
    RowFollower(const QAbstractItemModel& model, std::function<QString(int)> read) : read_(std::move(read)) {
        connect(&model, &QAbstractItemModel::modelReset, this, [this, &model] {
            rows.clear();
            for (int row = 0; row < model.rowCount(); ++row)
                rows.push_back(read_(row));
        });
        connect(&model, &QAbstractItemModel::rowsRemoved, this,
                [this](const QModelIndex&, int first, int last) {
                    rows.erase(rows.begin() + first, rows.begin() + last + 1);
                });
        connect(&model, &QAbstractItemModel::rowsInserted, this,
                [this](const QModelIndex&, int first, int last) {
                    for (int row = first; row <= last; ++row)
                        rows.insert(rows.begin() + row, read_(row));
                });
        connect(&model, &QAbstractItemModel::rowsMoved, this,
                [this](const QModelIndex&, int from, int, const QModelIndex&, int to) {
                    const QString moved = rows[from];
                    rows.erase(rows.begin() + from);
                    rows.insert(rows.begin() + (to > from ? to - 1 : to), moved);
                });
        connect(&model, &QAbstractItemModel::dataChanged, this,
                [this](const QModelIndex& top, const QModelIndex& bottom) {
                    for (int row = top.row(); row <= bottom.row(); ++row)
                        rows[row] = read_(row);
                });
    }

    std::vector<QString> rows;

  private:
    std::function<QString(int)> read_;
};

}  // namespace kestrant::test
