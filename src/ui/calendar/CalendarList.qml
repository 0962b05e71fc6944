import QtQuick
import Kestrant

// The days with their rows, and the way through them. One row is current; the keyboard acts on it.
FocusScope {
    id: root

    required property CalendarViewModel calendar
    required property OverlayHost overlays
    required property EditActions actions
    required property Tooltip tooltip
    /// The day that a card would be let go on; empty for none.
    property string dropDay
    signal leftUpwards
    signal escaped

    readonly property CalendarRowModel rows: calendar.rows
    readonly property real highestY: list.originY - list.topMargin
    readonly property real lowestY: Math.max(highestY, list.originY + list.contentHeight - list.height + list.bottomMargin)
    /// The uppermost day is one of the coming week.
    readonly property bool showsThisWeek: topRow === null || calendar.week.some(each => each.day === topRow.day)
    readonly property bool canScrollDown: list.contentY < lowestY - 1

    Accessible.role: Accessible.List
    Accessible.name: Localizer.text("Calendar", "Calendrier")

    /// The day at a height in this item; empty for none.
    function dayAt(y) {
        return rows.dayAt(y < Theme.headingHeight ? topHeading : list.indexAt(1, list.contentY + y))
    }
    /// The visible part of a day at a scroll position.
    function spanOf(day, contentY) {
        const heading = day === "" ? -1 : rows.headingFrom(day)
        if (heading < 0)
            return { top: 0, bottom: 0 }
        const first = list.itemAtIndex(heading)
        const next = list.itemAtIndex(rows.headingAfter(heading))
        return {
            top: first ? Math.max(0, first.y - contentY) : 0,
            bottom: next ? Math.min(height, next.y - contentY) : Math.min(height, lowestY + height - contentY)
        }
    }
    function scrollBy(distance) {
        list.contentY = Math.max(highestY, Math.min(list.contentY + distance, lowestY))
    }
    function goToToday() {
        const heading = rows.headingFrom(calendar.today)
        if (heading < 0)
            return
        scroll.stop()
        list.forceLayout()
        list.positionViewAtIndex(heading, ListView.Beginning)
        const first = rows.nextItem(heading, 1)
        list.currentIndex = first < 0 ? heading : first
        updateTop()
    }
    function scrollTo(contentY) {
        scroll.stop()
        scroll.to = Math.max(highestY, Math.min(contentY, lowestY))
        if (Theme.still)
            list.contentY = scroll.to
        else
            scroll.start()
    }
    /// Below the heading that stays at the upper edge, and with its own heading where that is near.
    function bringIntoView(index) {
        let item = list.itemAtIndex(index)
        if (!item) {
            scroll.stop()
            list.positionViewAtIndex(index, ListView.Center)
            return
        }
        const above = rows.headingOf(index) === index - 1 ? 0 : Theme.headingHeight
        const heading = above === 0 ? list.itemAtIndex(index - 1) : null
        const top = (heading ?? item).y - above
        const target = scroll.running ? scroll.to : list.contentY
        if (top < target)
            scrollTo(index <= 1 ? highestY : top)
        else if (item.y + item.height > target + list.height - list.bottomMargin)
            scrollTo(item.y + item.height - list.height + list.bottomMargin)
    }
    function makeCurrent(index, reason) {
        if (index < 0 || index >= rows.count)
            return
        list.currentIndex = index
        root.focus = true
        list.forceActiveFocus(reason)
    }
    function goTo(index) {
        if (index < 0)
            return
        list.currentIndex = index
        bringIntoView(index)
    }
    function step(direction) {
        const next = rows.nextItem(list.currentIndex, direction)
        if (next >= 0)
            goTo(next)
        else if (direction < 0)
            leftUpwards()
    }
    function stepByPage(direction) {
        let next = list.currentIndex
        for (let count = 0; count < 6; ++count) {
            const further = rows.nextItem(next, direction)
            if (further < 0)
                break
            next = further
        }
        goTo(next)
    }

    function edit(index) {
        const item = list.itemAtIndex(index)
        const row = calendar.row(index)
        if (item && row !== undefined)
            actions.editRow(row, item)
    }
    function showDetails(index) {
        const item = list.itemAtIndex(index)
        const row = calendar.row(index)
        if (item && row !== undefined)
            actions.showDetails(row, item)
    }
    function askToRemove(index) {
        const item = list.itemAtIndex(index)
        const row = calendar.row(index)
        if (item && row !== undefined && actions.canChangeRow(row))
            actions.removeRow(row, item)
    }
    function openMenu(index, x, y) {
        const item = list.itemAtIndex(index)
        if (item && !item.row.isHeading)
            menu.open(item, calendar.row(index), Qt.point(x, y))
    }
    /// Completes a reminder; shows what an event says.
    function toggle(index) {
        const row = calendar.row(index)
        if (row === undefined)
            return
        if (actions.calendarEdit.isReminder(row))
            actions.toggleRow(row)
        else
            showDetails(index)
    }

    CalendarRowMenu {
        id: menu
        overlays: root.overlays
        actions: root.actions
    }

    // The view stays where it is, whatever comes or goes above it.

    QtObject {
        id: place
        property string topDay
        property string topId
        property real distance
        property bool atTop: true
        property string currentDay
        property string currentId
        property bool wantsToday: true
    }
    Connections {
        target: root.rows as QtObject
        function onAboutToChange() {
            const top = list.indexAt(1, list.contentY + Theme.headingHeight)
            place.atTop = top < 0 || (!root.calendar.showsAllEvents && list.contentY <= root.highestY + 1)
            if (!place.atTop) {
                place.topDay = root.rows.dayAt(top)
                place.topId = root.rows.idAt(top)
                place.distance = list.itemAtIndex(top).y - list.contentY
            }
            place.currentDay = root.rows.dayAt(list.currentIndex)
            place.currentId = root.rows.idAt(list.currentIndex)
        }
        function onDataChanged() { Qt.callLater(root.updateTop) }
        function onChanged() {
            let current = place.currentId === "" ? -1 : root.rows.rowOf(place.currentDay, place.currentId)
            if (current < 0)
                current = root.rows.nextItem(Math.min(list.currentIndex, root.rows.count) - 1, 1)
            if (current < 0)
                current = root.rows.nextItem(root.rows.count, -1)
            if (place.wantsToday && !root.calendar.isLoading) {
                place.wantsToday = false
                root.goToToday()
                return
            }
            list.currentIndex = current
            let top = place.atTop ? -1 : root.rows.rowOf(place.topDay, place.topId)
            if (top < 0 && !place.atTop)
                top = root.rows.headingFrom(place.topDay)
            if (top >= 0) {
                const wasMoving = scroll.running
                const rest = scroll.to - list.contentY
                scroll.stop()
                list.forceLayout()
                list.positionViewAtIndex(top, ListView.Beginning)
                const item = list.itemAtIndex(top)
                if (item)
                    list.contentY = item.y - place.distance
                // A list that became shorter ends at the lower edge.
                root.scrollBy(0)
                if (wasMoving)
                    root.scrollTo(list.contentY + rest)
            } else if (!scroll.running) {
                list.positionViewAtBeginning()
            }
            root.updateTop()
        }
    }
    Connections {
        target: root.calendar
        function onShowsAllEventsChanged() { place.wantsToday = true }
        function onIsLoadingChanged() {
            // Both contents are equal, and the list still begins with today.
            if (!root.calendar.isLoading && place.wantsToday)
                Qt.callLater(root.beginWithToday)
            Qt.callLater(root.loadWhatIsNear)
        }
    }
    function beginWithToday() {
        if (!place.wantsToday || calendar.isLoading)
            return
        place.wantsToday = false
        goToToday()
    }

    // The full calendar goes on by itself where something may be found.

    function loadWhatIsNear() {
        if (!calendar.showsAllEvents || calendar.isLoading || place.wantsToday || rows.count === 0)
            return
        if (!calendar.needsManualLoadEarlier && list.contentY < highestY + list.height
            && list.indexAt(1, Math.max(list.contentY, list.originY)) < 24)
            calendar.loadMore(true)
        else if (!calendar.needsManualLoadLater && list.contentY > lowestY - list.height)
            calendar.loadMore(false)
    }

    // The heading of the uppermost day stays at the upper edge; the next one pushes it away.

    property int topHeading: -1
    property var topRow: null
    property real headingShift: 0
    function updateTop() {
        const top = list.indexAt(1, list.contentY)
        topHeading = top < 0 ? -1 : rows.headingOf(top)
        topRow = topHeading < 0 ? null : rows.rowAt(topHeading)
        const next = topHeading < 0 ? null : list.itemAtIndex(rows.headingAfter(top))
        headingShift = next ? Math.min(0, next.y - list.contentY - Theme.headingHeight) : 0
    }

    // The list would give the focus back to the button that has had it within the list, whoever comes back to it.
    function leaveButton(button) {
        button.focus = false
    }
    function returnToRows(button) {
        leaveButton(button)
        list.forceActiveFocus(Qt.BacktabFocusReason)
    }

    // The day that a card would be let go on, as one surface below its heading and its rows.
    Rectangle {
        readonly property var span: root.spanOf(root.dropDay, list.contentY)
        visible: root.dropDay !== ""
        x: -4
        y: span.top
        width: parent.width + 8
        height: span.bottom - span.top
        radius: 12
        color: Theme.targetWash
        border.color: Theme.accent
        border.width: 1.5
    }

    ListView {
        id: list
        anchors.fill: parent
        focus: true
        clip: true
        interactive: false
        bottomMargin: 6
        cacheBuffer: 260
        keyNavigationEnabled: false
        highlightFollowsCurrentItem: false
        currentIndex: -1
        model: root.rows
        onContentYChanged: {
            root.updateTop()
            Qt.callLater(root.loadWhatIsNear)
        }
        onHeightChanged: root.updateTop()

        delegate: CalendarRowItem {
            id: item
            required property int index
            width: ListView.view.width
            // Rows fade where they pass below the heading and where they leave at the lower edge; the first and the last, in
            // their places, never do. The uppermost heading is the one drawn over the list, which the next one replaces.
            readonly property real fromTop: y - list.contentY
            opacity: Theme.opacity(Math.min(row.isHeading ? (fromTop < 1 ? 0 : 1)
                                                          : 1 - (Theme.headingHeight - fromTop) / 14,
                                            1, (list.height - fromTop) / Theme.rowHeight))
            // Only while the focus is in the rows, not on a button above or below.
            isCurrent: ListView.isCurrentItem && (activeFocus || list.Window.activeFocusItem === list)
            onPressed: root.makeCurrent(index, Qt.MouseFocusReason)
            onDetailsWanted: {
                root.makeCurrent(index, Qt.MouseFocusReason)
                root.showDetails(index)
            }
            onJoinWanted: root.actions.join(root.calendar.row(index))
            onOpened: {
                root.makeCurrent(index, Qt.MouseFocusReason)
                root.edit(index)
            }
            onMenuWanted: (x, y) => root.openMenu(index, x, y)
            isCompleting: row.isReminder && root.actions.isCompleting(root.calendar.row(index))
            onToggled: root.toggle(index)
            onHoveredChanged: root.tooltip.follow(item)
        }

        header: Item {
            width: list.width
            readonly property bool offersMore: root.calendar.showsAllEvents && root.calendar.needsManualLoadEarlier
            height: (offersMore ? 36 : 0) + upperShortage.height
            visible: height > 0
            ShortageNote {
                id: upperShortage
                text: root.calendar.showsAllEvents ? root.calendar.shortageText : ""
            }
            Chip {
                visible: parent.offersMore
                anchors.horizontalCenter: parent.horizontalCenter
                y: upperShortage.height + (36 - height) / 2
                text: Localizer.text("Load earlier dates", "Charger les dates précédentes")
                onClicked: root.calendar.loadMore(true)
                Keys.onBacktabPressed: root.returnToRows(this)
                onActiveFocusChanged: if (!activeFocus) root.leaveButton(this)
            }
        }
        footer: Item {
            width: list.width
            readonly property bool offersMore: !root.calendar.showsAllEvents || root.calendar.needsManualLoadLater
            height: (offersMore ? 38 : 0) + lowerShortage.height
            visible: height > 0
            ShortageNote {
                id: lowerShortage
                text: root.calendar.shortageText
            }
            Chip {
                visible: parent.offersMore
                anchors.horizontalCenter: parent.horizontalCenter
                y: lowerShortage.height + (38 - height) / 2
                text: root.calendar.showsAllEvents
                    ? Localizer.text("Load later dates", "Charger les dates suivantes")
                    : Localizer.text("Show your full calendar", "Afficher tout le calendrier")
                onClicked: {
                    if (root.calendar.showsAllEvents)
                        root.calendar.loadMore(false)
                    else
                        root.calendar.showsAllEvents = true
                }
                Keys.onBacktabPressed: root.returnToRows(this)
                onActiveFocusChanged: if (!activeFocus) root.leaveButton(this)
            }
        }

        NumberAnimation {
            id: scroll
            target: list
            property: "contentY"
            duration: 160
            easing.type: Easing.OutCubic
        }

        Keys.onPressed: event => {
            if (event.modifiers & ~(Qt.ShiftModifier | Qt.KeypadModifier))
                return
            event.accepted = true
            switch (event.key) {
            case Qt.Key_Up: root.step(-1); break
            case Qt.Key_Down: root.step(1); break
            case Qt.Key_Left: root.goTo(root.rows.firstItemOfNextDay(list.currentIndex, -1)); break
            case Qt.Key_Right: root.goTo(root.rows.firstItemOfNextDay(list.currentIndex, 1)); break
            case Qt.Key_Home: root.goToToday(); break
            case Qt.Key_End: root.goTo(root.rows.nextItem(root.rows.count, -1)); break
            case Qt.Key_PageUp: root.stepByPage(-1); break
            case Qt.Key_PageDown: root.stepByPage(1); break
            case Qt.Key_Return:
            case Qt.Key_Enter: root.edit(list.currentIndex); break
            case Qt.Key_Space: root.toggle(list.currentIndex); break
            case Qt.Key_Delete: root.askToRemove(list.currentIndex); break
            case Qt.Key_Menu: root.openMenu(list.currentIndex, 30, 24); break
            case Qt.Key_F10:
                if (event.modifiers & Qt.ShiftModifier)
                    root.openMenu(list.currentIndex, 30, 24)
                else
                    event.accepted = false
                break
            case Qt.Key_Escape: root.escaped(); break
            default: event.accepted = false
            }
        }
    }

    WheelHandler {
        target: null
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        onWheel: event => {
            if (event.pixelDelta.y !== 0) {
                scroll.stop()
                root.scrollBy(-event.pixelDelta.y)
            } else {
                const from = scroll.running ? scroll.to : list.contentY
                root.scrollTo(from - event.angleDelta.y / 120 * 88)
            }
        }
    }

    // The heading of the uppermost day, over the rows that have faded below it.
    DayHeading {
        visible: root.topRow !== null
        y: root.headingShift
        // Gone before it would reach the toolbar.
        opacity: Math.max(0, 1 + root.headingShift / 12)
        width: parent.width
        text: root.topRow?.title ?? ""
        month: root.topRow?.monthText ?? ""
        isToday: root.topRow?.isToday ?? false
    }
}
