import QtQuick
import Kestrant

// Choices below each other, under a title.
ChoiceGroup {
    id: list

    property string title
    /// Details shown below a choice while it is selected.
    property var detailsOf: undefined
    property Component detailsComponent: null
    /// The details, while they are shown.
    property Item details: null

    isColumn: true
    // Not on details.
    hasKeyboard: activeFocus && !holder.activeFocus
    spokenName: title
    implicitHeight: column.height
    height: implicitHeight

    // Choices below the details move down for them.
    readonly property int detailsIndex: details ? currentIndex : choices.length
    readonly property real detailsHeight: details ? details.height + 6 : 0

    Item {
        id: column
        width: parent.width
        height: 20 + list.choices.length * 24 + list.detailsHeight

        PlainText {
            height: 20
            text: list.title
            color: Theme.text
            font.pixelSize: 13
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        Repeater {
            model: list.choices
            delegate: ChoiceItem {
                id: row
                group: list
                width: column.width
                y: 20 + index * 24 + (index > list.detailsIndex ? list.detailsHeight : 0)
                height: 24

                Rectangle {
                    id: circle
                    y: 4
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
                    x: 26
                    height: 24
                    verticalAlignment: Text.AlignVCenter
                    text: row.modelData.title
                    color: row.isChosen ? Theme.text : Theme.chipText
                    font.pixelSize: 13
                }
                Rectangle {
                    visible: row.isChosen && list.hasKeyboard && Appearance.showsFocus
                    x: -5
                    width: words.x + words.width + 10
                    height: 24
                    radius: 8
                    color: "transparent"
                    border.color: Theme.accent
                    border.width: 2
                }
            }
        }
    }
    // Apart from the rows, which are made anew whenever the choices are told again.
    Loader {
        id: holder
        x: 26
        y: 22 + (list.currentIndex + 1) * 24
        width: parent.width - x
        active: list.detailsComponent !== null && list.value === list.detailsOf
        sourceComponent: list.detailsComponent
        onItemChanged: list.details = item
    }
}
