import QtQuick
import Kestrant

// An error message over the panel. Enter and Escape close it.
Popover {
    id: popover

    property string title
    property string message

    contentWidth: 300
    contentHeight: column.height
    padding: 16
    spokenName: title
    focus: true

    Keys.onReturnPressed: close()
    Keys.onEnterPressed: close()
    Component.onCompleted: understood.forceActiveFocus(Qt.PopupFocusReason)

    Column {
        id: column
        width: parent.width
        spacing: 8

        PlainText {
            text: popover.title
            width: parent.width
            wrapMode: Text.Wrap
            maximumLineCount: 3
            elide: Text.ElideRight
            color: Theme.text
            font.pixelSize: 14
            font.weight: Font.DemiBold
        }
        ScrolledText {
            text: popover.message
            width: parent.width
            maximumHeight: 200
            color: Theme.chipText
            pixelSize: 13
        }
        PushButton {
            id: understood
            anchors.right: parent.right
            text: Localizer.text("OK", "OK")
            primary: true
            onClicked: popover.close()
        }
    }
}
