import QtQuick
import Kestrant

// The line around whatever the keyboard acts on; hidden while the pointer is in use.
Rectangle {
    required property Item target
    property real distance: 2

    anchors.fill: parent
    anchors.margins: -distance
    color: "transparent"
    border.color: Theme.accent
    border.width: 2
    visible: target.activeFocus && Appearance.showsFocus
}
