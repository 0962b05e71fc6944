import QtQuick
import Kestrant

// Below the choice where reminders and events live: the folder, and what is wrong with it.
Column {
    id: fields

    required property DataStoreViewModel store
    /// Only what cannot be done without.
    property bool compact: false

    spacing: compact ? 4 : 8

    /// Whether what was chosen is complete; else it says what is missing, and the keyboard is where that is written.
    function settle() {
        if (store.settle(box.text))
            return true
        box.forceActiveFocus(Qt.OtherFocusReason)
        return false
    }

    PlainText {
        visible: fields.store.kind === "default"
        width: parent.width
        text: fields.store.folder
        elide: Text.ElideMiddle
        color: Theme.secondaryText
        font.pixelSize: 12
    }
    PlainText {
        visible: fields.store.kind === "evolution"
        width: parent.width
        text: Localizer.text("Shared with the other programs that use this desktop’s calendar service.",
                             "Partagés avec les autres programmes qui utilisent le service de calendrier du bureau.")
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: 12
    }
    Item {
        visible: fields.store.kind === "folder"
        width: parent.width
        height: 30

        TextBox {
            id: box
            width: parent.width - (pick.visible ? pick.width + 8 : 0)
            // No binding: it would undo what is written whenever something else about the store changes.
            Component.onCompleted: text = fields.store.folder
            isWrong: fields.store.problem !== ""
            placeholder: Localizer.text("Folder, such as ~/calendars", "Dossier, par exemple ~/agendas")
            spokenName: Localizer.text("Folder of reminders and events", "Dossier des rappels et des événements")
            onAccepted: commit()
            onActiveFocusChanged: if (!activeFocus) commit()

            function commit() {
                if (visible && text !== fields.store.folder && text.trim() !== "")
                    fields.store.chooseFolder(text)
            }
        }
        PushButton {
            id: pick
            visible: fields.store.canPick
            anchors.right: parent.right
            text: Localizer.text("Choose…", "Choisir…")
            onClicked: fields.store.pickFolder()
        }
    }
    Connections {
        target: fields.store
        // Typing has parted the box from what is stored.
        function onChanged() { if (fields.store.problem === "") box.text = fields.store.folder }
    }
    PlainText {
        visible: text !== ""
        width: parent.width
        text: fields.store.problem
        wrapMode: Text.Wrap
        color: Theme.overdue
        font.pixelSize: 12
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
    PlainText {
        visible: !fields.compact && fields.store.kind === "folder" && fields.store.problem === ""
        width: parent.width
        text: Localizer.text("A folder for each list, a file for each item: other programs can share and synchronise it.",
                             "Un dossier par liste, un fichier par élément : d’autres programmes peuvent le partager et le synchroniser.")
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: 12
    }
}
