#pragma once

#include "reminders/model/ReminderTaskList.h"

#include <QAbstractListModel>
#include <QColor>
#include <QHash>
#include <QQmlEngine>
#include <QSet>
#include <QString>

#include <functional>
#include <vector>

namespace kestrant {

/// Everything one card shows.
struct ReminderCard {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString dueText MEMBER dueText CONSTANT)
    Q_PROPERTY(QString timeText MEMBER timeText CONSTANT)
    Q_PROPERTY(bool isOverdue MEMBER isOverdue CONSTANT)
    Q_PROPERTY(QString priorityMarks MEMBER priorityMarks CONSTANT)
    Q_PROPERTY(bool isFlagged MEMBER isFlagged CONSTANT)
    Q_PROPERTY(bool isRecurring MEMBER isRecurring CONSTANT)
    Q_PROPERTY(QString repeatText MEMBER repeatText CONSTANT)
    Q_PROPERTY(QString alertText MEMBER alertText CONSTANT)
    Q_PROPERTY(QString alertBrief MEMBER alertBrief CONSTANT)
    Q_PROPERTY(QColor listColor MEMBER listColor CONSTANT)
    Q_PROPERTY(bool isPending MEMBER isPending CONSTANT)
    Q_PROPERTY(bool isWritable MEMBER isWritable CONSTANT)
    Q_PROPERTY(QString spokenText MEMBER spokenText CONSTANT)

  public:
    QString id;
    QString title;
    /// The due date in words; empty without one.
    QString dueText;
    /// When it is due on its day, "17:00"; empty for a whole day.
    QString timeText;
    bool isOverdue = false;
    /// "!!!" high, "!!" medium, "!" low; empty for none.
    QString priorityMarks;
    bool isFlagged = false;
    bool isRecurring = false;
    /// How often it repeats, such as "yearly"; empty where that takes more than a few words.
    QString repeatText;
    /// When its notification rings, such as "15 min before"; empty when that is the due time or never.
    QString alertText;
    /// The same beside the sign of a bell: "15 min".
    QString alertBrief;
    QColor listColor;
    /// Completion was asked for and can still be taken back.
    bool isPending = false;
    /// False for a reminder in a list that takes no changes.
    bool isWritable = true;
    /// Everything above in words, for assistive technology.
    QString spokenText;
};

/// The cards in their order, one role "card" with a ReminderCard; a card's texts are made when a view asks
/// for them, so that ten thousand cost no more than those on show. A new state arrives whole and is told as
/// the fewest changes, so that cards glide to their new places and keep their focus. Thread: main.
class ReminderCardModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

  public:
    using Presenter = std::function<ReminderCard(const ReminderTask& task, bool isPending)>;
    enum Role { cardRole = Qt::UserRole };

    explicit ReminderCardModel(Presenter presenter, QObject* parent = nullptr);

    void setTasks(ReminderTaskList tasks);
    void setPendingIDs(const QSet<QString>& ids);
    /// The presenter would answer differently now.
    void refreshTexts();

    [[nodiscard]] const ReminderTaskList& tasks() const { return tasks_; }
    [[nodiscard]] int count() const { return int(rows_.size()); }
    /// -1 when there is none with this id.
    [[nodiscard]] Q_INVOKABLE int rowOf(const QString& taskId) const;
    /// Empty, and false, for a row that does not exist.
    [[nodiscard]] Q_INVOKABLE QString taskIdAt(int row) const;
    [[nodiscard]] Q_INVOKABLE bool isWritableAt(int row) const;
    /// The list of a task; empty when there is none with this id.
    [[nodiscard]] Q_INVOKABLE QString listIdOf(const QString& taskId) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  Q_SIGNALS:
    void countChanged();

  private:
    Presenter presenter_;
    ReminderTaskList tasks_;
    /// The tasks in `tasks_`, but while it is told what changed: some in those before, some in those after.
    std::vector<const ReminderTask*> rows_;
    QSet<QString> pendingIDs_;
};

}  // namespace kestrant

Q_DECLARE_METATYPE(kestrant::ReminderCard)
