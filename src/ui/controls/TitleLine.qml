import QtQuick
import Kestrant

// A line to write a title on, in which words that were understood have a colour and a ground.
FocusScope {
    id: line

    property string text
    /// {start, length, color} each.
    property var words: []
    property string placeholder
    property string spokenName: placeholder
    /// What Tab adds at the end; empty for nothing.
    property string completion
    property alias readOnly: input.readOnly
    signal edited(string text)
    signal accepted
    /// Ctrl and Enter.
    signal acceptedForMore

    height: 44

    Rectangle {
        anchors.fill: parent
        radius: 12
        color: Theme.contrast ? Theme.field : Theme.well
        border.color: input.activeFocus ? Theme.accent : Theme.outline
        border.width: input.activeFocus ? 2 : Theme.contrast ? 1 : 0
    }
    Flickable {
        id: view
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        contentWidth: input.width
        clip: true
        interactive: false

        function follow(cursor) {
            const end = Math.max(0, input.width - width)
            if (cursor.x < contentX)
                contentX = Math.max(0, cursor.x - 24)
            else if (cursor.x + cursor.width > contentX + width)
                contentX = Math.min(end, cursor.x + cursor.width - width + 24)
            contentX = Math.min(contentX, end)
        }

        Repeater {
            model: line.words
            delegate: Rectangle {
                required property var modelData
                readonly property rect begin: line.placeOf(input.text, modelData.start)
                x: begin.x - 2
                y: begin.y - 2
                width: line.placeOf(input.text, modelData.start + modelData.length).x - begin.x + 4
                height: begin.height + 4
                radius: 5
                color: Qt.alpha(modelData.color, 0.14)
            }
        }
        TextEdit {
            id: input
            width: Math.max(view.width, Math.ceil(implicitWidth) + 2)
            height: view.height
            verticalAlignment: TextEdit.AlignVCenter
            focus: true
            activeFocusOnTab: true
            text: line.text
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.NoWrap
            color: Theme.text
            selectByMouse: true
            selectionColor: Theme.accent
            font.pixelSize: 15
            onTextChanged: {
                // A line has no breaks, whatever is pasted.
                const flat = text.replace(/\s*[\n\r\u2028\u2029]+\s*/g, " ")
                if (flat !== text) {
                    text = flat
                    cursorPosition = flat.length
                }
                if (flat !== line.text)
                    line.edited(flat)
                else
                    cursorPosition = length
            }
            onCursorRectangleChanged: view.follow(cursorRectangle)
            onWidthChanged: view.follow(cursorRectangle)

            Accessible.role: Accessible.EditableText
            Accessible.name: line.spokenName

            Keys.onTabPressed: {
                if (line.completion !== "" && cursorPosition === length)
                    insert(length, line.completion)
                else
                    nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
            }
            Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            Keys.onUpPressed: cursorPosition = 0
            Keys.onDownPressed: cursorPosition = length
            Keys.onPressed: event => {
                if (event.key !== Qt.Key_Return && event.key !== Qt.Key_Enter)
                    return
                event.accepted = true
                if (event.modifiers & Qt.ControlModifier)
                    line.acceptedForMore()
                else
                    line.accepted()
            }

            PlainText {
                width: view.width
                height: parent.height
                visible: input.text === "" && input.preeditText === ""
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                text: line.placeholder
                color: Theme.secondaryText
                font: input.font
                Accessible.ignored: true
            }
        }
        PlainText {
            visible: line.completion !== "" && input.activeFocus && input.cursorPosition === input.length
            x: input.cursorRectangle.x + 1
            y: input.cursorRectangle.y
            text: line.completion
            color: Theme.secondaryText
            font: input.font
            Accessible.ignored: true
        }
        WordColors {
            textDocument: input.textDocument
            words: line.words
        }
    }

    /// Where the letter at an index of the shown text stands; depends on the text.
    function placeOf(shown, index) {
        return input.positionToRectangle(Math.min(index, shown.length))
    }
}
