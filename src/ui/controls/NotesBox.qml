import QtQuick
import Kestrant

// A few lines to write on. Tab leaves it, Ctrl+Enter accepts.
FocusScope {
    id: box

    property string text
    property string placeholder
    property string spokenName: placeholder
    property bool readOnly: false
    /// The keyboard writes here, and Enter begins a line.
    readonly property bool isUsed: input.activeFocus
    signal edited(string text)
    signal accepted

    height: 64

    Rectangle {
        anchors.fill: parent
        radius: 9
        color: Theme.field
        border.color: input.activeFocus ? Theme.accent : Theme.outline
        border.width: input.activeFocus ? 2 : Theme.contrast ? 1 : 0
    }
    Flickable {
        id: view
        anchors.fill: parent
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        anchors.topMargin: 2
        anchors.bottomMargin: 2
        contentHeight: input.height
        clip: true
        boundsBehavior: Flickable.StopAtBounds

        function follow(cursor) {
            if (cursor.y < contentY)
                contentY = Math.max(0, cursor.y - input.topPadding)
            else if (cursor.y + cursor.height > contentY + height)
                contentY = cursor.y + cursor.height + input.bottomPadding - height
        }

        TextEdit {
            id: input
            width: view.width
            height: Math.max(implicitHeight, view.height)
            topPadding: 6
            bottomPadding: 6
            focus: true
            activeFocusOnTab: true
            readOnly: box.readOnly
            text: box.text
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            color: Theme.text
            selectByMouse: true
            selectionColor: Theme.accent
            font.pixelSize: 13
            onTextChanged: if (text !== box.text) box.edited(text)
            onCursorRectangleChanged: view.follow(cursorRectangle)

            Accessible.role: Accessible.EditableText
            Accessible.name: box.spokenName
            Accessible.multiLine: true

            Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
            Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            Keys.onPressed: event => {
                if ((event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
                        && event.modifiers & Qt.ControlModifier) {
                    box.accepted()
                    event.accepted = true
                }
            }

            PlainText {
                y: input.topPadding
                width: parent.width
                visible: input.text === "" && input.preeditText === ""
                wrapMode: Text.Wrap
                text: box.placeholder
                color: Theme.secondaryText
                font: input.font
                Accessible.ignored: true
            }
        }
    }
}
