import QtQuick
import Kestrant

// The days of the coming week, each of them a place to let a card go on.
Item {
    id: targets

    required property var week
    /// The day below the card.
    property string day

    readonly property real step: height / Math.max(1, week.length)
    function dayAt(y) {
        return week[Math.max(0, Math.min(Math.floor(y / step), week.length - 1))]?.day ?? ""
    }

    Repeater {
        model: targets.week
        Rectangle {
            id: slot
            required property var modelData
            required property int index
            readonly property bool isTarget: modelData.day === targets.day
            y: Math.round(index * targets.step)
            width: targets.width
            height: Math.round((index + 1) * targets.step) - y - 3
            radius: 9
            color: isTarget ? Theme.targetFill : Theme.card
            border.color: isTarget ? Theme.accent : Theme.outline
            border.width: isTarget ? 1.5 : Theme.contrast ? 1 : 0
            Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }

            Accessible.role: Accessible.StaticText
            Accessible.name: modelData.title

            DayHeading {
                x: 9
                width: parent.width - colors.width - 26
                height: parent.height
                topPadding: 0
                text: slot.modelData.title
                isToday: slot.modelData.isToday
                color: slot.isTarget ? Theme.text : isToday ? Theme.accentText : Theme.chipText
            }
            Row {
                id: colors
                anchors.right: parent.right
                anchors.rightMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                spacing: 3
                Repeater {
                    model: slot.modelData.colors
                    Rectangle {
                        required property color modelData
                        width: 3
                        height: 14
                        radius: 1.5
                        color: modelData
                    }
                }
            }
        }
    }
}
