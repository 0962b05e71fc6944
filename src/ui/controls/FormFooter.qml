import QtQuick
import Kestrant

// The end of a form: what went wrong, what the keyboard does, and the two ways out.
Column {
    id: footer

    /// A shortcut that the hint explains.
    property var keys: []
    property string hint
    property string errorText
    property string acceptText
    property bool canAccept: true
    property bool destructive: false
    property alias acceptButton: acceptButton
    property alias cancelButton: cancelButton
    signal accepted
    signal cancelled

    spacing: 12

    ScrolledText {
        visible: text !== ""
        width: parent.width
        text: footer.errorText
        color: Theme.overdue
    }
    Item {
        width: parent.width
        height: 32
        Row {
            anchors.verticalCenter: parent.verticalCenter
            anchors.verticalCenterOffset: 1
            spacing: 8
            KeyCaps {
                visible: footer.keys.length > 0
                anchors.verticalCenter: parent.verticalCenter
                capHeight: 20
                keys: footer.keys
            }
            PlainText {
                anchors.verticalCenter: parent.verticalCenter
                text: footer.hint
                color: Theme.secondaryText
                font.pixelSize: 11
            }
        }
        Row {
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            spacing: 8
            PushButton {
                id: cancelButton
                text: Localizer.text("Cancel", "Annuler")
                onClicked: footer.cancelled()
            }
            PushButton {
                id: acceptButton
                text: footer.acceptText
                primary: !footer.destructive
                destructive: footer.destructive
                enabled: footer.canAccept
                onClicked: footer.accepted()
            }
        }
    }
}
