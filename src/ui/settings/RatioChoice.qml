import QtQuick
import Kestrant

// How two modules share the panel's width, as small pictures to choose from; a title is such as "70/30".
ChoiceGroup {
    id: root

    width: choices.length * 36 - 6
    height: 26

    Row {
        spacing: 6
        Repeater {
            model: root.choices
            ChoiceItem {
                id: cell
                group: root
                readonly property real share: parseInt(modelData.title) / 100
                width: 30
                height: 26

                Rectangle {
                    anchors.fill: parent
                    radius: 7
                    color: cell.hovered ? Theme.controlHovered : Theme.control
                    border.color: cell.isChosen ? Theme.accent : Theme.outline
                    border.width: cell.isChosen ? 2 : Theme.contrast ? 1 : 0
                }

                Rectangle {
                    x: 5
                    y: 6
                    width: Math.round(18 * cell.share)
                    height: 14
                    radius: 2
                    color: Theme.chipText
                }
                Rectangle {
                    x: 5 + Math.round(18 * cell.share) + 2
                    y: 6
                    width: 18 - Math.round(18 * cell.share)
                    height: 14
                    radius: 2
                    color: Theme.white(0.35)
                }
            }
        }
    }
    FocusRing { target: root; radius: 9 }
}
