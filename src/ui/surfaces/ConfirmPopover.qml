import QtQuick
import Kestrant

// Asks before something is taken away. The keyboard begins on Cancel.
Popover {
    id: popover

    required property CalendarEditViewModel form
    property string title
    /// The name of the item in question.
    property string subject
    property string message
    property string confirmText
    /// Called when the person agrees; ends with the form's `removed` or `removalFailed`.
    property var confirm: null
    property bool isBusy: false
    property string errorText

    contentWidth: 300
    contentHeight: column.height
    padding: 16
    spokenName: title
    focus: true
    Accessible.description: subject + ". " + message

    function accept() {
        if (isBusy)
            return
        isBusy = true
        errorText = ""
        confirm()
    }

    Component.onCompleted: footer.cancelButton.forceActiveFocus(Qt.PopupFocusReason)
    Connections {
        target: popover.form
        function onRemoved() { popover.overlays.dismissAfterSaving(popover.overlayId) }
        function onRemovalFailed(message) {
            popover.isBusy = false
            popover.errorText = message
        }
    }

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
        PlainText {
            text: popover.subject
            width: parent.width
            wrapMode: Text.Wrap
            maximumLineCount: 3
            elide: Text.ElideRight
            color: Theme.text
            font.pixelSize: 13
            font.weight: Font.Medium
        }
        PlainText {
            text: popover.message
            width: parent.width
            wrapMode: Text.Wrap
            maximumLineCount: 6
            elide: Text.ElideRight
            color: Theme.chipText
            font.pixelSize: 13
            lineHeight: 18
            lineHeightMode: Text.FixedHeight
        }
        FormFooter {
            id: footer
            width: parent.width
            topPadding: 4
            destructive: true
            errorText: popover.errorText
            acceptText: popover.confirmText
            onAccepted: popover.accept()
            onCancelled: popover.close()
        }
    }
}
