import QtQuick
import Kestrant

// The keys of a shortcut, side by side.
Row {
    id: caps

    required property var keys
    property int capHeight: 24

    spacing: 4
    Repeater {
        model: caps.keys
        Rectangle {
            required property string modelData
            width: Math.max(24, Math.ceil(letter.implicitWidth) + 16)
            height: caps.capHeight
            radius: 6
            color: Theme.control
            border.color: Theme.contrast ? Theme.border : "transparent"
            PlainText {
                id: letter
                anchors.centerIn: parent
                text: parent.modelData
                color: Theme.text
                font.pixelSize: 12
                font.weight: Font.Medium
                Accessible.ignored: true
            }
        }
    }
}
