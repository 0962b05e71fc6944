import QtQuick
import Kestrant

// The window's whole content. At rest it is the black outline alone; the rest is loaded after the first frame.
Item {
    id: root

    required property PanelViewModel panel
    required property RemindersViewModel reminders
    required property CalendarViewModel calendar
    required property QuickAddViewModel quickAdd
    required property SettingsViewModel settings
    required property NewEventViewModel newEvent
    required property CalendarEditViewModel calendarEdit
    required property ReminderEditViewModel reminderEdit
    required property HistoryViewModel history
    required property YearRevealViewModel yearReveal
    required property OverlayHost overlays
    required property bool loadInBackground
    readonly property Item content: expanded.item ? expanded.item.item : null
    property bool started: !loadInBackground

    /// Whether the content at this place can scroll further down.
    function scrollsDownAt(x, y) {
        return content !== null && content.scrollsDownAt(x, y)
    }
    function focusContent() {
        if (reveal.item)
            reveal.item.forceActiveFocus(Qt.OtherFocusReason)
        else
            content.focusFirst()
    }
    /// What is expanded takes clicks from then on, so that the rest of its content cannot come little by little.
    function finishLoading() {
        root.started = true
        expanded.item.asynchronous = false
    }

    NotchOutline {
        id: outline
        width: parent.width
        height: Math.ceil(shapeHeight)
        shapeWidth: root.panel.shapeWidth
        shapeHeight: root.panel.shapeHeight
        earRadius: root.panel.earRadius
        bottomRadius: root.panel.bottomRadius
        shadeHeight: root.panel.material === "glass" ? root.height : 0
        borderColor: Theme.outline
        Behavior on shapeWidth { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
        Behavior on shapeHeight { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
        Behavior on earRadius { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
        Behavior on bottomRadius { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
    }

    // The first text brings the fonts with it, which takes longer than everything else the first frame needs.
    Loader {
        anchors.horizontalCenter: parent.horizontalCenter
        active: root.started || root.panel.phase !== 0
        sourceComponent: HoverHints { panel: root.panel }
    }

    Item {
        id: window
        anchors.horizontalCenter: parent.horizontalCenter
        width: outline.shapeWidth
        height: outline.shapeHeight
        // Content comes to light inside the growing outline, never beside it.
        clip: outline.shapeHeight < root.panel.expandedHeight
        opacity: root.panel.isExpanded ? 1 : 0
        visible: opacity > 0
        enabled: root.panel.isExpanded
        Behavior on opacity { enabled: !Theme.still; NumberAnimation { duration: Theme.leaveDuration; easing.type: Easing.OutCubic } }

        Loader {
            id: expanded
            anchors.horizontalCenter: parent.horizontalCenter
            width: root.panel.expandedWidth
            height: root.panel.expandedHeight
            opacity: reveal.item ? 1 - reveal.item.opacity : 1
            focus: true
            active: root.started
            Component.onCompleted: setSource("PanelContent.qml", { host: root, asynchronous: root.loadInBackground })
        }
    }

    Loader {
        id: reveal
        anchors.horizontalCenter: parent.horizontalCenter
        width: root.panel.expandedWidth
        height: root.panel.expandedHeight
        active: root.yearReveal.isShowing && root.panel.isExpanded
        visible: outline.shapeHeight === root.panel.expandedHeight
        sourceComponent: YearReveal {
            year: root.yearReveal
        }
        onLoaded: item.forceActiveFocus(Qt.OtherFocusReason)
        onItemChanged: if (!item && root.content && root.panel.isExpanded) root.content.focusFirst()
    }

    // Loaded once the resting notch is on screen, so that it appears at once and still opens without a pause.
    Timer {
        running: root.loadInBackground
        interval: 250
        onTriggered: root.started = true
    }

    Connections {
        target: root.settings
        // The introduction's window would stand beneath the panel.
        function onTutorialRequested() {
            root.overlays.dismissAll()
            root.panel.fold()
        }
    }
    Connections {
        target: root.panel
        function onPhaseChanged() {
            if (root.panel.isExpanded) {
                root.finishLoading()
                root.focusContent()
            } else {
                root.overlays.dismissAll()
                root.reminders.searchQuery = ""
                if (root.content)
                    root.content.focusFirst()
            }
        }
        function onNewReminderRequested() {
            root.yearReveal.finish()
            root.content.openQuickAdd()
        }
        function onFindReminderRequested() {
            root.yearReveal.finish()
            root.content.openSearch()
        }
    }
}
