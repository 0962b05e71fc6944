import QtQuick
import Kestrant

// A text of any length that takes no more than its share of the screen: longer, it scrolls, by the arrow keys too.
ScrollArea {
    id: area

    property alias text: words.text
    property alias color: words.color
    property alias pixelSize: words.font.pixelSize
    property real maximumHeight: 96

    height: Math.min(contentHeight, maximumHeight)
    contentHeight: words.height
    activeFocusOnTab: interactive
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    function scroll(distance) {
        contentY = Math.max(0, Math.min(contentY + distance, contentHeight - height))
    }
    Keys.onUpPressed: scroll(-32)
    Keys.onDownPressed: scroll(32)

    PlainText {
        id: words
        // Beside it stands where in the text one is.
        width: area.width - 6
        wrapMode: Text.Wrap
        font.pixelSize: 12
        Accessible.ignored: true
    }
    FocusRing { parent: area; target: area; distance: 0; radius: 4 }
}
