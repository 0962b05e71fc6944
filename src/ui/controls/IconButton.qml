import QtQuick
import Kestrant

Pressable {
    id: button

    required property string iconName
    property bool checked: false
    /// A mark on the button: there is something to look at behind it.
    property bool warns: false
    property string tip: spokenName

    width: 26
    height: 24
    ringRadius: 8
    ringDistance: 1

    Rectangle {
        anchors.fill: parent
        radius: 7
        color: button.checked || button.hovered ? Theme.controlHovered : Theme.white(0)
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }
    }
    Icon {
        anchors.centerIn: parent
        name: button.iconName
        color: button.hovered || button.checked ? Theme.text : Theme.chipText
    }
    Rectangle {
        visible: button.warns
        anchors.right: parent.right
        anchors.rightMargin: 3
        y: 3
        width: 6
        height: 6
        radius: 3
        color: Theme.flag
    }
}
