import QtQuick
import Kestrant

// The calendar on the panel: its rows, what stands in their place, and the days to carry a card to.
FocusScope {
    id: root

    required property CalendarViewModel calendar
    required property OverlayHost overlays
    required property EditActions actions
    required property Tooltip tooltip
    /// The panel is open.
    property bool isShown: true
    signal leftUpwards
    signal escaped

    /// A card is being carried over the panel, and where it is held, in this item.
    property bool isTarget: false
    property point carriedAt: Qt.point(-1, -1)
    /// The day that the card would be let go on; empty for none, `anotherDay` where it is still to be chosen.
    property string dropDay
    readonly property string anotherDay: targets.anotherDay
    /// When the card is due on its day; empty for a whole day.
    property string carriedTime

    readonly property CalendarRowModel rows: calendar.rows
    readonly property bool showsRows: calendar.content === "rows"
    readonly property bool canScrollDown: showsRows && list.canScrollDown

    activeFocusOnTab: showsRows

    function makeCurrent(index, reason) { list.makeCurrent(index, reason) }
    function openMenu(index, x, y) { list.openMenu(index, x, y) }

    // When it folds, so that nothing moves when it opens; when it opens, since today may be another by then.
    onIsShownChanged: if (showsRows) list.goToToday()

    function updateDropDay() {
        const inside = isTarget && carriedAt.x >= 0 && carriedAt.x < width && carriedAt.y >= 0 && carriedAt.y < height
        if (!inside)
            dropDay = ""
        else if (targets.visible)
            dropDay = targets.dayAt(carriedAt.x - targets.x, carriedAt.y - targets.y)
        else
            dropDay = list.dayAt(carriedAt.y)
    }
    onCarriedAtChanged: updateDropDay()
    onIsTargetChanged: {
        if (!isTarget)
            carriedAt = Qt.point(-1, -1)
        updateDropDay()
    }
    // The full calendar scrolls while a card is held at one of its edges.
    Timer {
        readonly property real speed: !root.isTarget || targets.visible || root.dropDay === "" ? 0
            : root.carriedAt.y < 40 ? -9 : root.carriedAt.y > list.height - 32 ? 9 : 0
        running: speed !== 0
        interval: 16
        repeat: true
        onTriggered: {
            list.scrollBy(speed)
            root.updateDropDay()
        }
    }
    // Advances the progress of running events.
    Timer {
        running: root.isShown && root.showsRows
        interval: 20000
        repeat: true
        triggeredOnStart: true
        onTriggered: root.calendar.refreshPresent()
    }

    CalendarList {
        id: list
        anchors.fill: parent
        visible: root.showsRows
        opacity: targets.visible ? 0 : Theme.opacity(turn)
        /// How far what is shown has come in the place of what was.
        property real turn: 1
        transform: Translate { y: (1 - list.turn) * (root.calendar.showsAllEvents ? 10 : -10) }
        enabled: !targets.visible
        focus: true
        calendar: root.calendar
        overlays: root.overlays
        actions: root.actions
        tooltip: root.tooltip
        dropDay: targets.visible ? "" : root.dropDay
        onLeftUpwards: root.leftUpwards()
        onEscaped: root.escaped()
    }
    NumberAnimation {
        id: turning
        target: list
        property: "turn"
        from: 0
        to: 1
        duration: Theme.leaveDuration
        easing.type: Easing.OutCubic
    }
    Connections {
        target: root.calendar
        function onShowsAllEventsChanged() {
            if (root.isShown && !Theme.still)
                turning.restart()
        }
    }
    Chip {
        visible: root.calendar.showsAllEvents && root.showsRows && !list.showsThisWeek && !root.isTarget
        color: Theme.popover
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 4
        text: Localizer.text("Return to the current week", "Revenir à la semaine actuelle")
        onClicked: root.calendar.showsAllEvents = false
    }
    Loader {
        anchors.fill: parent
        active: !root.showsRows
        visible: !targets.visible
        sourceComponent: CalendarNotice { calendar: root.calendar }
    }
    DayTargets {
        id: targets
        anchors.fill: parent
        visible: root.isTarget && !root.calendar.showsAllEvents
        week: visible ? root.calendar.week : []
        day: root.dropDay
        time: root.carriedTime
    }
}
