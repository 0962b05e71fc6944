import QtQuick
import Kestrant

// A page of the introduction: a title, a sentence, and what belongs to the page below them.
Item {
    id: page

    required property string title
    property string explanation
    property bool centered: false
    default property alias content: body.data

    PlainText {
        id: heading
        y: page.centered ? 12 : 0
        width: parent.width
        horizontalAlignment: page.centered ? Text.AlignHCenter : Text.AlignLeft
        text: page.title
        color: Theme.text
        font.pixelSize: 22
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    PlainText {
        id: words
        visible: text !== ""
        anchors.top: heading.bottom
        anchors.topMargin: 8
        anchors.horizontalCenter: parent.horizontalCenter
        width: page.centered ? Math.min(parent.width, 480) : parent.width
        horizontalAlignment: heading.horizontalAlignment
        text: page.explanation
        color: Theme.chipText
        font.pixelSize: 14
        lineHeight: 1.35
        wrapMode: Text.Wrap
    }
    Item {
        id: body
        anchors.top: words.visible ? words.bottom : heading.bottom
        anchors.topMargin: 16
        anchors.bottom: parent.bottom
        width: parent.width
    }
}
