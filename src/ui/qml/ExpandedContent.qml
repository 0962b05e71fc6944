import QtQuick
import Kestrant

// Everything on the expanded panel: the toolbar and, below it, the modules.
FocusScope {
    id: content

    required property PanelViewModel panel
    required property RemindersViewModel reminders
    required property CalendarViewModel calendar
    required property QuickAddViewModel quickAdd
    required property SettingsViewModel settings
    required property NewEventViewModel newEvent
    required property CalendarEditViewModel calendarEdit
    required property ReminderEditViewModel reminderEdit
    required property OverlayHost overlays

    readonly property int sideMargin: panel.earRadius + Theme.margin
    readonly property bool canScrollDown: grid.visible && grid.canScrollDown
    readonly property rect scrollArea: Qt.rect(grid.x, grid.y, grid.width, grid.height)

    function focusCards() {
        if (grid.visible)
            grid.forceActiveFocus(Qt.OtherFocusReason)
        else
            content.forceActiveFocus(Qt.OtherFocusReason)
    }
    function openQuickAdd() { toolbar.openQuickAdd() }
    function openSettings() { toolbar.openSettings() }
    function openSearch() { toolbar.openSearch() }
    function openLists() { toolbar.openLists() }
    function openSort() { toolbar.openSort() }
    function editCard(index) { grid.editAt(index) }
    function editRow(row) { actions.editRow(row, grid) }
    function removeRow(row) { actions.removeRow(row, grid) }
    function openCardMenu(index, x, y) { grid.openMenu(index, x, y) }
    function makeCurrent(index) { grid.makeCurrent(index, Qt.TabFocusReason) }
    function showMessage(message) { toast.show(message) }

    Keys.onEscapePressed: panel.fold()

    EditActions {
        id: actions
        calendarEdit: content.calendarEdit
        reminderEdit: content.reminderEdit
        overlays: content.overlays
    }
    Connections {
        target: content.calendarEdit
        function onChangeFailed(message) { toast.show(message) }
        function onRemovalFailed(message) {
            if (!content.overlays.isPresented("confirm"))
                toast.show(message)
        }
    }
    Connections {
        target: content.reminderEdit
        function onChangeFailed(message) { toast.show(message) }
    }

    Toolbar {
        id: toolbar
        x: content.sideMargin
        width: parent.width - 2 * x
        panel: content.panel
        reminders: content.reminders
        quickAdd: content.quickAdd
        newEvent: content.newEvent
        settings: content.settings
        overlays: content.overlays
        tooltip: tooltip
        onGridWanted: content.focusCards()
    }
    ReminderGrid {
        id: grid
        actions: actions
        visible: content.panel.showReminders && content.reminders.content === "cards"
        focus: true
        ground: content.panel.material === "black" ? "black" : Theme.panel
        x: content.sideMargin
        y: Theme.toolbarHeight
        width: parent.width - 2 * x
        // Down to where the panel's lower corners begin to round off what would be drawn over them.
        height: parent.height - y - Theme.gap
        reminders: content.reminders
        overlays: content.overlays
        onLeftUpwards: toolbar.nextItemInFocusChain(true).forceActiveFocus(Qt.BacktabFocusReason)
        onEscaped: content.panel.fold()
    }
    Loader {
        active: !grid.visible
        x: content.sideMargin
        y: Theme.toolbarHeight
        width: parent.width - 2 * x
        height: parent.height - y - Theme.gap
        sourceComponent: StateView {
            reminders: content.reminders
            overlays: content.overlays
            modulesOff: !content.panel.showReminders
            onAddWanted: content.openQuickAdd()
        }
    }
    Toast {
        id: toast
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.margin
    }
    Tooltip {
        id: tooltip
        silent: content.overlays.topmost !== ""
    }

    Connections {
        target: content.reminders
        function onChangeFailed(message) { toast.show(message) }
    }
}
