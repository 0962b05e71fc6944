import QtQuick
import Kestrant

// The open panel in small, with the modules as they are set.
Item {
    id: preview

    required property SettingsViewModel settings

    readonly property int margin: 18
    readonly property int stripHeight: 26
    readonly property bool both: settings.showReminders && settings.showCalendar
    readonly property bool calendarFirst: settings.moduleOrder === "calendarFirst"
    readonly property real firstShare: parseInt(settings.layoutRatio) / 100
    readonly property real room: width - 2 * margin
    readonly property real firstWidth: Math.round(room * firstShare)

    function moduleX(isFirst) { return margin + (both && !isFirst ? firstWidth + 8 : 0) }
    function moduleWidth(isFirst) { return !both ? room : (isFirst ? firstWidth : room - firstWidth) - 8 }

    Accessible.ignored: true

    component Slide: NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic }
    component Bar: Rectangle { radius: height / 2; color: Theme.white(0.16) }

    Row {
        x: preview.margin
        y: 7
        spacing: 5
        Repeater {
            model: [44, 34, 38]
            Bar { required property int modelData; width: modelData; height: 11; color: Theme.white(0.1) }
        }
    }
    Row {
        anchors.right: parent.right
        anchors.rightMargin: preview.margin
        y: 8
        spacing: 7
        Repeater {
            model: ["search", "plus", "settings"]
            Icon { required property string modelData; width: 10; height: 10; name: modelData; color: Theme.white(0.6) }
        }
    }

    Item {
        id: cards
        readonly property int columns: Math.max(1, Math.floor((width + 5) / 98))
        readonly property real cardWidth: (width + 5) / columns - 5
        visible: preview.settings.showReminders
        x: preview.moduleX(!preview.calendarFirst)
        y: preview.stripHeight
        width: preview.moduleWidth(!preview.calendarFirst)
        height: preview.height - y
        Behavior on x { enabled: !Theme.still; Slide {} }
        Behavior on width { enabled: !Theme.still; Slide {} }

        Repeater {
            model: 3 * cards.columns
            Rectangle {
                id: card
                required property int index
                readonly property real first: [0.86, 0.64, 0.76, 0.7, 0.9, 0.58, 0.8, 0.66, 0.74, 0.84, 0.6, 0.7][index % 12]
                x: (index % cards.columns) * (cards.cardWidth + 5)
                y: Math.floor(index / cards.columns) * 46
                width: cards.cardWidth
                height: 41
                radius: 8
                color: Theme.card
                Rectangle {
                    x: 7; y: 7; width: 10; height: 10; radius: 5
                    color: card.index === 1 ? "#0a84ff" : "transparent"
                    border.width: 1.25
                    border.color: ["#ff453a", "#0a84ff", "#0a84ff", "#30d158", "#bf5af2", "#30d158"][card.index % 6]
                }
                Bar { x: 22; y: 8; width: (card.width - 30) * card.first; height: 5; color: Theme.white(0.3) }
                Bar { visible: card.index % 3 !== 1; x: 22; y: 16; width: (card.width - 30) * (1.3 - card.first); height: 5; color: Theme.white(0.3) }
                Bar { x: 22; y: 29; width: Math.min(30, card.width - 34); height: 4; color: card.index === 0 ? Theme.overdue : Theme.white(0.14) }
            }
        }
    }
    Rectangle {
        visible: preview.both
        x: preview.margin + preview.firstWidth
        y: preview.stripHeight + 4
        width: 1
        height: preview.height - y - 14
        color: Theme.separator
        Behavior on x { enabled: !Theme.still; Slide {} }
    }
    Column {
        id: days
        visible: preview.settings.showCalendar
        x: preview.moduleX(preview.calendarFirst)
        y: preview.stripHeight
        width: preview.moduleWidth(preview.calendarFirst)
        spacing: 4
        Behavior on x { enabled: !Theme.still; Slide {} }
        Behavior on width { enabled: !Theme.still; Slide {} }

        Repeater {
            // A heading has no colour; a due reminder stands among the events.
            model: [["", 0.4], ["#ff9f0a", 0.5], ["#5ac8fa", 0.42], ["reminder", 0.5], ["", 0.46], ["#bf5af2", 0.38],
                    ["#ff453a", 0.5]].filter(entry => entry[0] !== "reminder" || preview.settings.showRemindersInCalendar)
            Item {
                id: row
                required property var modelData
                readonly property bool isHeading: modelData[0] === ""
                readonly property bool isReminder: modelData[0] === "reminder"
                width: days.width
                height: isHeading ? 12 : 18
                Bar {
                    visible: row.isHeading
                    y: 5; width: Math.min(64, row.width * row.modelData[1]); height: 4
                    color: row.modelData[1] === 0.4 ? Theme.accentText : Theme.white(0.22)
                }
                Rectangle {
                    visible: !row.isHeading && !row.isReminder
                    x: 2; y: 3; width: 2.5; height: 12; radius: 1.25
                    color: row.isHeading || row.isReminder ? "transparent" : row.modelData[0]
                }
                Rectangle {
                    visible: row.isReminder
                    x: 0; y: 5; width: 8; height: 8; radius: 4
                    color: "transparent"
                    border.width: 1.25
                    border.color: "#30d158"
                }
                Bar { visible: !row.isHeading; x: 12; y: 7; width: Math.min(150, row.width * row.modelData[1]); height: 5; color: Theme.white(0.3) }
                Bar { visible: !row.isHeading; x: row.width - width; y: 7; width: 20; height: 4; color: Theme.white(0.14) }
            }
        }
    }
    PlainText {
        visible: !preview.settings.showReminders && !preview.settings.showCalendar
        anchors.centerIn: parent
        text: Localizer.text("Nothing to show", "Rien à afficher")
        color: Theme.secondaryText
        font.pixelSize: 12
    }
}
