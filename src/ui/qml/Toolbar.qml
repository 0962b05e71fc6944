import QtQuick
import Kestrant

// The strip beside the camera: what is shown on the left, what can be done on the right.
FocusScope {
    id: toolbar

    required property PanelViewModel panel
    required property RemindersViewModel reminders
    required property CalendarViewModel calendar
    required property QuickAddViewModel quickAdd
    required property NewEventViewModel newEvent
    required property SettingsViewModel settings
    required property OverlayHost overlays
    /// Whatever the pointer rests on tells its name here.
    required property Tooltip tooltip
    property bool isCovered: false
    readonly property bool showsTip: panel.newReminderTipPending && panel.isExpanded && !isCovered
                                     && addButton.visible && overlays.topmost === ""
    signal modulesWanted

    readonly property real sideWidth: (width - panel.cameraSafeWidth) / 2 - 2
    readonly property bool showsCards: panel.showReminders

    height: Theme.toolbarHeight

    function openQuickAdd() {
        panel.finishNewReminderTip()
        overlays.present("quickAdd", "QuickAddPopover.qml", addButton, { form: quickAdd, newEvent: newEvent })
    }
    function openSettings() {
        overlays.present("settings", "SettingsPopover.qml", settingsButton, { alignment: "right", settings: settings })
    }
    function openSearch() {
        if (showsCards)
            search.open()
    }
    function openLists() {
        const entries = [{ title: Localizer.text("All lists", "Toutes les listes"), color: Theme.accent,
                           checked: reminders.selectedListId === "" }]
        for (const list of reminders.lists)
            entries.push({ title: list.title, color: list.color, checked: reminders.selectedListId === list.id })
        const lists = reminders.lists
        overlays.present("lists", "MenuPopover.qml", listChip, {
            alignment: "left", entries: entries, spokenName: Localizer.text("Lists", "Listes"),
            choose: index => { reminders.selectedListId = index === 0 ? "" : lists[index - 1].id }
        })
    }
    function openSort() {
        const modes = reminders.sortModes
        overlays.present("sort", "MenuPopover.qml", sortButton, {
            alignment: "right", title: Localizer.text("Sort by", "Trier par"),
            entries: modes.map(mode => ({ title: mode.title, checked: mode.rawValue === reminders.sortMode })),
            choose: index => { reminders.sortMode = modes[index].rawValue }
        })
    }

    Row {
        id: left
        visible: toolbar.showsCards
        height: parent.height
        spacing: 5

        // Words give way to icons, all at once, where they do not fit.
        readonly property real wordsWidth: Math.min(100, listChip.fullWidth) + todayFilter.fullWidth
                                           + overdueFilter.fullWidth + flaggedFilter.fullWidth + 3 * spacing
        readonly property bool compact: wordsWidth > toolbar.sideWidth
        readonly property real filtersWidth: todayFilter.width + overdueFilter.width + flaggedFilter.width
                                             + 3 * spacing

        Chip {
            id: listChip
            anchors.verticalCenter: parent.verticalCenter
            text: toolbar.reminders.selectedListTitle
            dotColor: toolbar.reminders.selectedListColor
            showsChevron: true
            maximumWidth: toolbar.sideWidth - left.filtersWidth
            spokenName: Localizer.text("List: %1", "Liste : %1").arg(text)
            tip: Localizer.text("Choose a list", "Choisir une liste")
            Accessible.role: Accessible.ButtonMenu
            onClicked: toolbar.openLists()
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        Chip {
            id: todayFilter
            anchors.verticalCenter: parent.verticalCenter
            text: Localizer.text("Today", "Aujourd’hui")
            iconName: "today"
            compact: left.compact
            tip: compact ? text : ""
            count: toolbar.reminders.todayCount
            checkable: true
            checked: toolbar.reminders.showsTodayOnly
            onClicked: toolbar.reminders.showsTodayOnly = !checked
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        Chip {
            id: overdueFilter
            anchors.verticalCenter: parent.verticalCenter
            text: Localizer.text("Overdue", "En retard")
            iconName: "overdue"
            compact: left.compact
            tip: compact ? text : ""
            count: toolbar.reminders.overdueCount
            countColor: count > 0 ? Theme.overdue : Theme.secondaryText
            checkable: true
            checked: toolbar.reminders.showsOverdueOnly
            onClicked: toolbar.reminders.showsOverdueOnly = !checked
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        Chip {
            id: flaggedFilter
            anchors.verticalCenter: parent.verticalCenter
            text: Localizer.text("Flagged", "Signalés")
            iconName: "flag"
            compact: left.compact
            // Beside the filter stands whether flags that were set elsewhere are known.
            tip: toolbar.reminders.isFlagLoading ? Localizer.text("Reading flags…", "Lecture des drapeaux…")
               : toolbar.reminders.flagFilterError !== "" ? toolbar.reminders.flagFilterError
               : compact ? text : ""
            warns: toolbar.reminders.flagFilterError !== ""
            spokenName: warns ? text + ", " + toolbar.reminders.flagFilterError : text
            count: toolbar.reminders.flaggedCount
            checkable: true
            checked: toolbar.reminders.showsFlaggedOnly
            onClicked: toolbar.reminders.showsFlaggedOnly = !checked
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
    }

    Row {
        id: right
        anchors.right: parent.right
        // The last icon's strokes, not its area, stand on the margin.
        anchors.rightMargin: -5
        height: parent.height
        spacing: 4

        SearchField {
            id: search
            visible: toolbar.showsCards
            anchors.verticalCenter: parent.verticalCenter
            openWidth: Math.min(170, toolbar.sideWidth - 4 * 30 - 10)
            query: toolbar.reminders.searchQuery
            onQueryEdited: query => toolbar.reminders.searchQuery = query
            onDismissed: toolbar.modulesWanted()
            onInputHasFocusChanged: toolbar.panel.setSearchIsFocused(inputHasFocus)
            onHoveredChanged: toolbar.tooltip.follow(this)
        }
        IconButton {
            id: sortButton
            visible: toolbar.showsCards
            anchors.verticalCenter: parent.verticalCenter
            iconName: "sort"
            spokenName: Localizer.text("Sort", "Trier")
            checked: toolbar.overlays.topmost === "sort"
            onClicked: toolbar.openSort()
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        IconButton {
            id: addButton
            visible: toolbar.panel.showReminders || toolbar.panel.showCalendar
            anchors.verticalCenter: parent.verticalCenter
            iconName: "plus"
            spokenName: Localizer.text("New reminder", "Nouveau rappel")
            tip: Localizer.text("New reminder  Ctrl N", "Nouveau rappel  Ctrl N")
            checked: toolbar.overlays.topmost === "quickAdd"
            onClicked: toolbar.openQuickAdd()
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        Rectangle {
            visible: addButton.visible && calendarButton.visible
            anchors.verticalCenter: parent.verticalCenter
            width: 1
            height: 14
            color: Theme.white(Theme.contrast ? 0.4 : 0.16)
        }
        IconButton {
            id: calendarButton
            visible: toolbar.panel.showCalendar && ["rows", "empty"].includes(toolbar.calendar.content)
            anchors.verticalCenter: parent.verticalCenter
            iconName: "calendar"
            spokenName: checked ? Localizer.text("Return to the current week", "Revenir à la semaine actuelle")
                                : Localizer.text("Show your full calendar", "Afficher tout le calendrier")
            checked: toolbar.calendar.showsAllEvents
            onClicked: toolbar.calendar.showsAllEvents = !checked
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        IconButton {
            id: settingsButton
            anchors.verticalCenter: parent.verticalCenter
            iconName: "settings"
            warns: toolbar.settings.problems.length > 0
            spokenName: warns ? Localizer.text("Settings, %1", "Réglages, %1").arg(toolbar.settings.problems[0])
                              : Localizer.text("Settings", "Réglages")
            tip: warns ? toolbar.settings.problems[0] : spokenName
            checked: toolbar.overlays.topmost === "settings"
            onClicked: toolbar.openSettings()
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
    }
    NewReminderTip {
        y: toolbar.height + 3
        buttonX: right.x + addButton.x + addButton.width / 2
        shown: toolbar.showsTip
        onDone: toolbar.panel.finishNewReminderTip()
    }
}
