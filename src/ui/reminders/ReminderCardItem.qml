import QtQuick
import Kestrant

// One reminder: its circle, its title on two lines, and below what else there is to know.
Item {
    id: root

    required property var card
    required property bool isCurrent
    readonly property bool hovered: pointer.hovered
    readonly property string tip: title.truncated ? card.title : ""
    readonly property bool active: hovered || (isCurrent && Appearance.showsFocus)
    property real highlight: 0
    property string dueText: card.dueText
    property color dueColor: isAway && dueText !== card.dueText ? Theme.accentText : card.isOverdue ? (active ? Theme.overdueActive : Theme.overdue) : quiet
    readonly property color quiet: active ? Theme.secondaryTextActive : Theme.secondaryText
    /// The card is carried elsewhere: its place is kept.
    property bool isAway: false
    /// Its menu is open.
    property bool isChosen: false
    /// The first of two clicks has done something already.
    property bool wasToggled: false
    /// Frequent actions, shown while the pointer is on the card.
    readonly property bool showsActions: hovered && enabled && card.isWritable && !card.isPending
    signal pressed
    signal flagToggled
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
        color: root.isAway ? Theme.white(0.02) : root.active || root.isChosen ? Theme.cardActive : Theme.card
        border.color: Theme.outline
        border.width: Theme.contrast && !root.isAway ? 1 : 0
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }
    }
    DashedFrame {
        visible: root.isAway
        anchors.fill: parent
        radius: Theme.cardRadius
        color: Theme.white(Theme.contrast ? 0.6 : 0.3)
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
            if (tapCount === 1)
                root.wasToggled = root.card.isPending
            if (root.card.isPending)
                root.toggled()
        }
        onDoubleTapped: {
            if (!root.wasToggled && !circlePointer.hovered && !root.card.isPending)
                root.editWanted()
        }
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
        x: 9
        y: 7
        width: 24
        height: 24
        color: root.card.listColor
        visible: !root.isAway
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
        x: 40
        // Two lines end above the facts whatever their size.
        y: 27 - lineHeight
        width: root.width - x - 12
        text: root.card.title
        wrapMode: Text.Wrap
        elide: Text.ElideRight
        maximumLineCount: 2
        lineHeight: Theme.panelText(17)
        lineHeightMode: Text.FixedHeight
        color: root.card.isPending || root.isAway ? Theme.secondaryText : Theme.text
        font.pixelSize: Theme.panelText(13)
        font.weight: Font.Medium
        font.strikeout: root.card.isPending
        Accessible.ignored: true
    }

    // Where there is not room for everything, the alert's words go first, then how often it repeats, then the alert.
    Row {
        id: facts
        x: 40
        y: 50
        width: root.width - x - 12 - (actions.visible ? actions.width + 6 : flag.visible ? 20 : 0)
        height: 14
        spacing: 6
        readonly property real before: (marks.visible ? marks.width + spacing : 0) + (arrow.visible ? 12 + spacing : 0)
        readonly property real taken: before + (due.visible ? due.implicitWidth + spacing : 0)
                                      + (root.card.isRecurring ? 12 + spacing : 0)
        readonly property bool showsBell: root.card.alertText !== "" && width >= taken + 12
        readonly property bool showsRepeat: root.card.repeatText !== ""
                                            && width >= taken + (root.card.alertText !== "" ? 18 : 0) + repeatWords.implicitWidth
        readonly property real alertRoom: width - taken - 16 - (root.card.repeatText !== "" ? repeatWords.implicitWidth + spacing : 0)
        // Minutes have a sign of their own.
        readonly property string alertSign: root.card.alertBrief.replace(/\s*min$/, "′")
        readonly property bool showsAlert: showsBell && alertRoom >= alertWords.implicitWidth
        TextMetrics { id: alertInFull; font: alertWords.font; text: root.card.alertBrief }

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
        Icon {
            id: arrow
            visible: root.isAway && root.dueText !== root.card.dueText
            y: 1
            width: 12
            height: 12
            strokeWidth: 1.3
            name: "arrowRight"
            color: root.dueColor
        }
        PlainText {
            id: due
            visible: text !== ""
            width: Math.min(implicitWidth, facts.width - facts.before - (root.card.isRecurring ? 12 + facts.spacing : 0))
            height: 14
            elide: Text.ElideRight
            text: root.card.isPending ? Localizer.text("Completing…", "Bientôt terminé…") : root.dueText
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
        Row {
            visible: root.card.isRecurring
            height: 14
            spacing: 4
            Icon {
                y: 1
                width: 12
                height: 12
                strokeWidth: 1.2
                name: "repeat"
                color: root.quiet
            }
            PlainText {
                id: repeatWords
                visible: facts.showsRepeat
                height: 14
                text: root.card.repeatText
                color: root.quiet
                font.pixelSize: Theme.panelText(11)
                Accessible.ignored: true
            }
        }
        Row {
            visible: facts.showsBell
            height: 14
            spacing: 4
            Icon {
                y: 1
                width: 12
                height: 12
                strokeWidth: 1.2
                name: "bell"
                color: root.quiet
            }
            PlainText {
                id: alertWords
                visible: facts.showsAlert
                height: 14
                text: facts.alertRoom >= Math.ceil(alertInFull.advanceWidth) ? root.card.alertBrief : facts.alertSign
                color: root.quiet
                font.pixelSize: Theme.panelText(11)
                Accessible.ignored: true
            }
        }
    }

    Icon {
        id: flag
        visible: root.card.isFlagged && !actions.visible
        x: root.width - width - 12
        y: 50
        width: 14
        height: 14
        name: "flag"
        color: Theme.flag
    }
    // Each is in the card's menu, too, which is the way by keyboard and for screen readers.
    Row {
        id: actions
        visible: root.showsActions
        x: root.width - width - 9
        y: 46
        Repeater {
            model: [{ icon: "overdue", act: () => root.dueDateWanted(root.belowDueDate) },
                    { icon: "flag", act: () => root.flagToggled() },
                    { icon: "edit", act: () => root.editWanted() }]
            Item {
                id: action
                required property var modelData
                width: 22
                height: 22
                Icon {
                    anchors.centerIn: parent
                    width: 13
                    height: 13
                    strokeWidth: 1.3
                    name: action.modelData.icon
                    color: action.modelData.icon === "flag" && root.card.isFlagged ? Theme.flag
                         : actionPointer.hovered ? Theme.text : Theme.secondaryTextActive
                }
                HoverHandler { id: actionPointer }
                TapHandler { gesturePolicy: TapHandler.ReleaseWithinBounds; onTapped: action.modelData.act() }
            }
        }
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: 0
        radius: Theme.cardRadius
        color: "transparent"
        border.color: Theme.accent
        border.width: root.isChosen ? 1.5 : 2
        visible: root.isChosen || (root.isCurrent && Appearance.showsFocus)
    }
}
