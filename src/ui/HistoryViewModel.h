#pragma once

#include "foundation/Subscription.h"

#include <QObject>
#include <QQmlEngine>
#include <QSet>
#include <QString>
#include <QUuid>

#include <vector>

namespace kestrant {

class Localizer;
class NotificationCenter;
class ReminderActionHistory;

/// Taking back the last action and making it again. Thread: main.
class HistoryViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY changed)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY changed)
    /// "Undo: Delete reminder"; without the action while there is none.
    Q_PROPERTY(QString undoText READ undoText NOTIFY changed)
    Q_PROPERTY(QString redoText READ redoText NOTIFY changed)

  public:
    /// Also follows the commands that are posted as notifications. Everything must outlive the view model.
    HistoryViewModel(ReminderActionHistory& history, NotificationCenter& notifications, Localizer& localizer,
                     QObject* parent = nullptr);

    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;
    [[nodiscard]] QString undoText() const;
    [[nodiscard]] QString redoText() const;

    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();

  Q_SIGNALS:
    void changed();
    /// The person has just done something that can be taken back; its name.
    void recorded(const QString& title);
    /// The last action has been taken back, or made again.
    void replayed();
    /// Undo or redo was not possible.
    void failed(const QString& title, const QString& message);

  private:
    void followEntries();
    void finish(bool succeeded);

    ReminderActionHistory& history_;
    Localizer& localizer_;
    /// The actions that were known when the entries last changed.
    QSet<QUuid> known_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace kestrant
