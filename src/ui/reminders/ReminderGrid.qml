import QtQuick
import Kestrant

// The cards in columns. One of them is current; the keyboard acts on it.
FocusScope {
    id: root

    required property RemindersViewModel reminders
    required property OverlayHost overlays
    /// Takes up the cards that are dragged away.
    required property CardDrag drag
    /// A card is held over this point of the grid, while one is carried.
    property point carriedAt
    /// Where the carried card would come to lie: before the card that is there now. -1 for nowhere.
    readonly property int dropIndex: {
        if (!drag.active || carriedAt.x < 0 || carriedAt.x > width || carriedAt.y < 0 || carriedAt.y > height)
            return -1
        const column = Math.max(0, Math.min(columns, Math.round(carriedAt.x / grid.cellWidth)))
        const row = Math.max(0, Math.floor((carriedAt.y + grid.contentY - grid.originY) / grid.cellHeight))
        return Math.min(grid.count, row * columns + column)
    }
    required property EditActions actions
    required property Tooltip tooltip
    /// Milliseconds since the panel began to open; the rows come one after the other.
    property real sinceOpening: arrivalTime
    readonly property int firstArrival: 140
    readonly property int arrivalStep: 30
    readonly property int arrivalDuration: 160
    readonly property int arrivalTime: firstArrival + 2 * arrivalStep + arrivalDuration
    /// The day that the carried card would be let go on; empty for none.
    readonly property string dayBelow: drag.day === "another" ? "" : drag.day
    signal leftUpwards
    signal escaped

    readonly property int columns: Math.max(1, Math.floor((width + Theme.gap) / 200))
    readonly property real highestY: grid.originY - grid.topMargin
    readonly property real lowestY: Math.max(highestY, grid.originY + grid.contentHeight - grid.height)
    readonly property bool canScrollDown: grid.contentY < lowestY - 1
    /// The keyboard is on the cards.
    readonly property bool isUsed: grid.activeFocus

    activeFocusOnTab: grid.count > 0

    Accessible.role: Accessible.List
    Accessible.name: Localizer.text("Reminders", "Rappels")

    function toggle(index) {
        if (reminders.cards.isWritableAt(index))
            reminders.toggleCompletion(reminders.cards.taskIdAt(index))
    }
    function removeAt(index) {
        if (reminders.cards.isWritableAt(index))
            reminders.remove(reminders.cards.taskIdAt(index))
    }
    /// Whether a card would lie elsewhere when it is let go there.
    function moves(id, dropIndex) {
        const from = reminders.cards.rowOf(id)
        return from >= 0 && dropIndex >= 0 && dropIndex !== from && dropIndex !== from + 1
    }
    /// Moves a card to where `dropIndex` says; from then on the cards are in manual order.
    function place(id, dropIndex) {
        const to = dropIndex > reminders.cards.rowOf(id) ? dropIndex - 1 : dropIndex
        reminders.placeAt(id, to)
        grid.currentIndex = to
        return true
    }
    /// Shows the first cards again.
    function rewind() {
        scroll.stop()
        grid.currentIndex = 0
        grid.contentY = highestY
    }
    function shift(distance) {
        const to = grid.currentIndex + distance
        if (grid.currentIndex < 0 || to < 0 || to >= grid.count)
            return
        reminders.placeAt(reminders.cards.taskIdAt(grid.currentIndex), to)
        grid.currentIndex = to
        bringIntoView()
    }
    function editAt(index) {
        const item = grid.itemAtIndex(index)
        if (item)
            actions.editReminder(item.card.id, item)
    }
    function editDueDateOf(id) { editDueDateAt(reminders.cards.rowOf(id)) }
    function editDueDateAt(index) {
        const item = grid.itemAtIndex(index)
        if (item && item.card.isWritable)
            actions.editDueDate(item.card.id, item, item.belowDueDate)
    }
    function openMenu(index, x, y) {
        const item = grid.itemAtIndex(index)
        if (item)
            menu.open(item, Qt.point(x, y))
    }
    function scrollTo(contentY) {
        scroll.stop()
        scroll.to = Math.max(highestY, Math.min(contentY, lowestY))
        if (Theme.still)
            grid.contentY = scroll.to
        else
            scroll.start()
    }
    function makeCurrent(index, reason) {
        if (index < 0 || index >= grid.count)
            return
        grid.currentIndex = index
        root.focus = true
        grid.forceActiveFocus(reason)
    }
    function bringIntoView() {
        if (grid.currentIndex < 0)
            return
        const top = grid.originY + Math.floor(grid.currentIndex / columns) * grid.cellHeight
        const target = scroll.running ? scroll.to : grid.contentY
        const bottom = top + grid.cellHeight - grid.height
        if (top - grid.topMargin < target)
            scrollTo(top - grid.topMargin)
        else if (bottom > target)
            scrollTo(bottom)
    }
    function step(distance) {
        const next = grid.currentIndex + distance
        if (distance === -columns && next < 0)
            leftUpwards()
        else if (distance === columns && next >= grid.count
                 && Math.floor(grid.currentIndex / columns) < Math.floor((grid.count - 1) / columns))
            grid.currentIndex = grid.count - 1
        else if (next >= 0 && next < grid.count)
            grid.currentIndex = next
        bringIntoView()
    }

    CardMenu {
        id: menu
        reminders: root.reminders
        overlays: root.overlays
        actions: root.actions
    }
    Connections {
        target: root.reminders
        // Search results are shown from the first one.
        function onSearchQueryChanged() { Qt.callLater(root.rewind) }
        function onRevealRequested(taskId) {
            const row = root.reminders.cards.rowOf(taskId)
            if (row < 0)
                return
            grid.currentIndex = row
            root.bringIntoView()
            reveal.card = taskId
            reveal.restart()
        }
    }
    Connections {
        target: root.drag.panel
        function onPhaseChanged() {
            if (!root.drag.panel.isExpanded)
                folded.restart()
            else
                folded.stop()
        }
    }
    // The cards are at their beginning when the panel opens again, and do not jump while it folds.
    Timer {
        id: folded
        interval: 300
        onTriggered: root.rewind()
    }
    SequentialAnimation {
        id: reveal
        property string card
        property real strength: 0
        NumberAnimation { target: reveal; property: "strength"; to: 1; duration: Theme.hoverDuration }
        PauseAnimation { duration: 600 }
        NumberAnimation { target: reveal; property: "strength"; to: 0; duration: Theme.still ? 0 : 400 }
    }

    GridView {
        id: grid
        anchors.fill: parent
        anchors.rightMargin: -Theme.gap
        focus: true
        clip: true
        interactive: false
        cellWidth: Math.floor(width / root.columns)
        cellHeight: Theme.cardHeight + Theme.gap
        cacheBuffer: 160
        keyNavigationEnabled: false
        highlightFollowsCurrentItem: false
        currentIndex: 0
        // Whatever becomes of the current card, the keyboard has one to act on. The view itself still has its old
        // index while it tells of a change.
        onCountChanged: Qt.callLater(keepCurrent)
        function keepCurrent() {
            if (count > 0 && (currentIndex < 0 || currentIndex >= count))
                currentIndex = currentIndex < 0 ? 0 : count - 1
        }
        model: root.reminders.cards

        delegate: ReminderCardItem {
            required property int index
            width: grid.cellWidth - Theme.gap
            height: Theme.cardHeight
            isCurrent: GridView.isCurrentItem && grid.activeFocus
            highlight: reveal.card === card.id ? reveal.strength : 0
            // Cards fade at the edge instead of being cut.
            opacity: Theme.opacity(Math.min(1, (y + height - grid.contentY) / 48, (grid.contentY + grid.height - y) / 48)
                                   * (1 - distance * distance * distance))
            /// How much of its way it still has to come, 1 to 0.
            readonly property real distance: root.sinceOpening >= root.arrivalTime ? 0
                : 1 - Math.max(0, Math.min(1, (root.sinceOpening - root.firstArrival - root.arrivalStep
                                               * Math.floor((y - grid.contentY) / grid.cellHeight)) / root.arrivalDuration))
            transform: Translate { y: 6 * distance * distance * distance }
            isAway: root.drag.carried === card.id
            isChosen: menu.shownFor === card.id
            // The empty place tells what the card will be where it is let go.
            dueText: isAway && root.dayBelow !== "" ? root.reminders.dueTextOn(card.id, root.dayBelow) : card.dueText
            onHoveredChanged: root.tooltip.follow(this)
            onPressed: root.makeCurrent(index, Qt.MouseFocusReason)
            onToggled: root.toggle(index)
            onMenuWanted: (x, y) => root.openMenu(index, x, y)
            onEditWanted: root.editAt(index)
            onFlagToggled: root.reminders.toggleFlag(card.id)
            onDueDateWanted: {
                root.makeCurrent(index, Qt.MouseFocusReason)
                root.editDueDateAt(index)
            }
        }

        remove: Transition {
            enabled: !Theme.still
            NumberAnimation { property: "opacity"; to: 0; duration: Theme.leaveDuration }
            NumberAnimation { property: "scale"; to: 0.96; duration: Theme.leaveDuration }
        }
        add: Transition {
            enabled: !Theme.still
            NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.leaveDuration }
        }
        displaced: Transition {
            enabled: !Theme.still
            NumberAnimation { properties: "x,y"; duration: Theme.leaveDuration; easing.type: Easing.OutCubic }
            // A card that was still fading in when another change came is shown in full.
            NumberAnimation { properties: "opacity,scale"; to: 1; duration: Theme.leaveDuration }
        }
        move: Transition {
            enabled: !Theme.still
            NumberAnimation { properties: "x,y"; duration: Theme.leaveDuration; easing.type: Easing.OutCubic }
        }

        NumberAnimation {
            id: scroll
            target: grid
            property: "contentY"
            duration: 160
            easing.type: Easing.OutCubic
        }

        Keys.onPressed: event => {
            if (event.modifiers === Qt.AltModifier) {
                const distance = { [Qt.Key_Left]: -1, [Qt.Key_Right]: 1, [Qt.Key_Up]: -root.columns,
                                   [Qt.Key_Down]: root.columns }[event.key]
                event.accepted = distance !== undefined
                if (event.accepted)
                    root.shift(distance)
                return
            }
            if (event.modifiers & ~(Qt.ShiftModifier | Qt.KeypadModifier))
                return
            event.accepted = true
            switch (event.key) {
            case Qt.Key_Left: root.step(-1); break
            case Qt.Key_Right: root.step(1); break
            case Qt.Key_Up: root.step(-root.columns); break
            case Qt.Key_Down: root.step(root.columns); break
            case Qt.Key_Home: grid.currentIndex = 0; root.bringIntoView(); break
            case Qt.Key_End: grid.currentIndex = grid.count - 1; root.bringIntoView(); break
            case Qt.Key_PageUp:
                grid.currentIndex = Math.max(grid.currentIndex % root.columns, grid.currentIndex - 3 * root.columns)
                root.bringIntoView()
                break
            case Qt.Key_PageDown:
                grid.currentIndex = Math.min(grid.count - 1, grid.currentIndex + 3 * root.columns)
                root.bringIntoView()
                break
            case Qt.Key_Space: root.toggle(grid.currentIndex); break
            case Qt.Key_Return:
            case Qt.Key_Enter: root.editAt(grid.currentIndex); break
            case Qt.Key_Delete: root.removeAt(grid.currentIndex); break
            case Qt.Key_D: root.editDueDateAt(grid.currentIndex); break
            case Qt.Key_Menu: root.openMenu(grid.currentIndex, 30, 30); break
            case Qt.Key_F10:
                if (event.modifiers & Qt.ShiftModifier)
                    root.openMenu(grid.currentIndex, 30, 30)
                else
                    event.accepted = false
                break
            case Qt.Key_Escape: root.escaped(); break
            default: event.accepted = false
            }
        }
    }

    // One for all cards, so that a card that goes away meanwhile does not take the drag with it.
    DragHandler {
        target: null
        acceptedButtons: Qt.LeftButton
        onActiveChanged: {
            if (!active) {
                root.drag.drop()
                return
            }
            const press = centroid.scenePressPosition
            const held = grid.contentItem.mapFromItem(null, press.x, press.y)
            const index = grid.indexAt(held.x, held.y)
            const item = grid.itemAtIndex(index)
            if (!item || item.card.isPending)
                return
            root.makeCurrent(index, Qt.MouseFocusReason)
            root.drag.begin(item, press)
            root.drag.moveTo(centroid.scenePosition)
        }
        onCentroidChanged: if (active) root.drag.moveTo(centroid.scenePosition)
        onCanceled: root.drag.cancel()
    }
    // A card held at the edge brings what lies beyond it into view.
    Timer {
        readonly property real speed: !root.drag.active || root.carriedAt.x < 0 || root.carriedAt.x > root.width ? 0
                                    : root.carriedAt.y > root.height - 24 && root.carriedAt.y < root.height + 24 ? 5
                                    : root.carriedAt.y < 24 && root.carriedAt.y > -24 ? -5 : 0
        running: speed !== 0
        repeat: true
        interval: 16
        onTriggered: grid.contentY = Math.max(root.highestY, Math.min(grid.contentY + speed, root.lowestY))
    }
    // Between which cards the carried one would come to lie.
    Rectangle {
        readonly property int row: Math.floor(root.dropIndex / root.columns)
        readonly property int column: root.dropIndex % root.columns
        visible: root.drag.slot >= 0
        x: column * grid.cellWidth - Theme.gap / 2 - width / 2
        y: grid.originY + row * grid.cellHeight - grid.contentY + 4
        width: 3
        height: Theme.cardHeight - 8
        radius: 1.5
        color: Theme.accent
    }
    WheelHandler {
        target: null
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        onWheel: event => {
            if (event.pixelDelta.y !== 0) {
                scroll.stop()
                grid.contentY = Math.max(root.highestY, Math.min(grid.contentY - event.pixelDelta.y, root.lowestY))
            } else {
                const from = scroll.running ? scroll.to : grid.contentY
                root.scrollTo(from - event.angleDelta.y / 120 * grid.cellHeight)
            }
        }
    }

    Rectangle {
        readonly property real track: grid.height - grid.topMargin - 8
        visible: root.lowestY > root.highestY + 1
        x: parent.width + 6
        y: grid.topMargin + (track - height) * (grid.contentY - root.highestY) / Math.max(1, root.lowestY - root.highestY)
        width: 3
        height: Math.max(24, track * grid.height / Math.max(1, grid.contentHeight + grid.topMargin))
        radius: 1.5
        color: Theme.white(scroll.running ? 0.4 : 0.16)
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.leaveDuration } }
    }
}
