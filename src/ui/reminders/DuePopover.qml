import QtQuick
import Kestrant

// When a reminder is due and when it rings. Enter saves, Escape leaves everything as it was.
Popover {
    id: popover

    required property ReminderEditViewModel form
    required property string reminderId
    property int ticket: -1

    contentWidth: 372
    contentHeight: column.height
    spokenName: heading.text
    focus: true

    function save() {
        if (form.canSave)
            form.save()
    }

    Keys.onReturnPressed: save()
    Keys.onEnterPressed: save()
    Component.onCompleted: {
        ticket = form.begin(reminderId)
        if (form.dueDay.day === "")
            form.dueDay.day = form.dueDay.today
        form.dueDay.showMonthOfDay()
        picker.focusMonth()
    }
    Component.onDestruction: form.end(ticket)
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
            text: Localizer.text("Due date", "Échéance")
            color: Theme.text
            font.pixelSize: 14
            font.weight: Font.DemiBold
        }
        DuePicker {
            id: picker
            width: parent.width
            picker: popover.form.dueDay
            timeText: popover.form.dueTime
            timeIsWrong: popover.form.dueTimeIsWrong
            readOnly: !popover.form.canEdit
            canBeNone: true
            onTimeEdited: text => popover.form.dueTime = text
            onAccepted: popover.save()
        }
        DueLine {
            width: parent.width
            last: true
            label: Localizer.text("Alert", "Alerte")
            isPossible: popover.form.dueDay.day !== ""
            AlertChoice {
                picker: popover.form.alert
                overlays: popover.overlays
                readOnly: !popover.form.canEdit
                onAccepted: popover.save()
            }
        }
        FormFooter {
            width: parent.width
            hint: Localizer.text("Enter saves · Esc closes", "Entrée enregistre · Échap ferme")
            errorText: popover.form.errorText
            acceptText: Localizer.text("Save", "Enregistrer")
            canAccept: popover.form.canSave
            onAccepted: popover.save()
            onCancelled: popover.close()
        }
    }
}
