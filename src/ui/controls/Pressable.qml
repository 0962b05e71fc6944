import QtQuick
import Kestrant

// What a click, a key or assistive technology presses: the keyboard, the pointer and the role of every button.
FocusScope {
    id: control

    required property string spokenName
    /// The keys that press it.
    property var keys: [Qt.Key_Space, Qt.Key_Return, Qt.Key_Enter]
    readonly property bool hovered: pointer.hovered
    property real ringRadius: height / 2
    property real ringDistance: 2
    signal clicked

    /// A tap at a place in it.
    function tap(place) {
        clicked()
    }

    activeFocusOnTab: enabled

    Accessible.role: Accessible.Button
    Accessible.name: spokenName
    Accessible.focusable: enabled
    Accessible.onPressAction: if (enabled) clicked()

    Keys.onPressed: event => {
        if (keys.includes(event.key)) {
            clicked()
            event.accepted = true
        }
    }
    HoverHandler { id: pointer; enabled: control.enabled }
    TapHandler { onTapped: point => control.tap(point.position) }
    FocusRing {
        target: control
        z: 1
        radius: control.ringRadius
        distance: control.ringDistance
    }
}
