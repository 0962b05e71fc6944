import QtQuick
import Kestrant

// Beside the camera while the pointer rests on the notch: what is due today, and when the next event begins.
Item {
    id: hints

    required property PanelViewModel panel
    readonly property real sideWidth: (panel.shapeWidth - panel.cameraSafeWidth) / 2 - panel.earRadius
    readonly property bool shown: panel.phase === 1

    width: panel.shapeWidth - 2 * panel.earRadius
    height: panel.restingHeight
    opacity: shown ? 1 : 0
    visible: opacity > 0
    Behavior on opacity { enabled: !Theme.still; NumberAnimation { duration: Theme.hoverDuration } }

    Rectangle {
        id: circle
        visible: hints.panel.dueTodayCount > 0 && !hints.panel.hasCamera
        x: 13
        width: 12
        height: 12
        radius: 6
        anchors.verticalCenter: parent.verticalCenter
        color: "transparent"
        border.color: Theme.chipText
        border.width: 1.5
    }
    PlainText {
        id: word
        visible: circle.visible
        anchors.left: number.right
        anchors.leftMargin: 6
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        text: Localizer.text("today", "aujourd’hui")
        color: Theme.secondaryText
        font.pixelSize: Theme.panelText(12)
        Accessible.ignored: true
    }
    PlainText {
        id: number
        visible: hints.panel.dueTodayCount > 0
        x: circle.visible ? 32 : 14
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        text: hints.panel.dueTodayCount
        color: Theme.text
        font.pixelSize: Theme.panelText(12)
        font.weight: Font.DemiBold
        Accessible.role: Accessible.StaticText
        Accessible.name: Localizer.text("%1 due today", "%1 pour aujourd’hui").arg(hints.panel.dueTodayCount)
    }
    PlainText {
        anchors.right: parent.right
        anchors.rightMargin: hints.panel.hasCamera ? 11 : 14
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        text: hints.panel.nextEventText
        color: Theme.accentText
        font.pixelSize: Theme.panelText(12)
        font.weight: Font.DemiBold
    }
}
