import QtQuick
import Kestrant

// A new reminder or event: its title first, the rest below. Enter adds, Escape closes.
Popover {
    id: quickAdd

    required property QuickAddViewModel form
    required property NewEventViewModel newEvent
    property alias picksDate: reminderFields.picksDate

    readonly property bool addsEvent: form.type === "event"
    readonly property var current: addsEvent ? newEvent : form

    contentWidth: 372
    contentHeight: column.height
    spokenName: addsEvent ? Localizer.text("New event", "Nouvel événement")
                          : Localizer.text("New reminder", "Nouveau rappel")
    focus: true

    function submit() {
        if (current.canSubmit)
            current.submit()
    }
    function choose(type) {
        const title = current.title
        form.type = type
        current.title = title
    }
    /// Gives up what was written in either form.
    function discard() {
        form.discard()
        newEvent.discard()
    }
    function added() {
        discard()
        overlays.dismissAfterSaving(overlayId)
    }

    // It is closed by the surface itself.
    Keys.onEscapePressed: discard()
    Keys.onReturnPressed: submit()
    Keys.onEnterPressed: submit()
    Component.onCompleted: {
        form.begin()
        newEvent.begin()
        picksDate = form.dueDay.day !== ""
        titleBox.forceActiveFocus(Qt.PopupFocusReason)
    }
    Connections {
        target: quickAdd.form
        function onAdded() { quickAdd.added() }
    }
    Connections {
        target: quickAdd.newEvent
        function onAdded() { quickAdd.added() }
    }

    Column {
        id: column
        width: parent.width
        spacing: 12

        Segmented {
            id: tabs
            height: 30
            minimumCellWidth: (parent.width - 4) / 2
            spokenName: Localizer.text("What to add", "Que faut-il ajouter")
            choices: [{ rawValue: "reminder", title: Localizer.text("Reminder", "Rappel") },
                      { rawValue: "event", title: Localizer.text("Event", "Événement") }]
            value: quickAdd.form.type
            onChosen: rawValue => {
                quickAdd.choose(rawValue)
                if (!activeFocus)
                    titleBox.forceActiveFocus(Qt.OtherFocusReason)
            }
        }
        TextBox {
            id: titleBox
            width: parent.width
            height: 42
            focus: true
            pixelSize: 15
            text: quickAdd.current.title
            placeholder: quickAdd.addsEvent ? Localizer.text("Event title", "Titre de l’événement")
                                            : Localizer.text("What to remember?", "Que faut-il retenir ?")
            spokenName: Localizer.text("Title", "Titre")
            onEdited: text => quickAdd.current.title = text
            onAccepted: quickAdd.submit()
        }
        NewReminderFields {
            id: reminderFields
            visible: !quickAdd.addsEvent
            width: parent.width
            form: quickAdd.form
            overlays: quickAdd.overlays
            onAccepted: quickAdd.submit()
            onTitleWanted: titleBox.forceActiveFocus(Qt.OtherFocusReason)
        }
        NewEventFields {
            visible: quickAdd.addsEvent
            width: parent.width
            form: quickAdd.newEvent
            overlays: quickAdd.overlays
            onAccepted: quickAdd.submit()
        }
        FormFooter {
            width: parent.width
            hint: Localizer.text("Enter adds · Esc closes", "Entrée ajoute · Échap ferme")
            errorText: quickAdd.current.errorText
            acceptText: Localizer.text("Add", "Ajouter")
            canAccept: quickAdd.current.canSubmit
            onAccepted: quickAdd.submit()
            onCancelled: {
                quickAdd.discard()
                quickAdd.close()
            }
        }
    }
}
