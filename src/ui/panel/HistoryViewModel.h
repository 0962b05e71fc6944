#pragma once

#include "foundation/Subscription.h"

#include <QObject>
#include <QQmlEngine>
#include <QSet>
#include <QString>
#include <QUuid>

#include <tl/expected.hpp>

#include <vector>

namespace kestrant {

class Localizer;
class NotificationCenter;
class ReminderActionHistory;
class NotchInteractionModel;
struct ReminderStoreError;

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
    /// Also follows the commands that are posted as notifications; while a popover is open, only that to take
    /// back what is being saved. Everything must outlive the view model.
    HistoryViewModel(ReminderActionHistory& history, const NotchInteractionModel& interaction,
                     NotificationCenter& notifications, Localizer& localizer, QObject* parent = nullptr);

    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;
    [[nodiscard]] QString undoText() const;
    [[nodiscard]] QString redoText() const;

    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();
    /// The same for the action that was offered, and no other: nothing happens when another one is next.
    Q_INVOKABLE void undoOffered(const QUuid& action);
    Q_INVOKABLE void redoOffered(const QUuid& action);

  Q_SIGNALS:
    void changed();
    /// The person has just done something that can be taken back; what it was, as a sentence. Told again when
    /// more is known of what was offered last.
    void recorded(const QString& sentence, const QUuid& action);
    /// Emitted when the last offer to undo or redo can no longer be carried out.
    void withdrawn();
    /// An action has been taken back that can be made again; what it is like now, as a sentence.
    void takenBack(const QString& sentence, const QUuid& action);
    /// The last action has been taken back, or made again.
    void replayed();
    /// Undo or redo was not possible, or nobody knows yet whether it was made.
    void failed(const QString& title, const QString& message);

  private:
    void followEntries();
    using Result = tl::expected<void, ReminderStoreError>;
    void finishUndo(const Result& result);
    void finishRedo(const Result& result);
    void fail(const ReminderStoreError& error);

    ReminderActionHistory& history_;
    Localizer& localizer_;
    /// The actions that were known when the entries last changed.
    QSet<QUuid> known_;
    /// The action that was offered last, and what was said of it; null when that is over.
    QUuid offered_;
    QString offer_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace kestrant
