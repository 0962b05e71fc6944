import QtQuick
import Kestrant

// The kinds of period side by side, each as wide as its word.
ChoiceGroup {
    id: tabs

    property real cellPadding: 12
    property int pixelSize: 12

    implicitWidth: row.width + 4
    width: implicitWidth
    height: 24
    spokenName: Localizer.text("Period", "Période")

    Rectangle {
        anchors.fill: parent
        radius: 8
        color: Theme.white(Theme.contrast ? 0.16 : 0.10)
        border.color: Theme.outline
        border.width: Theme.contrast ? 1 : 0
    }
    Rectangle {
        readonly property Item cell: cells.count > 0 && tabs.currentIndex >= 0 ? cells.itemAt(tabs.currentIndex) : null
        visible: cell !== null
        x: 2 + (cell ? cell.x : 0)
        y: 2
        width: cell ? cell.width : 0
        height: parent.height - 4
        radius: 6.5
        color: Theme.white(Theme.contrast ? 0.34 : 0.18)
        Behavior on x { enabled: !Theme.still; NumberAnimation { duration: Theme.popoverDuration; easing.type: Easing.OutCubic } }
    }
    Row {
        id: row
        x: 2
        height: parent.height
        Repeater {
            id: cells
            model: tabs.choices
            delegate: ChoiceItem {
                id: cell
                group: tabs
                width: Math.ceil(word.implicitWidth) + 2 * tabs.cellPadding
                height: row.height

                PlainText {
                    id: word
                    anchors.centerIn: parent
                    text: cell.modelData.title
                    color: cell.isChosen ? Theme.text : Theme.chipText
                    font.pixelSize: tabs.pixelSize
                    font.weight: cell.isChosen ? Font.DemiBold : Font.Medium
                    Accessible.ignored: true
                }
            }
        }
    }
    FocusRing { target: tabs; radius: 10 }
}
