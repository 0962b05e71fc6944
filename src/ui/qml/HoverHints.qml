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

    PlainText {
        visible: hints.panel.dueTodayCount > 0
        x: 14
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
        anchors.rightMargin: 11
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        text: hints.panel.nextEventText
        color: Theme.accentText
        font.pixelSize: Theme.panelText(12)
        font.weight: Font.DemiBold
    }
}
