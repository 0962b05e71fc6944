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
    required property RecapViewModel recap
    required property OverlayHost overlays
    /// The tooltip for whatever the pointer rests on.
    required property Tooltip tooltip
    property bool isCovered: false
    readonly property bool showsTip: panel.newReminderTipPending && panel.isExpanded && !isCovered
                                     && addButton.visible && overlays.topmost === ""
    signal modulesWanted

    readonly property bool showsCards: panel.showReminders
    /// Counts are shown only once they are known.
    readonly property bool knowsCounts: ["cards", "empty", "allDone", "nothingFound"].includes(reminders.content)
    /// Where the calendar begins, and where the cards end, in this item, while they stand in this order.
    property real cardsEnd: 0
    property real calendarStart: 0
    readonly property bool partsAtModules: panel.showReminders && panel.showCalendar && !panel.calendarFirst
    /// Without a camera the strip is the toolbar's whole width; then the search field is always there.
    readonly property bool wide: !panel.hasCamera && width >= 680
    readonly property int controlsY: panel.hasCamera ? 5 : 8
    readonly property int gap: 6

    /// How the chips are laid out: {x, compact} for each, and whether the list chip says "All". Words stay words while they
    /// fit beside the camera, the filters that do not fit on its left going on right of it; then "All lists" becomes "All",
    /// then filters become icons, from the last.
    readonly property var chipPlaces: placeChips([todayFilter.fullWidth, overdueFilter.fullWidth, flaggedFilter.fullWidth],
                                                 [todayFilter.fullWidth, overdueFilter.compactWidth, flaggedFilter.compactWidth])
    /// Width of the list chip beside its words.
    readonly property int besideListName: 2 * 10 + 13 + 15
    readonly property real chipsEnd: sortButton.x - gap
    function placeChips(words, icons) {
        const longList = Math.ceil(listName.advanceWidth) + besideListName
        const shortList = Math.ceil(allLists.advanceWidth) + besideListName
        const cameraStart = panel.hasCamera ? (width - panel.cameraSafeWidth) / 2 : chipsEnd
        const cameraEnd = width - cameraStart
        const saysAll = reminders.selectedListId === ""
        for (const [isShort, iconCount] of [[false, 0], [true, 0], [true, 1], [true, 2]]) {
            const listWidth = isShort ? (saysAll ? shortList : Math.min(longList, 90)) : Math.min(longList, 160)
            const widths = [listWidth].concat(words.map((width, index) => index >= words.length - iconCount ? icons[index] : width))
            const places = []
            let x = 0
            for (const width of widths) {
                if (x + width > cameraStart && x < cameraEnd)
                    x = cameraEnd
                places.push(x)
                x += width + gap
            }
            if (x - gap <= chipsEnd || iconCount === 2)
                return { x: places, firstWidth: listWidth, saysAll: isShort && saysAll, iconCount: iconCount }
        }
    }

    /// The middle of the button that opens the recap.
    readonly property real recapButtonX: right.x + recapButton.x + recapButton.width / 2

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
        const entries = [{ title: Localizer.text("All lists", "Toutes les listes"), color: reminders.allListsColor,
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

    // After the layout, which depends on the chips' own widths.
    Binding {
        target: listChip
        property: "shownText"
        value: toolbar.chipPlaces.saysAll ? allLists.text : listChip.text
        delayed: true
    }
    TextMetrics { id: allLists; font.pixelSize: Theme.panelText(12); font.weight: Font.Medium; text: Localizer.text("All", "Toutes") }
    TextMetrics { id: listName; font: allLists.font; text: toolbar.reminders.selectedListTitle }

    Item {
        id: left
        visible: toolbar.showsCards
        y: toolbar.controlsY
        height: 24

        Chip {
            id: listChip
            pixelSize: Theme.panelText(12)
            x: toolbar.chipPlaces.x[0]
            text: toolbar.reminders.selectedListTitle
            dotColor: toolbar.reminders.selectedListColor
            showsChevron: true
            maximumWidth: toolbar.chipPlaces.firstWidth
            spokenName: Localizer.text("List: %1", "Liste : %1").arg(text)
            tip: Localizer.text("Choose a list", "Choisir une liste")
            Accessible.role: Accessible.ButtonMenu
            onClicked: toolbar.openLists()
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        Chip {
            id: todayFilter
            pixelSize: Theme.panelText(12)
            x: toolbar.chipPlaces.x[1]
            text: Localizer.text("Today", "Aujourd’hui")
            iconName: "today"
            compact: toolbar.chipPlaces.iconCount >= 3
            tip: compact ? text : ""
            count: toolbar.knowsCounts ? toolbar.reminders.todayCount : -1
            checkable: true
            checked: toolbar.reminders.showsTodayOnly
            onClicked: toolbar.reminders.showsTodayOnly = !checked
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        Chip {
            id: overdueFilter
            pixelSize: Theme.panelText(12)
            x: toolbar.chipPlaces.x[2]
            text: Localizer.text("Overdue", "En retard")
            iconName: "overdue"
            compact: toolbar.chipPlaces.iconCount >= 2
            tip: compact ? text : ""
            count: toolbar.knowsCounts ? toolbar.reminders.overdueCount : -1
            countColor: count > 0 ? Theme.overdue : Theme.secondaryText
            checkable: true
            checked: toolbar.reminders.showsOverdueOnly
            onClicked: toolbar.reminders.showsOverdueOnly = !checked
            onHoveredChanged: toolbar.tooltip.follow(this)
            Keys.onDownPressed: toolbar.modulesWanted()
        }
        Chip {
            id: flaggedFilter
            pixelSize: Theme.panelText(12)
            x: toolbar.chipPlaces.x[3]
            text: Localizer.text("Flagged", "Signalés")
            iconName: "flag"
            compact: toolbar.chipPlaces.iconCount >= 1
            // Beside the filter stands whether flags that were set elsewhere are known.
            tip: toolbar.reminders.isFlagLoading ? Localizer.text("Reading flags…", "Lecture des drapeaux…")
               : toolbar.reminders.flagFilterError !== "" ? toolbar.reminders.flagFilterError
               : compact ? text : ""
            warns: toolbar.reminders.flagFilterError !== ""
            spokenName: warns ? text + ", " + toolbar.reminders.flagFilterError : text
            count: toolbar.knowsCounts ? toolbar.reminders.flaggedCount : -1
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
        y: toolbar.controlsY
        height: 24
        spacing: toolbar.wide ? 2 : 4

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
        IconButton {
            id: calendarButton
            // Kept while there is nothing to show, so that the others do not move when there is.
            visible: toolbar.panel.showCalendar
            readonly property bool isUsable: ["rows", "empty"].includes(toolbar.calendar.content)
            enabled: isUsable
            opacity: isUsable ? 1 : 0.35
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
            id: recapButton
            anchors.verticalCenter: parent.verticalCenter
            iconName: "recap"
            spokenName: Localizer.text("Recap", "Bilan")
            tip: Localizer.text("Recap  Ctrl R", "Bilan  Ctrl R")
            onClicked: toolbar.recap.open()
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
    IconButton {
        id: sortButton
        visible: toolbar.showsCards
        y: toolbar.controlsY
        x: toolbar.wide && toolbar.partsAtModules ? toolbar.cardsEnd - width + 5 : search.x - width - (toolbar.wide ? 8 : right.spacing)
        iconName: "sort"
        spokenName: Localizer.text("Sort", "Trier")
        checked: toolbar.overlays.topmost === "sort"
        onClicked: toolbar.openSort()
        onHoveredChanged: toolbar.tooltip.follow(this)
        Keys.onDownPressed: toolbar.modulesWanted()
    }
    SearchField {
        id: search
        visible: toolbar.showsCards
        y: toolbar.controlsY
        alwaysOpen: toolbar.wide
        x: toolbar.wide ? (toolbar.partsAtModules ? toolbar.calendarStart : right.x - width - 8) : right.x - width - right.spacing
        openWidth: toolbar.wide ? Math.min(inputHasFocus || query !== "" ? 150 : 112, right.x - toolbar.calendarStart - 8) : 112
        query: toolbar.reminders.searchQuery
        onQueryEdited: query => toolbar.reminders.searchQuery = query
        onDismissed: toolbar.modulesWanted()
        onInputHasFocusChanged: toolbar.panel.setSearchIsFocused(inputHasFocus)
        onHoveredChanged: toolbar.tooltip.follow(this)
    }
    NewReminderTip {
        y: toolbar.height - 2
        buttonX: right.x + addButton.x + addButton.width / 2
        shown: toolbar.showsTip
        onDone: toolbar.panel.finishNewReminderTip()
    }
}
