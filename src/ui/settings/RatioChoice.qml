import QtQuick
import Kestrant

// How two modules share the panel's width, as small pictures to choose from: {rawValue, title} each, a title such as "70/30".
FocusScope {
    id: root

    required property string spokenName
    property var choices: []
    property string value
    signal chosen(string rawValue)

    readonly property int currentIndex: choices.findIndex(choice => choice.rawValue === value)

    width: choices.length * 36 - 6
    height: 26
    activeFocusOnTab: true

    Accessible.role: Accessible.Grouping
    Accessible.name: spokenName

    Keys.onLeftPressed: if (currentIndex > 0) chosen(choices[currentIndex - 1].rawValue)
    Keys.onRightPressed: if (currentIndex < choices.length - 1) chosen(choices[currentIndex + 1].rawValue)

    Row {
        spacing: 6
        Repeater {
            model: root.choices
            Rectangle {
                id: cell
                required property var modelData
                required property int index
                readonly property bool isChosen: index === root.currentIndex
                readonly property real share: parseInt(modelData.title) / 100
                width: 30
                height: 26
                radius: 7
                color: pointer.hovered ? Theme.controlHovered : Theme.control
                border.color: isChosen ? Theme.accent : Theme.outline
                border.width: isChosen ? 2 : Theme.contrast ? 1 : 0

                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData.title
                Accessible.checkable: true
                Accessible.checked: isChosen
                Accessible.focusable: root.enabled
                Accessible.focused: isChosen && root.activeFocus
                Accessible.onPressAction: if (root.enabled) root.chosen(modelData.rawValue)

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
                HoverHandler { id: pointer }
                TapHandler { onTapped: root.chosen(cell.modelData.rawValue) }
            }
        }
    }
    FocusRing { target: root; radius: 9 }
}
