import QtQuick
import Kestrant

// A reminder's details. Enter saves, Escape leaves everything as it was.
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

    // The surface closes the form itself.
    Keys.onEscapePressed: form.discard()
    Keys.onReturnPressed: save()
    Keys.onEnterPressed: save()
    Component.onCompleted: {
        ticket = form.begin(reminderId)
        form.restore()
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
            text: popover.form.lockReason !== "" ? Localizer.text("Reminder", "Rappel")
                                                 : Localizer.text("Edit reminder", "Modifier le rappel")
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
            placeholder: Localizer.text("Reminder title", "Titre du rappel")
            onEdited: text => popover.form.title = text
            onAccepted: popover.save()
        }
        Column {
            width: parent.width
            enabled: popover.form.lockReason === ""
            FormLine {
                width: parent.width
                label: Localizer.text("Due", "Échéance")
                Row {
                    spacing: 6
                    DayChip {
                        anchors.verticalCenter: parent.verticalCenter
                        picker: popover.form.dueDay
                        overlays: popover.overlays
                        subject: Localizer.text("Due", "Échéance")
                        placeholder: Localizer.text("Add a date", "Ajouter une date")
                        showsCross: popover.form.dueDay.day !== ""
                        onCrossClicked: popover.form.dueDay.day = ""
                    }
                    TextBox {
                        visible: popover.form.dueDay.day !== ""
                        width: Localizer.hasTwelveHours ? 86 : 76
                        height: 26
                        text: popover.form.dueTime
                        readOnly: !popover.form.canEdit
                        isWrong: popover.form.dueTimeIsWrong
                        selectsOnFocus: true
                        horizontalAlignment: TextInput.AlignHCenter
                        placeholder: Localizer.text("all day", "journée")
                        spokenName: Localizer.text("Time, empty for the whole day", "Heure, vide pour la journée entière")
                        onEdited: text => popover.form.dueTime = text
                        onAccepted: popover.save()
                    }
                }
            }
            DueLine {
                width: parent.width
                label: Localizer.text("Alert", "Alerte")
                isPossible: popover.form.dueDay.day !== ""
                AlertChoice {
                    picker: popover.form.alert
                    overlays: popover.overlays
                    readOnly: !popover.form.canEdit
                    onAccepted: popover.save()
                }
            }
            DueLine {
                id: repeatLine
                width: parent.width
                label: Localizer.text("Repeat", "Répétition")
                isPossible: popover.form.dueDay.day !== ""
                ChoiceChip {
                    overlays: popover.overlays
                    subject: repeatLine.label
                    maximumWidth: 290
                    iconName: "repeat"
                    showsIcon: popover.form.repeatId !== "none"
                    text: popover.form.repeatTitle
                    chosenId: popover.form.repeatId
                    choices: () => popover.form.repeats()
                    onChosen: id => popover.form.repeatId = id
                }
            }
            FormLine {
                width: parent.width
                label: Localizer.text("Priority", "Priorité")
                Segmented {
                    spokenName: Localizer.text("Priority", "Priorité")
                    choices: popover.form.priorities
                    value: popover.form.priority
                    onChosen: rawValue => popover.form.priority = rawValue
                }
            }
            FormLine {
                width: parent.width
                last: true
                label: Localizer.text("List", "Liste")
                ChoiceChip {
                    overlays: popover.overlays
                    subject: Localizer.text("List", "Liste")
                    text: popover.form.listTitle
                    dotColor: popover.form.listColor
                    chosenId: popover.form.listId
                    choices: () => popover.form.lists()
                    onChosen: id => popover.form.listId = id
                }
            }
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
