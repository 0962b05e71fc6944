import QtQuick
import Kestrant

// Tells the name of the control under the pointer, below it or where there is no room above it, after a moment.
Rectangle {
    id: tooltip

    /// Suppresses tooltips, as while a popover is open.
    property bool silent: false
    property Item subject: null

    /// To be called whenever `item.hovered` changes; `item.tip` is told.
    function follow(item) {
        if (item.hovered && item.tip !== "") {
            subject = item
            delay.restart()
        } else if (subject === item) {
            subject = null
        }
    }

    readonly property point place: subject && parent
        ? subject.mapToItem(parent, subject.width / 2, subject.height + 5) : Qt.point(0, 0)

    x: Math.round(Math.max(12, Math.min(place.x - width / 2, (parent ? parent.width : 0) - width - 12)))
    y: Math.round(subject && parent && place.y + height > parent.height
                  ? subject.mapToItem(parent, 0, -5).y - height : place.y)
    z: 10
    width: Math.min(Math.ceil(words.implicitWidth) + 16, (parent ? parent.width : 0) - 24)
    height: 22
    radius: 7
    color: "#2a2b31"
    border.color: Theme.border
    visible: subject !== null && !delay.running && !silent

    Timer { id: delay; interval: 600 }
    PlainText {
        id: words
        anchors.centerIn: parent
        width: parent.width - 16
        elide: Text.ElideRight
        text: tooltip.subject ? tooltip.subject.tip : ""
        color: Theme.text
        font.pixelSize: Theme.panelText(11)
    }
}
