#pragma once

#include "reminders/model/ReminderTask.h"
#include "reminders/store/ReminderStoreServices.h"

#include <QObject>
#include <QStringList>

namespace kestrant {

class HistoryReferences;

/// How reminders are arranged: the sort mode and the manual order, both kept in the preferences. What a
/// person changes of it is recorded in the history. Thread: main.
class ReminderArrangement : public QObject {
    Q_OBJECT

  public:
    /// Restores the preferences. `references` outlives this object.
    ReminderArrangement(const ReminderStoreServices& services, HistoryReferences& references);

    [[nodiscard]] ReminderSortMode sortMode() const { return sortMode_; }
    void setSortMode(ReminderSortMode mode);

    /// Every placed reminder, from first to last.
    [[nodiscard]] const QStringList& manualOrderIDs() const { return order_; }
    /// The order after a drag: the ids that were on show, first to last; those that were hidden keep their
    /// places. Arranges by hand from then on. `title` is that of the reminder that was dragged.
    void commitManualOrder(const QStringList& ids, const QString& title);
    /// Follows what has come and gone. The preferences keep what the person arranged.
    void setManualOrderIDs(const QStringList& ids);
    /// Puts a reminder that came back where it stood in `former`.
    void restorePlace(const QString& id, const QStringList& former);
    /// A reminder has another identifier from now on.
    void follow(const QString& formerID, const QString& id);

  Q_SIGNALS:
    void manualOrderIDsChanged();
    void sortModeChanged();
    /// Both are as they were wanted.
    void arranged();

  private:
    struct Placement {
        QStringList ids;
        ReminderSortMode mode = ReminderSortMode::manual;
    };
    void applySortMode(ReminderSortMode mode);
    void apply(const Placement& placement);
    /// Reminders added since keep their places, and removed ones stay away.
    void restore(const Placement& placement);
    void record(const TextPair& title, const TextPair& outcome, std::function<void()> undo,
                std::function<void()> redo);
    [[nodiscard]] QStringList present(const QStringList& ids) const;

    const ReminderStoreServices& services_;
    HistoryReferences& references_;
    ReminderSortMode sortMode_ = ReminderSortMode::dueDate;
    QStringList order_;
};

}  // namespace kestrant
