import QtQuick
import Kestrant

// Everything on the expanded panel: the toolbar and, below it, the modules side by side.
FocusScope {
    id: content

    required property PanelViewModel panel
    required property RemindersViewModel reminders
    required property CalendarViewModel calendar
    required property QuickAddViewModel quickAdd
    required property SettingsViewModel settings
    required property NewEventViewModel newEvent
    required property CalendarEditViewModel calendarEdit
    required property EventDetailsViewModel eventDetails
    required property ReminderEditViewModel reminderEdit
    required property HistoryViewModel history
    required property RecapViewModel recap
    required property CelebrationViewModel celebration
    required property AnnouncementViewModel announcement
    required property OverlayHost overlays
    /// Whether something else is shown in its place.
    property bool isCovered: false

    readonly property int sideMargin: panel.earRadius + Theme.margin
    /// Why not all flagged reminders may be on show, while only those are.
    readonly property string flagProblem: reminders.showsFlaggedOnly ? reminders.flagFilterError : ""
    onFlagProblemChanged: if (flagProblem !== "") toast.show(flagProblem)
    readonly property bool showsRecap: recap.isOpen
    readonly property bool showsCards: panel.showReminders && reminders.content === "cards"

    // The width is parted where the line between the modules stands.
    readonly property bool showsBoth: panel.showReminders && panel.showCalendar
    readonly property real modulesWidth: width - 2 * sideMargin
    readonly property real firstWidth: Math.round(modulesWidth * panel.firstShare)
    function moduleX(isFirst) {
        return sideMargin + (showsBoth && !isFirst ? firstWidth + Theme.margin : 0)
    }
    function moduleWidth(isFirst) {
        return !showsBoth ? modulesWidth : (isFirst ? firstWidth : modulesWidth - firstWidth) - Theme.margin
    }
    readonly property real remindersX: moduleX(!panel.calendarFirst)
    readonly property real remindersWidth: moduleWidth(!panel.calendarFirst)
    readonly property real modulesHeight: height - Theme.toolbarHeight - Theme.margin

    /// Whether what is at this place can scroll further down.
    function scrollsDownAt(x, y) {
        const at = module => module.visible && x >= module.x && x < module.x + module.width
                             && y >= module.y && y < module.y + module.height
        if (showsRecap)
            return false
        return (at(grid) && grid.canScrollDown) || (at(calendarModule) && calendarModule.canScrollDown)
    }
    /// Gives the keyboard to the first module that has something for it.
    function focusFirst() {
        if (recapView.item)
            recapView.item.focusBody()
        else if (grid.visible)
            grid.forceActiveFocus(Qt.OtherFocusReason)
        else if (calendarModule.visible)
            calendarModule.forceActiveFocus(Qt.OtherFocusReason)
        else
            content.forceActiveFocus(Qt.OtherFocusReason)
    }
    function focusCalendar() { calendarModule.makeCurrent(calendarModule.rows.nextItem(-1, 1), Qt.TabFocusReason) }
    function leave() {
        if (drag.active)
            drag.cancel()
        else
            panel.fold()
    }
    function openQuickAdd() { toolbar.openQuickAdd() }
    function openSettings() { toolbar.openSettings() }
    function openSearch() { toolbar.openSearch() }
    function toggleRecap() { recap.isOpen ? recap.close() : recap.open() }
    function openRecapShare() { recapView.item.openShare() }
    function openLists() { toolbar.openLists() }
    function openSort() { toolbar.openSort() }
    function openCardMenu(index, x, y) { grid.openMenu(index, x, y) }
    function openRowMenu(index, x, y) { calendarModule.openMenu(index, x, y) }
    function editCard(index) { grid.editAt(index) }
    function editDueDate(index) { grid.editDueDateAt(index) }
    function editRow(row) { editActions.editRow(row, grid) }
    function removeRow(row) { editActions.removeRow(row, grid) }
    function showDetails(row) { editActions.showDetails(row, calendarModule) }
    function makeCurrent(index) { grid.makeCurrent(index, Qt.TabFocusReason) }
    function showMessage(message) { toast.show(message) }

    Component.onCompleted: overlays.controls = toolbar
    readonly property bool isOpen: panel.isExpanded
    onIsOpenChanged: if (isOpen && !Theme.still) arrival.restart()
    NumberAnimation {
        id: arrival
        target: grid
        property: "sinceOpening"
        from: 0
        to: grid.arrivalTime
        duration: grid.arrivalTime
    }
    Keys.onEscapePressed: leave()
    Keys.onPressed: event => {
        if (event.key === Qt.Key_R && event.modifiers === Qt.ControlModifier && !isCovered) {
            event.accepted = true
            toggleRecap()
        }
    }
    onShowsRecapChanged: {
        if (showsRecap)
            recapView.setSource("Recap.qml", { recap: recap, overlays: overlays, tooltip: tooltip,
                                               sideMargin: sideMargin, hasCamera: panel.hasCamera })
        else
            recapView.source = ""
        if (isOpen && !isCovered)
            focusFirst()
    }

    EditActions {
        id: editActions
        calendarEdit: content.calendarEdit
        eventDetails: content.eventDetails
        reminderEdit: content.reminderEdit
        reminders: content.reminders
        overlays: content.overlays
    }
    Toolbar {
        id: toolbar
        x: content.sideMargin
        visible: !content.showsRecap
        // Its tip lies upon the modules.
        z: showsTip ? 1 : 0
        width: parent.width - 2 * x
        cardsEnd: content.remindersX + content.remindersWidth - content.sideMargin
        calendarStart: calendarModule.x - content.sideMargin
        isCovered: content.isCovered || content.showsRecap
        recap: content.recap
        panel: content.panel
        reminders: content.reminders
        calendar: content.calendar
        quickAdd: content.quickAdd
        newEvent: content.newEvent
        settings: content.settings
        overlays: content.overlays
        tooltip: tooltip
        onModulesWanted: content.focusFirst()
    }
    ReminderGrid {
        id: grid
        visible: content.showsCards && !content.showsRecap
        focus: true
        x: content.remindersX
        y: Theme.toolbarHeight
        width: content.remindersWidth
        height: content.modulesHeight
        reminders: content.reminders
        overlays: content.overlays
        actions: editActions
        tooltip: tooltip
        drag: drag
        onLeftUpwards: toolbar.nextItemInFocusChain(true).forceActiveFocus(Qt.BacktabFocusReason)
        onEscaped: content.leave()
    }
    Loader {
        active: !content.showsCards && !content.showsRecap && (content.panel.showReminders || !content.panel.showCalendar)
        x: content.remindersX
        y: Theme.toolbarHeight
        width: content.remindersWidth
        height: content.modulesHeight
        sourceComponent: StateView {
            reminders: content.reminders
            overlays: content.overlays
            modulesOff: !content.panel.showReminders
            onAddWanted: content.openQuickAdd()
        }
    }
    Rectangle {
        visible: content.showsBoth && !content.showsRecap
        x: content.sideMargin + content.firstWidth
        y: Theme.toolbarHeight + 8
        width: 1
        height: content.modulesHeight - 16
        color: Theme.separator
    }
    CalendarModule {
        id: calendarModule
        visible: content.panel.showCalendar && !content.showsRecap
        x: content.moduleX(content.panel.calendarFirst)
        y: Theme.toolbarHeight
        width: content.moduleWidth(content.panel.calendarFirst)
        height: content.modulesHeight
        calendar: content.calendar
        overlays: content.overlays
        actions: editActions
        tooltip: tooltip
        isShown: content.panel.isExpanded
        isTarget: drag.active && drag.canReschedule
        onLeftUpwards: toolbar.nextItemInFocusChain(true).forceActiveFocus(Qt.BacktabFocusReason)
        onEscaped: content.leave()
    }
    // Read when it is first opened.
    Loader {
        id: recapView
        anchors.fill: parent
        opacity: Theme.opacity(shown)
        property real shown: content.showsRecap ? 1 : 0
        Behavior on shown {
            enabled: !Theme.still && content.showsRecap
            NumberAnimation { duration: Theme.popoverDuration; easing.type: Easing.OutCubic }
        }
    }
    Loader {
        active: content.announcement.isShowing && !content.showsRecap
        x: content.sideMargin
        y: Theme.toolbarHeight - 2
        width: parent.width - 2 * x
        sourceComponent: Item {
            AnnouncementCard {
                announcement: content.announcement
                buttonX: toolbar.recapButtonX
            }
        }
    }
    Loader {
        active: content.celebration.isShowing
        x: content.panel.earRadius
        y: Theme.toolbarHeight
        width: parent.width - 2 * x
        height: parent.height - y
        sourceComponent: CelebrationView { celebration: content.celebration }
    }
    CardDrag {
        id: drag
        anchors.fill: parent
        panel: content.panel
        reminders: content.reminders
        calendar: calendarModule
        grid: grid
    }
    Toast {
        id: toast
        anchors.horizontalCenter: parent.horizontalCenter
        y: parent.height + 12
        readonly property rect hung: content.panel.isExpanded ? area : Qt.rect(0, 0, 0, 0)
        onHungChanged: content.overlays.toast = hung
        onBegun: content.panel.setShowsToast(true)
        onShownChanged: if (!shown) content.panel.setShowsToast(false)
    }
    Tooltip {
        id: tooltip
        silent: content.overlays.topmost !== "" || drag.active || toolbar.showsTip
    }

    Connections {
        target: content.reminders
        function onChangeFailed(message) { toast.show(message) }
    }
    Connections {
        target: content.history
        function onRecorded(sentence, action) {
            toast.offer(sentence, Localizer.text("Undo", "Annuler"), () => content.history.undoOffered(action),
                        Localizer.text("Ctrl Z", "Ctrl Z"))
        }
        function onTakenBack(sentence, action) {
            toast.offer(sentence, Localizer.text("Redo", "Rétablir"), () => content.history.redoOffered(action),
                        Localizer.text("Ctrl Shift Z", "Ctrl Maj Z"))
        }
        function onWithdrawn() { if (toast.isOffer) toast.hide() }
        function onReplayed() { toast.hide() }
        function onFailed(title, message) {
            content.overlays.dismiss("historyFailure")
            content.overlays.present("historyFailure", "AlertPopover.qml", toolbar,
                                     { alignment: "center", title: title, message: message })
        }
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
    Connections {
        target: content.quickAdd
        function onChangeFailed(message) { toast.show(message) }
    }
    Connections {
        target: content.newEvent
        function onChangeFailed(message) { toast.show(message) }
    }
}
