import QtQuick
import Kestrant

Pressable {
    id: button

    required property string text
    property string spokenDescription
    property bool primary: false
    property bool destructive: false

    spokenName: text
    implicitWidth: Math.max(60, Math.ceil(label.implicitWidth) + 28)
    width: implicitWidth
    height: 30
    opacity: enabled ? 1 : 0.45
    ringRadius: 11

    Accessible.description: spokenDescription

    Rectangle {
        anchors.fill: parent
        radius: 9
        readonly property color base: button.primary ? Theme.primaryFill
                                    : button.destructive ? Theme.destructiveFill : Theme.control
        color: !button.hovered ? base
             : button.primary || button.destructive ? Qt.lighter(base, 1.08) : Theme.controlHovered
        border.color: Theme.outline
        border.width: Theme.contrast ? 1 : 0
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }
    }
    PlainText {
        id: label
        anchors.centerIn: parent
        text: button.text
        color: Theme.text
        font.pixelSize: 13
        font.weight: Font.DemiBold
    }
}
