import QtQuick
import Kestrant

// An event's details. Enter saves, Escape leaves everything as it was.
Popover {
    id: popover

    required property CalendarEditViewModel form
    /// A row of the calendar, for the form.
    required property var row
    property int ticket: -1

    contentWidth: 372
    contentHeight: column.height
    spokenName: heading.text
    focus: true

    function save() {
        if (form.canSave)
            form.save()
    }

    // The surface closes the form itself.
    Keys.onEscapePressed: form.discard()
    Keys.onReturnPressed: save()
    Keys.onEnterPressed: save()
    Component.onCompleted: {
        ticket = form.begin(row)
        titleBox.forceActiveFocus(Qt.PopupFocusReason)
    }
    Component.onDestruction: {
        form.keep(ticket)
        form.end(ticket)
    }
    Connections {
        target: popover.form
        function onSaved() { popover.overlays.dismissAfterSaving(popover.overlayId) }
    }

    Column {
        id: column
        width: parent.width
        spacing: 10

        PlainText {
            id: heading
            text: popover.form.lockReason !== "" ? Localizer.text("Event", "Événement")
                                                 : Localizer.text("Edit event", "Modifier l’événement")
            color: Theme.text
            font.pixelSize: 14
            font.weight: Font.DemiBold
        }
        TextBox {
            id: titleBox
            width: parent.width
            height: 38
            focus: true
            pixelSize: 14
            text: popover.form.title
            readOnly: !popover.form.canEdit
            placeholder: Localizer.text("Event title", "Titre de l’événement")
            onEdited: text => popover.form.title = text
            onAccepted: popover.save()
        }
        Column {
            width: parent.width
            enabled: popover.form.lockReason === ""
            EventTimesLines {
                width: parent.width
                times: popover.form.times
                readOnly: !popover.form.canEdit
                overlays: popover.overlays
                onAccepted: popover.save()
            }
            FormLine {
                width: parent.width
                last: true
                label: Localizer.text("Calendar", "Calendrier")
                ChoiceChip {
                    overlays: popover.overlays
                    subject: Localizer.text("Calendar", "Calendrier")
                    text: popover.form.calendarTitle
                    dotColor: popover.form.calendarColor
                    chosenId: popover.form.calendarId
                    choices: () => popover.form.calendars()
                    onChosen: id => popover.form.calendarId = id
                }
            }
        }
        TextBox {
            width: parent.width
            text: popover.form.location
            readOnly: !popover.form.canEdit
            placeholder: Localizer.text("Location", "Lieu")
            onEdited: text => popover.form.location = text
            onAccepted: popover.save()
        }
        NotesBox {
            id: notes
            width: parent.width
            text: popover.form.notes
            readOnly: !popover.form.canEdit
            placeholder: Localizer.text("Notes", "Notes")
            onEdited: text => popover.form.notes = text
            onAccepted: popover.save()
        }
        FormFooter {
            width: parent.width
            topPadding: 2
            hint: popover.form.lockReason !== "" ? popover.form.lockReason
                : popover.form.isRestored ? Localizer.text("Unsaved changes restored", "Modifications restaurées")
                : notes.isUsed ? Localizer.text("Ctrl Enter saves · Esc closes", "Ctrl Entrée enregistre · Échap ferme")
                               : Localizer.text("Enter saves · Esc closes", "Entrée enregistre · Échap ferme")
            errorText: popover.form.errorText
            acceptText: Localizer.text("Save", "Enregistrer")
            canAccept: popover.form.canSave
            onAccepted: popover.save()
            onCancelled: {
                popover.form.discard()
                popover.close()
            }
        }
    }
}
