#include "ui/panel/HistoryViewModel.h"

#include "foundation/NotificationCenter.h"
#include "notch/NotchInteractionModel.h"
#include "notch/NotchPanelController.h"
#include "reminders/store/ReminderActionHistory.h"
#include "ui/panel/Localizer.h"

#include <QPointer>

namespace kestrant {

HistoryViewModel::HistoryViewModel(ReminderActionHistory& history, const NotchInteractionModel& interaction,
                                   NotificationCenter& notifications, Localizer& localizer, QObject* parent)
    : QObject(parent)
    , history_(history)
    , localizer_(localizer) {
    connect(&history, &ReminderActionHistory::entriesChanged, this, &HistoryViewModel::followEntries);
    connect(&localizer, &Localizer::languageChanged, this, &HistoryViewModel::changed);
    // Beneath an open popover nothing changes, but what it is saving may be taken back.
    subscriptions_.push_back(notifications.observe(notifications::undoReminderAction, [this, &interaction] {
        if (interaction.presentedOverlayIDs().isEmpty() || history_.hasActionsUnderWay())
            undo();
    }));
    subscriptions_.push_back(notifications.observe(notifications::redoReminderAction, [this, &interaction] {
        if (interaction.presentedOverlayIDs().isEmpty())
            redo();
    }));
}

bool HistoryViewModel::canUndo() const {
    return history_.canUndo();
}

bool HistoryViewModel::canRedo() const {
    return history_.canRedo();
}

QString HistoryViewModel::undoText() const {
    if (!canUndo())
        return localizer_(text("Undo", "Annuler"));
    return localizer_(text("Undo: %1", "Annuler : %1")).arg(localizer_(history_.undoEntries().back().title));
}

QString HistoryViewModel::redoText() const {
    if (!canRedo())
        return localizer_(text("Redo", "Rétablir"));
    return localizer_(text("Redo: %1", "Rétablir : %1")).arg(localizer_(history_.redoEntries().back().title));
}

void HistoryViewModel::undo() {
    undoOffered({});
}

void HistoryViewModel::redo() {
    redoOffered({});
}

void HistoryViewModel::undoOffered(const QUuid& action) {
    history_.undo(
        [self = QPointer(this)](const Result& result) {
            if (self)
                self->finishUndo(result);
        },
        action.isNull() ? std::nullopt : std::optional(action));
}

void HistoryViewModel::redoOffered(const QUuid& action) {
    history_.redo(
        [self = QPointer(this)](const Result& result) {
            if (self)
                self->finishRedo(result);
        },
        action.isNull() ? std::nullopt : std::optional(action));
}

void HistoryViewModel::finishUndo(const Result& result) {
    if (!result)
        return fail(result.error());
    Q_EMIT replayed();
    if (history_.redoEntries().empty())
        return;
    const auto& entry = history_.redoEntries().back();
    const QString sentence = localizer_(entry.outcome.undone);
    if (!sentence.isEmpty())
        Q_EMIT takenBack(sentence, entry.id);
}

void HistoryViewModel::finishRedo(const Result& result) {
    if (result)
        Q_EMIT replayed();
    else
        fail(result.error());
}

void HistoryViewModel::fail(const ReminderStoreError& error) {
    const bool isUnknown = error.code == ReminderStoreError::Code::outcomeUnknown;
    Q_EMIT failed(localizer_(isUnknown ? text("No answer yet", "Pas encore de réponse")
                                       : ReminderActionHistory::failureTitle()),
                  localizer_(isUnknown ? error.message() : ReminderActionHistory::failureText()));
}

void HistoryViewModel::followEntries() {
    const auto entries = history_.undoEntries();
    const bool isNew = !entries.empty() && !known_.contains(entries.back().id);
    known_.clear();
    for (const auto& entry : entries)
        known_.insert(entry.id);
    for (const auto& entry : history_.redoEntries())
        known_.insert(entry.id);
    Q_EMIT changed();
    if (isNew) {
        offered_ = entries.back().id;
        offer_.clear();
    }
    if (offered_.isNull())
        return;
    if (entries.empty() || entries.back().id != offered_) {
        offered_ = {};
        Q_EMIT withdrawn();
        return;
    }
    const auto& entry = entries.back();
    const QString sentence = localizer_(entry.outcome.done);
    const QString offer = sentence.isEmpty() ? localizer_(entry.title) : sentence;
    if (offer == offer_)
        return;
    offer_ = offer;
    Q_EMIT recorded(offer_, offered_);
}

}  // namespace kestrant
