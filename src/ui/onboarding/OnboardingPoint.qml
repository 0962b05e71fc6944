import QtQuick
import Kestrant

// One of three things a page says side by side: a sign or the keys of a shortcut, a title and a sentence.
Item {
    id: point

    property string iconName
    property var keys: []
    required property string title
    required property string explanation

    width: 208
    height: words.y + words.height

    Accessible.role: Accessible.StaticText
    Accessible.name: (keys.length ? keys.join(" ") + ": " : "") + title + ", " + explanation

    Icon {
        visible: point.iconName !== ""
        x: -2
        width: 22
        height: 22
        strokeWidth: 1.5
        name: point.iconName
        color: Theme.link
    }
    KeyCaps { visible: point.keys.length > 0; keys: point.keys }
    PlainText {
        id: heading
        y: 30
        width: parent.width
        text: point.title
        color: Theme.text
        font.pixelSize: 13
        font.weight: Font.DemiBold
        Accessible.ignored: true
    }
    PlainText {
        id: words
        y: 50
        width: parent.width
        text: point.explanation
        color: Theme.secondaryText
        font.pixelSize: 13
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
}
