import QtQuick
import Kestrant

FocusScope {
    id: button

    required property string iconName
    required property string spokenName
    property bool checked: false
    /// A mark on the button: there is something to look at behind it.
    property bool warns: false
    property string tip: spokenName
    readonly property bool hovered: pointer.hovered
    signal clicked

    width: 26
    height: 24
    activeFocusOnTab: true

    Accessible.role: Accessible.Button
    Accessible.name: spokenName
    Accessible.focusable: enabled
    Accessible.onPressAction: if (enabled) clicked()

    Keys.onPressed: event => {
        if (event.key === Qt.Key_Space || event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
            clicked()
            event.accepted = true
        }
    }

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
    HoverHandler { id: pointer; enabled: button.enabled }
    TapHandler { onTapped: button.clicked() }
    FocusRing { target: button; radius: 8; distance: 1 }
}
