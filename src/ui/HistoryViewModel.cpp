#include "ui/HistoryViewModel.h"

#include "foundation/NotificationCenter.h"
#include "notch/NotchPanelController.h"
#include "reminders/ReminderActionHistory.h"
#include "ui/Localizer.h"

#include <QPointer>

namespace kestrant {

HistoryViewModel::HistoryViewModel(ReminderActionHistory& history, NotificationCenter& notifications,
                                   Localizer& localizer, QObject* parent)
    : QObject(parent)
    , history_(history)
    , localizer_(localizer) {
    connect(&history, &ReminderActionHistory::entriesChanged, this, &HistoryViewModel::followEntries);
    connect(&localizer, &Localizer::languageChanged, this, &HistoryViewModel::changed);
    subscriptions_.push_back(notifications.observe(notifications::undoReminderAction, [this] { undo(); }));
    subscriptions_.push_back(notifications.observe(notifications::redoReminderAction, [this] { redo(); }));
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
    history_.undo([self = QPointer(this)](const tl::expected<void, ReminderStoreError>& result) {
        if (self)
            self->finish(result.has_value());
    });
}

void HistoryViewModel::redo() {
    history_.redo([self = QPointer(this)](const tl::expected<void, ReminderStoreError>& result) {
        if (self)
            self->finish(result.has_value());
    });
}

void HistoryViewModel::finish(bool succeeded) {
    if (succeeded)
        Q_EMIT replayed();
    else
        Q_EMIT failed(localizer_(ReminderActionHistory::failureTitle()),
                      localizer_(ReminderActionHistory::failureText()));
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
    if (isNew)
        Q_EMIT recorded(localizer_(entries.back().title));
}

}  // namespace kestrant
