import QtQuick
import Kestrant

// The coming week, and another day, as tiles to let a card go on.
Item {
    id: targets

    required property var week
    /// The tile below the card: a day, or `anotherDay`.
    property string day
    /// When the carried card is due on its day, such as "17:00"; empty for a whole day.
    property string time
    readonly property string anotherDay: "another"

    readonly property int columns: 2
    readonly property int rowCount: Math.ceil((week.length + 1) / columns)
    readonly property real stepX: (width + Theme.gap) / columns
    readonly property real stepY: (height + Theme.gap) / rowCount
    function dayAt(x, y) {
        const column = Math.max(0, Math.min(Math.floor(x / stepX), columns - 1))
        const row = Math.max(0, Math.min(Math.floor(y / stepY), rowCount - 1))
        return week[row * columns + column]?.day ?? anotherDay
    }

    Repeater {
        model: targets.week.concat([{ day: targets.anotherDay, name: Localizer.text("Another day", "Autre jour"),
                                      number: "", isToday: false, colors: [] }])
        Rectangle {
            id: tile
            required property var modelData
            required property int index
            readonly property bool isTarget: modelData.day === targets.day
            x: Math.round(index % targets.columns * targets.stepX)
            y: Math.round(Math.floor(index / targets.columns) * targets.stepY)
            width: Math.floor(targets.stepX - Theme.gap)
            height: Math.floor(targets.stepY - Theme.gap)
            radius: 12
            color: isTarget ? Theme.targetFill : Theme.card
            border.color: isTarget ? Theme.accent : Theme.outline
            border.width: isTarget ? 1.5 : Theme.contrast ? 1 : 0
            Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }

            Accessible.role: Accessible.StaticText
            Accessible.name: modelData.name + " " + modelData.number

            PlainText {
                x: 10
                y: 6
                width: parent.width - 20
                elide: Text.ElideRight
                text: tile.modelData.name
                color: tile.isTarget ? Theme.text : tile.modelData.isToday ? Theme.accentText : Theme.secondaryText
                font.pixelSize: Theme.panelText(11)
                Accessible.ignored: true
            }
            PlainText {
                id: number
                x: 10
                y: 20
                text: tile.modelData.number
                color: Theme.text
                font.pixelSize: Theme.panelText(18)
                font.weight: Font.DemiBold
                Accessible.ignored: true
            }
            PlainText {
                visible: tile.isTarget && tile.modelData.number !== ""
                x: number.x + number.width + 6
                y: 20
                height: number.height
                width: parent.width - x - 8
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                text: targets.time === "" ? Localizer.text("all day", "journée")
                                          : Localizer.text("stays %1", "reste à %1").arg(targets.time)
                color: Theme.text
                font.pixelSize: Theme.panelText(11)
                font.weight: Font.DemiBold
                Accessible.ignored: true
            }
            Icon {
                visible: tile.modelData.number === ""
                x: 9
                y: 24
                name: "calendar"
                color: Theme.chipText
            }
            Row {
                visible: !tile.isTarget
                anchors.right: parent.right
                anchors.rightMargin: 10
                anchors.bottom: parent.bottom
                anchors.bottomMargin: 11
                spacing: 4
                Repeater {
                    model: tile.modelData.colors
                    Rectangle {
                        required property color modelData
                        width: 6
                        height: 6
                        radius: 3
                        color: modelData
                    }
                }
            }
        }
    }
}
