import QtQuick
import Kestrant

// Opens what edits and removes reminders and rows of the calendar, below the item it concerns.
QtObject {
    id: actions

    required property CalendarEditViewModel calendarEdit
    required property EventDetailsViewModel eventDetails
    required property ReminderEditViewModel reminderEdit
    required property RemindersViewModel reminders
    required property OverlayHost overlays

    function editReminder(id, anchor) {
        overlays.present("edit", "ReminderEditPopover.qml", anchor, { form: reminderEdit, reminderId: id })
    }
    /// Opens below the point `at` of the anchor.
    function editDueDate(id, anchor, at) {
        overlays.present("due", "DuePopover.qml", anchor,
                         { form: reminderEdit, reminderId: id, at: at, alignment: "left" })
    }
    function editRow(row, anchor) {
        if (calendarEdit.isReminder(row))
            editReminder(calendarEdit.reminderId(row), anchor)
        else
            overlays.present("edit", "EventEditPopover.qml", anchor, { form: calendarEdit, row: row })
    }
    /// What an event says; of a reminder, its form.
    function showDetails(row, anchor) {
        if (calendarEdit.isReminder(row))
            editReminder(calendarEdit.reminderId(row), anchor)
        else
            overlays.present("details", "EventDetailsPopover.qml", anchor,
                             { details: eventDetails, actions: actions, row: row, anchor: anchor })
    }
    function join(row) {
        eventDetails.join(row)
    }
    function canChangeRow(row) {
        return calendarEdit.isWritable(row)
    }
    function isCompleting(row) {
        return calendarEdit.isReminder(row) && reminders.completingIds.includes(calendarEdit.reminderId(row))
    }
    /// Completes the reminder behind a row, or takes that back while it can be.
    function toggleRow(row) {
        if (calendarEdit.isReminder(row) && canChangeRow(row))
            reminders.toggleCompletion(calendarEdit.reminderId(row))
    }
    /// An event is deleted; a reminder only leaves the calendar. Asks first.
    function removeRow(row, anchor) {
        const isReminder = calendarEdit.isReminder(row)
        overlays.present("confirm", "ConfirmPopover.qml", anchor, isReminder ? {
            form: calendarEdit,
            title: Localizer.text("Remove reminder from calendar?", "Retirer le rappel du calendrier ?"),
            subject: calendarEdit.titleOf(row),
            message: Localizer.clearsDueDate,
            confirmText: Localizer.text("Detach", "Détacher"),
            confirm: () => calendarEdit.detach(row)
        } : {
            form: calendarEdit,
            title: Localizer.text("Delete event?", "Supprimer cet événement ?"),
            subject: calendarEdit.titleOf(row),
            message: Localizer.deletesEvent(calendarEdit.calendarTitleOf(row)) + (calendarEdit.isRecurring(row)
                ? " " + Localizer.text("Only this one of its series; the others stay.",
                                       "Seulement celui-ci de sa série ; les autres restent.") : ""),
            confirmText: Localizer.text("Delete", "Supprimer"),
            confirm: () => calendarEdit.remove(row)
        })
    }
}
