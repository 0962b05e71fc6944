import QtQuick
import Kestrant

// A label with what belongs to it on the right, above a thin line.
Item {
    id: line

    required property string label
    property bool last: false
    default property alias control: holder.data

    height: 36

    PlainText {
        anchors.verticalCenter: parent.verticalCenter
        text: line.label
        color: Theme.text
        font.pixelSize: 13
        Accessible.ignored: true
    }
    Item {
        id: holder
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: childrenRect.width
        height: childrenRect.height
        // It is still to be read.
        opacity: enabled ? 1 : 0.7
    }
    Rectangle {
        visible: !line.last
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.separator
    }
}
