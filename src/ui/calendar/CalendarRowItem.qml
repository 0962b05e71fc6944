import QtQuick
import Kestrant

// A line of the calendar: the heading of a day; or an event or reminder with its time, its mark, its name and its signs.
Item {
    id: root

    required property var row
    required property bool isCurrent
    /// The reminder of the row is being completed, which a click on its ring takes back.
    property bool isCompleting: false
    readonly property bool hovered: pointer.hovered
    readonly property string tip: row.isHeading || !title.truncated ? "" : row.title
    signal pressed
    signal opened
    /// A click on an event.
    signal detailsWanted
    signal joinWanted
    signal menuWanted(real x, real y)
    /// The ring of a reminder was clicked.
    signal toggled

    /// With columns for the span, the place and the calendar, where there is room for them.
    readonly property bool wide: width >= 460
    readonly property bool active: hovered || (isCurrent && Appearance.showsFocus)
    readonly property color ink: row.isOver ? Theme.secondaryText : Theme.text
    readonly property color quiet: active ? Theme.secondaryTextActive : Theme.secondaryText
    readonly property int gutter: wide ? 108 : 48
    readonly property int nowAbove: row.nowLine === "above" ? Theme.nowLineHeight : 0
    readonly property int nowBelow: row.nowLine === "below" ? Theme.nowLineHeight : 0

    height: row.isHeading ? Theme.headingHeight : Theme.rowHeight + nowAbove + nowBelow

    Accessible.role: row.isHeading ? Accessible.Heading : Accessible.ListItem
    Accessible.name: row.spokenText + (isCompleting ? ", " + Localizer.text("completed", "terminé") : "")
    Accessible.focusable: !row.isHeading
    Accessible.focused: isCurrent
    Accessible.onPressAction: if (!row.isHeading) row.isReminder ? opened() : detailsWanted()

    DayHeading {
        visible: root.row.isHeading
        width: parent.width
        text: root.row.isHeading ? root.row.title : ""
        isToday: root.row.isToday
    }

    Rectangle {
        id: box
        visible: !root.row.isHeading
        y: root.nowAbove
        width: parent.width
        height: Theme.rowHeight
        radius: 8
        color: root.row.isNow ? Theme.nowFill : root.active ? Theme.cardActive : Theme.white(0)
        border.color: Theme.outline
        border.width: Theme.contrast && (root.active || root.row.isNow) ? 1 : 0
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }

        // The elapsed part of a running event.
        Item {
            visible: root.row.isNow
            width: parent.width * root.row.progress
            height: parent.height
            clip: true
            Rectangle {
                width: box.width
                height: parent.height
                radius: box.radius
                color: Theme.nowElapsed
            }
        }

        FigureText {
            id: time
            x: 5
            height: parent.height
            text: root.wide ? root.row.spanText : root.row.briefTimeText
            color: root.row.isNow ? Theme.nowText : root.row.isOverdue ? Theme.overdue : root.quiet
            font.pixelSize: Theme.panelText(11)
            font.weight: root.row.isNow ? Font.DemiBold : Font.Normal
        }

        // Events have a bar in their calendar's colour, or a square when they fill the day; reminders have the ring of
        // their cards.
        Rectangle {
            readonly property int side: Theme.panelText(7)
            visible: !root.row.isReminder
            x: root.gutter + 6 - width / 2
            anchors.verticalCenter: parent.verticalCenter
            width: root.row.isAllDay ? side : 3
            height: root.row.isAllDay ? side : 16
            radius: root.row.isAllDay ? 2 : 1.5
            color: root.row.color
            opacity: root.row.isOver ? 0.5 : 1
        }
        CompletionCircle {
            visible: root.row.isReminder
            x: root.gutter
            anchors.verticalCenter: parent.verticalCenter
            width: 12
            height: 12
            diameter: 9
            lineWidth: 1.6
            color: root.row.color
            hint: ringPointer.hovered && !root.isCompleting ? 1 : 0
            progress: root.isCompleting ? 1 : 0
            HoverHandler { id: ringPointer; enabled: root.row.isReminder; margin: 6 }
            TapHandler {
                enabled: root.row.isReminder
                margin: 6
                gesturePolicy: TapHandler.ReleaseWithinBounds
                onTapped: root.toggled()
            }
        }

        PlainText {
            id: title
            x: root.gutter + 16
            width: Math.min(implicitWidth, Math.max(0, (root.wide ? calendarTitle.x - 12 : signs.x - (signs.width > 0 ? 8 : 0)) - x))
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            text: root.row.title
            elide: Text.ElideRight
            color: root.ink
            font.pixelSize: Theme.panelText(12.5)
            font.weight: Font.Medium
            Accessible.ignored: true
        }
        PlainText {
            visible: text !== "" && root.wide
            x: title.x + title.width + 10
            width: Math.max(0, calendarTitle.x - 12 - x)
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            text: root.row.place
            elide: Text.ElideRight
            color: root.quiet
            font.pixelSize: Theme.panelText(11)
            Accessible.ignored: true
        }
        PlainText {
            id: calendarTitle
            visible: root.wide
            x: signs.x - width - 8
            width: Math.round(parent.width * 0.2)
            height: parent.height
            horizontalAlignment: Text.AlignRight
            verticalAlignment: Text.AlignVCenter
            text: root.row.calendarTitle
            elide: Text.ElideRight
            color: root.quiet
            font.pixelSize: Theme.panelText(11)
            Accessible.ignored: true
        }
        // Where the name would become too short, the sign alone.
        Rectangle {
            id: join
            readonly property bool wordFits: parent.width - title.x - joinWord.implicitWidth - 44 >= 96
            visible: root.row.canBeJoined
            x: parent.width - width - 4
            anchors.verticalCenter: parent.verticalCenter
            width: visible ? (wordFits ? joinWord.implicitWidth + 32 : 26) : 0
            height: 20
            radius: 7
            color: joinPointer.hovered ? Qt.lighter(Theme.primaryFill, 1.08) : Theme.primaryFill
            Icon {
                x: 6
                anchors.verticalCenter: parent.verticalCenter
                width: 14
                height: 14
                strokeWidth: 1.4
                name: "video"
                color: Theme.text
            }
            PlainText {
                id: joinWord
                visible: join.wordFits
                x: 23
                height: parent.height
                verticalAlignment: Text.AlignVCenter
                text: Localizer.text("Join", "Rejoindre")
                color: Theme.text
                font.pixelSize: Theme.panelText(11)
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Button
                Accessible.name: text + ", " + root.row.title
                Accessible.onPressAction: root.joinWanted()
            }
            HoverHandler { id: joinPointer; enabled: join.visible }
            TapHandler {
                enabled: join.visible
                gesturePolicy: TapHandler.ReleaseWithinBounds
                onTapped: root.joinWanted()
            }
        }
        Row {
            id: signs
            x: parent.width - width - 7 - (join.visible ? join.width : 0)
            height: parent.height
            spacing: 5
            Icon {
                visible: root.row.hasNotes
                anchors.verticalCenter: parent.verticalCenter
                width: 11
                height: 11
                strokeWidth: 1.2
                name: "notes"
                color: root.quiet
            }
            Icon {
                visible: root.row.isRecurring
                anchors.verticalCenter: parent.verticalCenter
                width: 11
                height: 11
                strokeWidth: 1.2
                name: "repeat"
                color: root.quiet
            }
        }
    }

    // The present, between what has begun and what has not.
    Item {
        visible: root.row.nowLine !== ""
        y: root.nowBelow > 0 ? Theme.rowHeight : 0
        width: parent.width
        height: Theme.nowLineHeight
        FigureText {
            x: 5
            height: parent.height
            text: root.row.nowText
            color: Theme.accentText
            font.pixelSize: Theme.panelText(11)
            font.weight: Font.DemiBold
        }
        Rectangle {
            x: root.gutter + 6 - width / 2
            anchors.verticalCenter: parent.verticalCenter
            width: 5
            height: 5
            radius: 2.5
            color: Theme.accentText
        }
        Rectangle {
            x: root.gutter + 6
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width - x - 7
            height: 1
            color: Theme.accentText
        }
    }

    HoverHandler { id: pointer; enabled: !root.row.isHeading }
    TapHandler {
        enabled: !root.row.isHeading
        acceptedButtons: Qt.LeftButton
        onTapped: {
            if (ringPointer.hovered || joinPointer.hovered)
                return
            root.pressed()
            if (!root.row.isReminder)
                root.detailsWanted()
        }
        onDoubleTapped: if (root.row.isReminder && !ringPointer.hovered) root.opened()
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
