import QtQuick
import Kestrant

// One of a few choices below each other: {rawValue, title} each.
FocusScope {
    id: list

    property string title
    property var choices: []
    property var value
    signal chosen(var rawValue)

    readonly property int currentIndex: choices.findIndex(choice => choice.rawValue === value)

    implicitHeight: column.height
    height: implicitHeight
    activeFocusOnTab: true

    Accessible.role: Accessible.Grouping
    Accessible.name: title

    Keys.onUpPressed: if (currentIndex > 0) chosen(choices[currentIndex - 1].rawValue)
    Keys.onDownPressed: if (currentIndex < choices.length - 1) chosen(choices[currentIndex + 1].rawValue)

    Column {
        id: column
        width: parent.width

        PlainText {
            height: 24
            text: list.title
            color: Theme.secondaryText
            font.pixelSize: 12
            font.weight: Font.Medium
            Accessible.ignored: true
        }
        Repeater {
            model: list.choices
            delegate: Item {
                id: row
                required property var modelData
                required property int index
                readonly property bool isChosen: list.currentIndex === index
                width: column.width
                height: 28

                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData.title
                Accessible.checkable: true
                Accessible.checked: isChosen
                Accessible.focusable: list.enabled
                Accessible.focused: isChosen && list.activeFocus
                Accessible.onPressAction: if (list.enabled) list.chosen(modelData.rawValue)

                Rectangle {
                    id: circle
                    y: 6
                    width: 16
                    height: 16
                    radius: 8
                    color: row.isChosen ? Theme.accent : "transparent"
                    border.color: row.isChosen ? Theme.accent : Theme.white(Theme.contrast ? 0.6 : 0.3)
                    border.width: 1.5
                    Rectangle {
                        visible: row.isChosen
                        anchors.centerIn: parent
                        width: 6
                        height: 6
                        radius: 3
                        color: "white"
                    }
                }
                PlainText {
                    id: words
                    x: 28
                    height: parent.height
                    verticalAlignment: Text.AlignVCenter
                    text: row.modelData.title
                    color: row.isChosen ? Theme.text : Theme.chipText
                    font.pixelSize: 13
                }
                Rectangle {
                    visible: row.isChosen && list.activeFocus && Appearance.showsFocus
                    x: -5
                    width: words.x + words.width + 10
                    height: parent.height
                    radius: 8
                    color: "transparent"
                    border.color: Theme.accent
                    border.width: 2
                }
                TapHandler { onTapped: list.chosen(row.modelData.rawValue) }
            }
        }
    }
}
