import QtQuick
import Kestrant

// A line of the calendar: the heading of a day; or an event or reminder with its colour, title, time and place.
Item {
    id: root

    required property var row
    required property bool isCurrent
    /// A card that is being carried would be let go on this row's day.
    property bool isTarget: false
    readonly property bool hovered: pointer.hovered
    readonly property string tip: row.isHeading || !hidesSomething ? "" : fullText
    signal pressed
    signal opened
    signal menuWanted(real x, real y)

    /// One line with columns, where there is room for them.
    readonly property bool wide: width >= 460
    readonly property bool showsSpan: wide || width >= 320 || (row.isNow && width >= 220)
    readonly property bool hasSecondLine: row.place !== "" && !wide && !row.isAllDay
    readonly property bool active: hovered || (isCurrent && Appearance.showsFocus)
    readonly property bool hidesSomething: title.truncated || place.truncated || (!showsSpan && row.spanText !== row.briefTimeText)
    readonly property string fullText: [row.title, row.spanText, row.place].filter(words => words !== "").join(" · ")
    readonly property color ink: row.isOver ? Theme.secondaryText : Theme.text

    height: row.isHeading ? Theme.headingHeight : row.isAllDay ? 26 : hasSecondLine ? 44 : 31

    Accessible.role: row.isHeading ? Accessible.Heading : Accessible.ListItem
    Accessible.name: row.spokenText
    Accessible.focusable: !row.isHeading
    Accessible.focused: isCurrent
    Accessible.onPressAction: if (!row.isHeading) opened()

    Rectangle {
        anchors.fill: parent
        visible: root.isTarget
        opacity: 0.7
        color: Theme.targetFill
    }

    DayHeading {
        visible: root.row.isHeading
        width: parent.width
        text: root.row.isHeading ? root.row.title : ""
        month: root.row.monthText
        isToday: root.row.isToday
    }

    Rectangle {
        id: box
        visible: !root.row.isHeading
        width: parent.width
        height: parent.height - (root.row.isAllDay ? 4 : 1)
        radius: root.row.isAllDay ? 7 : 9
        color: root.active ? Theme.cardActive
             : root.row.isNow ? Theme.nowFill
             : root.row.isAllDay && !root.row.isOver && !root.row.isReminder
               ? Qt.rgba(root.row.color.r, root.row.color.g, root.row.color.b, Theme.contrast ? 0.4 : 0.22)
             : Theme.white(0)
        border.color: Theme.outline
        border.width: Theme.contrast && (root.active || root.row.isNow || (root.row.isAllDay && !root.row.isReminder)) ? 1 : 0
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }

        // Events have a bar in their calendar's colour, reminders the ring that they have on their cards.
        Rectangle {
            visible: !root.row.isReminder
            x: 7
            y: root.row.isAllDay ? 4 : 6
            width: 3
            height: parent.height - 2 * y
            radius: 1.5
            color: root.row.color
            opacity: root.row.isOver ? 0.5 : 1
        }
        CompletionCircle {
            visible: root.row.isReminder
            x: 2
            y: Math.round((parent.height - height) / 2)
            width: 13
            height: 13
            diameter: 10
            lineWidth: 1.75
            color: root.row.color
        }

        PlainText {
            id: title
            readonly property real startX: root.wide ? 134 : 18
            readonly property real endX: root.wide ? calendarTitle.x - 12 : time.text === "" ? parent.width - 8 : time.x - 10
            x: startX
            y: root.hasSecondLine ? 5 : 0
            width: Math.min(implicitWidth, Math.max(0, endX - startX))
            height: root.hasSecondLine ? 16 : parent.height
            verticalAlignment: Text.AlignVCenter
            text: root.row.title
            elide: Text.ElideRight
            color: root.ink
            font.pixelSize: Theme.panelText(root.row.isAllDay ? 12 : 13)
            font.weight: Font.Medium
            Accessible.ignored: true
        }
        PlainText {
            id: place
            visible: text !== "" && (root.wide || root.hasSecondLine)
            x: root.wide ? title.x + title.width + 10 : title.startX
            y: root.hasSecondLine ? 22 : 0
            width: Math.max(0, (root.wide ? calendarTitle.x - 12 : parent.width - 8) - x)
            height: root.hasSecondLine ? 14 : parent.height
            verticalAlignment: Text.AlignVCenter
            text: root.row.place
            elide: Text.ElideRight
            color: Theme.secondaryText
            font.pixelSize: Theme.panelText(11)
            Accessible.ignored: true
        }
        PlainText {
            id: calendarTitle
            visible: root.wide
            x: parent.width - width - 8
            width: Math.round(parent.width * 0.2)
            height: parent.height
            horizontalAlignment: Text.AlignRight
            verticalAlignment: Text.AlignVCenter
            text: root.row.calendarTitle
            elide: Text.ElideRight
            color: Theme.secondaryText
            font.pixelSize: Theme.panelText(11)
            Accessible.ignored: true
        }
        FigureText {
            id: time
            x: root.wide ? 18 : parent.width - width - 8
            y: title.y
            height: title.height
            text: root.showsSpan && !(root.row.isAllDay && !root.wide) ? root.row.spanText : root.row.briefTimeText
            color: root.row.isNow ? Theme.accentText : root.row.isOverdue ? Theme.overdue : Theme.secondaryText
            font.pixelSize: Theme.panelText(12)
        }

        // How far what happens now has come.
        Rectangle {
            visible: root.row.isNow
            x: 18
            y: parent.height - 4
            width: parent.width - 26
            height: 2
            radius: 1
            color: Theme.white(0.10)
            Rectangle {
                width: Math.max(height, parent.width * root.row.progress)
                height: 2
                radius: 1
                color: Theme.accentText
            }
        }
    }

    // The present between two rows.
    Item {
        visible: root.row.nowLine !== ""
        y: root.row.nowLine === "above" ? -1 : parent.height - 1
        width: parent.width
        Rectangle { x: 5; y: -3; width: 7; height: 7; radius: 3.5; color: Theme.accentText }
        Rectangle { x: 12; width: parent.width - x; height: 1; color: Theme.accentText }
    }

    HoverHandler { id: pointer; enabled: !root.row.isHeading }
    TapHandler {
        enabled: !root.row.isHeading
        acceptedButtons: Qt.LeftButton
        onTapped: root.pressed()
        onDoubleTapped: root.opened()
    }
    TapHandler {
        enabled: !root.row.isHeading
        acceptedButtons: Qt.RightButton
        onTapped: eventPoint => {
            root.pressed()
            root.menuWanted(eventPoint.position.x, eventPoint.position.y)
        }
    }

    Rectangle {
        anchors.fill: box
        radius: box.radius
        color: "transparent"
        border.color: Theme.accent
        border.width: 2
        visible: root.isCurrent && Appearance.showsFocus
    }
}
