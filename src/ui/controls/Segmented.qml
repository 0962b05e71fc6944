import QtQuick
import Kestrant

// One of a few choices side by side: {rawValue, title} each.
FocusScope {
    id: segmented

    property var choices: []
    property var value
    property string spokenName
    property real minimumCellWidth: 0
    signal chosen(var rawValue)

    readonly property int currentIndex: choices.findIndex(choice => choice.rawValue === value)
    readonly property real cellWidth: Math.max(minimumCellWidth, Math.ceil(widest) + 22)
    property real widest: 0

    implicitWidth: choices.length * cellWidth + 4
    width: implicitWidth
    height: 26
    activeFocusOnTab: true

    Accessible.role: Accessible.Grouping
    Accessible.name: spokenName

    Keys.onLeftPressed: if (currentIndex > 0) chosen(choices[currentIndex - 1].rawValue)
    Keys.onRightPressed: if (currentIndex < choices.length - 1) chosen(choices[currentIndex + 1].rawValue)

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
            delegate: Item {
                id: cell
                required property var modelData
                required property int index
                readonly property bool isChosen: segmented.currentIndex === index
                width: segmented.cellWidth
                height: segmented.height

                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData.title
                Accessible.checkable: true
                Accessible.checked: isChosen
                Accessible.focusable: segmented.enabled
                Accessible.focused: isChosen && segmented.activeFocus
                Accessible.onPressAction: if (segmented.enabled) segmented.chosen(modelData.rawValue)

                PlainText {
                    anchors.centerIn: parent
                    text: cell.modelData.title
                    color: cell.isChosen ? Theme.text : Theme.secondaryText
                    font.pixelSize: 12
                    font.weight: Font.Medium
                    onImplicitWidthChanged: segmented.widest = Math.max(segmented.widest, implicitWidth)
                    Component.onCompleted: segmented.widest = Math.max(segmented.widest, implicitWidth)
                }
                TapHandler { onTapped: segmented.chosen(cell.modelData.rawValue) }
            }
        }
    }
    FocusRing { target: segmented; radius: 10 }
}
