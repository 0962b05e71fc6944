import QtQuick
import Kestrant

// One reminder: its circle, its title on two lines, and below what else there is to know.
Item {
    id: root

    required property var card
    required property bool isCurrent
    readonly property bool hovered: pointer.hovered
    readonly property bool active: hovered || (isCurrent && Appearance.showsFocus)
    property real highlight: 0
    property string dueText: card.dueText
    property color dueColor: card.isOverdue ? Theme.overdue : Theme.secondaryText
    signal pressed
    signal toggled
    signal menuWanted(real x, real y)
    signal editWanted
    /// The due date is to be changed; the point lies below what it says now.
    signal dueDateWanted(point at)
    readonly property point belowDueDate: Qt.point(facts.x - 14, facts.y + facts.height + 6)

    Accessible.role: Accessible.CheckBox
    Accessible.name: card.spokenText
    Accessible.checkable: card.isWritable
    Accessible.checked: card.isPending
    Accessible.focusable: true
    Accessible.focused: isCurrent
    Accessible.onToggleAction: toggled()
    Accessible.onPressAction: toggled()

    Rectangle {
        anchors.fill: parent
        radius: Theme.cardRadius
        color: root.active ? Theme.cardActive : Theme.card
        border.color: Theme.outline
        border.width: Theme.contrast ? 1 : 0
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }
    }
    Rectangle {
        anchors.fill: parent
        visible: root.highlight > 0
        radius: Theme.cardRadius
        color: Qt.rgba(0.04, 0.52, 1, 0.25 * root.highlight)
    }

    HoverHandler { id: pointer }
    TapHandler {
        acceptedButtons: Qt.LeftButton
        onTapped: {
            root.pressed()
            if (root.card.isPending)
                root.toggled()
        }
        onDoubleTapped: root.editWanted()
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: eventPoint => {
            root.pressed()
            root.menuWanted(eventPoint.position.x, eventPoint.position.y)
        }
    }

    CompletionCircle {
        id: circle
        x: 8
        y: 7
        width: 24
        height: 24
        color: root.card.listColor
        opacity: root.card.isWritable ? 1 : 0.45
        progress: root.card.isPending ? 1 : 0
        hint: circlePointer.hovered && !root.card.isPending && root.card.isWritable ? 1 : 0
        Behavior on progress { enabled: !Theme.still; NumberAnimation { duration: Theme.popoverDuration; easing.type: Easing.OutCubic } }
        Behavior on hint { enabled: !Theme.still; NumberAnimation { duration: Theme.hoverDuration } }

        HoverHandler { id: circlePointer; margin: 4 }
        TapHandler {
            margin: 4
            enabled: root.card.isWritable
            gesturePolicy: TapHandler.ReleaseWithinBounds
            onTapped: {
                root.pressed()
                root.toggled()
            }
        }
    }

    PlainText {
        id: title
        x: 38
        // Two lines end above the facts whatever their size.
        y: 27 - lineHeight
        width: root.width - x - 12
        text: root.card.title
        wrapMode: Text.Wrap
        elide: Text.ElideRight
        maximumLineCount: 2
        lineHeight: Theme.panelText(17)
        lineHeightMode: Text.FixedHeight
        color: root.card.isPending ? Theme.secondaryText : Theme.text
        font.pixelSize: Theme.panelText(13)
        font.weight: Font.Medium
        font.strikeout: root.card.isPending
        Accessible.ignored: true
    }

    Row {
        id: facts
        x: 38
        y: 50
        width: root.width - x - 12 - (flag.visible ? 20 : 0)
        height: 14
        spacing: 6
        readonly property real besidesDue: (marks.visible ? marks.width + spacing : 0)
                                           + (repeat.visible ? repeat.width + spacing : 0)
        /// What is left beside all that, for what is told where there is room.
        readonly property real room: width - besidesDue - (due.visible ? due.width + spacing : 0)

        PlainText {
            id: marks
            visible: text !== ""
            height: 14
            text: root.card.priorityMarks
            color: Theme.flag
            font.pixelSize: Theme.panelText(11)
            font.weight: Font.Bold
            Accessible.ignored: true
        }
        PlainText {
            id: due
            visible: text !== ""
            width: Math.min(implicitWidth, facts.width - facts.besidesDue)
            height: 14
            elide: Text.ElideRight
            text: root.dueText
            color: duePointer.hovered && !root.card.isOverdue ? Theme.text : root.dueColor
            font.pixelSize: Theme.panelText(11)
            Accessible.ignored: true
            HoverHandler { id: duePointer; enabled: dueTap.enabled; margin: 5 }
            TapHandler {
                id: dueTap
                enabled: root.card.isWritable && !root.card.isPending
                margin: 5
                gesturePolicy: TapHandler.ReleaseWithinBounds
                onTapped: root.dueDateWanted(root.belowDueDate)
            }
        }
        Icon {
            id: repeat
            visible: root.card.isRecurring
            y: 1
            width: 12
            height: 12
            strokeWidth: 1.2
            name: "repeat"
            color: Theme.secondaryText
        }
        PlainText {
            id: repeatWords
            visible: root.card.repeatText !== "" && implicitWidth <= facts.room
            leftPadding: -2
            height: 14
            text: root.card.repeatText
            color: Theme.secondaryText
            font.pixelSize: Theme.panelText(11)
            Accessible.ignored: true
        }
        PlainText {
            visible: root.card.alertText !== ""
                     && implicitWidth <= facts.room - (repeatWords.visible ? repeatWords.width + facts.spacing : 0)
            height: 14
            text: "· " + root.card.alertText
            color: Theme.secondaryText
            font.pixelSize: Theme.panelText(11)
            Accessible.ignored: true
        }
    }

    Icon {
        id: flag
        visible: root.card.isFlagged
        x: root.width - width - 11
        y: 50
        width: 14
        height: 14
        name: "flag"
        color: Theme.flag
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: 0
        radius: Theme.cardRadius
        color: "transparent"
        border.color: Theme.accent
        border.width: 2
        visible: root.isCurrent && Appearance.showsFocus
    }
}
