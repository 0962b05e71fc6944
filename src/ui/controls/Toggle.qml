import QtQuick
import Kestrant

FocusScope {
    id: toggle

    property bool checked: false
    required property string spokenName
    signal toggled(bool checked)

    width: 34
    height: 20
    activeFocusOnTab: true

    Accessible.role: Accessible.CheckBox
    Accessible.name: spokenName
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.focusable: enabled
    Accessible.onToggleAction: if (enabled) toggled(!checked)
    Accessible.onPressAction: if (enabled) toggled(!checked)
    Keys.onSpacePressed: toggled(!checked)

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
    TapHandler { onTapped: toggle.toggled(!toggle.checked) }
    FocusRing { target: toggle; radius: 12 }
}
