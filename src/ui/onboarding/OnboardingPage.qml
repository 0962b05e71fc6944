import QtQuick
import Kestrant

// A page of the introduction: a title, a sentence, and what belongs to the page below them.
Item {
    id: page

    required property string title
    property string explanation
    default property alias content: body.data

    PlainText {
        id: heading
        width: parent.width
        height: 28
        verticalAlignment: Text.AlignVCenter
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
        y: 32
        width: parent.width
        text: page.explanation
        color: Theme.secondaryText
        font.pixelSize: 14
        wrapMode: Text.Wrap
    }
    Item {
        id: body
        y: words.visible ? words.y + words.height + 14 : 44
        width: parent.width
        height: parent.height - y
    }
}
