import QtQuick
import Kestrant

Pressable {
    id: toggle

    property bool checked: false
    signal toggled(bool checked)

    width: 34
    height: 20
    // Enter is for the form that it stands in.
    keys: [Qt.Key_Space]
    ringRadius: 12
    onClicked: toggled(!checked)

    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: if (enabled) clicked()

    Rectangle {
        anchors.fill: parent
        radius: 10
        color: toggle.checked ? Theme.accent : Theme.white(Theme.contrast ? 0.3 : 0.18)
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }
    }
    Rectangle {
        x: toggle.checked ? parent.width - width - 2 : 2
        y: 2
        width: 16
        height: 16
        radius: 8
        color: "white"
        Behavior on x { enabled: !Theme.still; NumberAnimation { duration: Theme.popoverDuration; easing.type: Easing.OutCubic } }
    }
}
