import QtQuick
import Kestrant

// The name of a day, and of its month where that is not plain.
Item {
    id: heading

    property string text
    property string month
    property bool isToday: false
    property color color: isToday ? Theme.accentText : Theme.secondaryText
    property int topPadding: 0

    height: Theme.headingHeight

    PlainText {
        x: 5
        y: heading.topPadding
        width: parent.width - x - (month.visible ? month.width + 6 : 0)
        height: parent.height - y
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        text: heading.text
        color: heading.color
        font.pixelSize: Theme.panelText(11)
        font.weight: Font.DemiBold
        font.letterSpacing: 0.04 * Theme.panelText(11)
        Accessible.ignored: true
    }
    PlainText {
        id: month
        visible: text !== ""
        anchors.right: parent.right
        anchors.rightMargin: 8
        y: heading.topPadding
        height: parent.height - y
        verticalAlignment: Text.AlignVCenter
        text: heading.month
        color: Theme.secondaryText
        font.pixelSize: Theme.panelText(11)
        Accessible.ignored: true
    }
}
