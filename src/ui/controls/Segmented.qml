import QtQuick
import Kestrant

// Choices side by side.
ChoiceGroup {
    id: segmented

    property real minimumCellWidth: 0
    readonly property real cellWidth: Math.max(minimumCellWidth, Math.ceil(widest) + 22)
    property real widest: 0

    implicitWidth: choices.length * cellWidth + 4
    width: implicitWidth
    height: 26

    Rectangle {
        anchors.fill: parent
        radius: 8
        color: Theme.field
        border.color: Theme.outline
        border.width: Theme.contrast ? 1 : 0
    }
    Rectangle {
        visible: segmented.currentIndex >= 0
        x: 2 + segmented.currentIndex * segmented.cellWidth
        y: 2
        width: segmented.cellWidth
        height: parent.height - 4
        radius: 6.5
        color: Theme.white(Theme.contrast ? 0.3 : 0.14)
        Behavior on x { enabled: !Theme.still; NumberAnimation { duration: Theme.popoverDuration; easing.type: Easing.OutCubic } }
    }
    Row {
        x: 2
        height: parent.height
        Repeater {
            model: segmented.choices
            delegate: ChoiceItem {
                id: cell
                group: segmented
                width: segmented.cellWidth
                height: segmented.height

                PlainText {
                    anchors.centerIn: parent
                    text: cell.modelData.title
                    color: cell.isChosen ? Theme.text : Theme.secondaryText
                    font.pixelSize: 12
                    font.weight: Font.Medium
                    onImplicitWidthChanged: segmented.widest = Math.max(segmented.widest, implicitWidth)
                    Component.onCompleted: segmented.widest = Math.max(segmented.widest, implicitWidth)
                }
            }
        }
    }
    FocusRing { target: segmented; radius: 10 }
}
