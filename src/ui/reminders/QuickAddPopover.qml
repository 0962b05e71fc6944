import QtQuick
import Kestrant

// A new reminder or event: its title first, the rest below. Enter adds, with Ctrl for one more; Escape closes.
Popover {
    id: quickAdd

    required property QuickAddViewModel form
    required property NewEventViewModel newEvent
    /// The day stands where the form stood, and leads back to it.
    property bool picksDate: false

    readonly property bool addsEvent: form.type === "event"
    readonly property var current: addsEvent ? newEvent : form
    property bool staysOpen: false

    contentWidth: 460
    contentHeight: column.height
    spokenName: picksDate ? Localizer.text("Due date", "Échéance")
              : addsEvent ? Localizer.text("New event", "Nouvel événement")
                          : Localizer.text("New reminder", "Nouveau rappel")
    focus: true

    function submit(forMore) {
        if (!current.canSubmit)
            return
        staysOpen = forMore === true
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
        picksDate = false
        if (staysOpen)
            titleLine.forceActiveFocus(Qt.OtherFocusReason)
        else
            overlays.dismissAfterSaving(overlayId)
    }
    function pickDay() {
        if (form.dueDay.day === "")
            form.dueDay.day = form.dueDay.today
        picksDate = true
        duePicker.focusMonth()
    }
    function leaveDay() {
        picksDate = false
        titleLine.forceActiveFocus(Qt.OtherFocusReason)
    }

    function leave() {
        if (picksDate) {
            leaveDay()
        } else {
            discard()
            close()
        }
    }

    Keys.onReturnPressed: event => submit((event.modifiers & Qt.ControlModifier) !== 0)
    Keys.onEnterPressed: event => submit((event.modifiers & Qt.ControlModifier) !== 0)
    Component.onCompleted: {
        form.begin()
        newEvent.begin()
        titleLine.forceActiveFocus(Qt.PopupFocusReason)
    }
    Connections {
        target: quickAdd.form
        function onAdded() {
            if (!quickAdd.addsEvent)
                quickAdd.added()
        }
    }
    Connections {
        target: quickAdd.newEvent
        function onAdded() {
            if (quickAdd.addsEvent)
                quickAdd.added()
        }
    }

    Column {
        id: column
        width: parent.width
        spacing: 12

        Item {
            width: parent.width
            height: 30
            Segmented {
                visible: !quickAdd.picksDate
                height: 30
                minimumCellWidth: 96
                spokenName: Localizer.text("What to add", "Que faut-il ajouter")
                choices: [{ rawValue: "reminder", title: Localizer.text("Reminder", "Rappel") },
                          { rawValue: "event", title: Localizer.text("Event", "Événement") }]
                value: quickAdd.form.type
                onChosen: rawValue => {
                    quickAdd.choose(rawValue)
                    if (!activeFocus)
                        titleLine.forceActiveFocus(Qt.OtherFocusReason)
                }
            }
            Row {
                visible: quickAdd.picksDate
                height: parent.height
                spacing: 6
                IconButton {
                    anchors.verticalCenter: parent.verticalCenter
                    iconName: "chevronLeft"
                    spokenName: Localizer.text("Back", "Retour")
                    onClicked: quickAdd.leaveDay()
                }
                PlainText {
                    height: parent.height
                    verticalAlignment: Text.AlignVCenter
                    text: quickAdd.form.dueText !== "" ? quickAdd.form.dueText : Localizer.text("Due date", "Échéance")
                    color: Theme.text
                    font.pixelSize: 15
                    font.weight: Font.DemiBold
                }
            }
        }
        TitleLine {
            id: titleLine
            visible: !quickAdd.picksDate
            width: parent.width
            focus: true
            text: quickAdd.current.title
            readOnly: !quickAdd.current.canEdit
            words: quickAdd.current.pieces.map(piece => ({
                start: piece.start, length: piece.length, color: Theme.understood(piece.kind) }))
            completion: quickAdd.current.completion
            placeholder: quickAdd.addsEvent ? Localizer.text("Event title", "Titre de l’événement")
                                            : Localizer.text("What to remember?", "Que faut-il retenir ?")
            spokenName: Localizer.text("Title", "Titre")
            onEdited: text => quickAdd.current.title = text
            onAccepted: quickAdd.submit(false)
            onAcceptedForMore: quickAdd.submit(true)
        }
        QuickAddFacts {
            visible: !quickAdd.addsEvent && !quickAdd.picksDate
            width: parent.width
            form: quickAdd.form
            overlays: quickAdd.overlays
            onDayWanted: quickAdd.pickDay()
            onEventWanted: quickAdd.choose("event")
            onAccepted: quickAdd.submit(false)
            onTitleWanted: titleLine.forceActiveFocus(Qt.OtherFocusReason)
        }
        DuePicker {
            id: duePicker
            visible: quickAdd.picksDate
            width: parent.width
            picker: quickAdd.form.dueDay
            timeText: quickAdd.form.timeText
            onTimeEdited: text => quickAdd.form.timeText = text
            onAccepted: quickAdd.leaveDay()
        }
        NewEventFields {
            visible: quickAdd.addsEvent && !quickAdd.picksDate
            width: parent.width
            form: quickAdd.newEvent
            overlays: quickAdd.overlays
            onAccepted: quickAdd.submit(false)
        }
        FormFooter {
            width: parent.width
            keys: ["Ctrl", "↵"]
            hint: Localizer.text("adds another", "ajoute, et encore un")
            errorText: quickAdd.current.errorText
            acceptText: Localizer.text("Add", "Ajouter")
            canAccept: quickAdd.current.canSubmit
            onAccepted: quickAdd.submit(false)
            onCancelled: quickAdd.leave()
        }
    }
    IconButton {
        anchors.right: parent.right
        y: 3
        iconName: "close"
        spokenName: Localizer.text("Close", "Fermer")
        tip: ""
        onClicked: {
            quickAdd.picksDate = false
            quickAdd.leave()
        }
    }
}
