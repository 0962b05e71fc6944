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
    required property EventDetailsViewModel eventDetails
    required property ReminderEditViewModel reminderEdit
    required property HistoryViewModel history
    required property RecapViewModel recap
    required property CelebrationViewModel celebration
    required property AnnouncementViewModel announcement
    required property YearRevealViewModel yearReveal
    required property OverlayHost overlays
    required property bool loadInBackground
    /// The keyboard goes to the content when the panel opens.
    property bool takesKeyboard: true
    /// The parent of popovers.
    property Item popoverFrame: frame
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
    /// Loads the rest of the content at once, since the expanded panel takes clicks from then on.
    function finishLoading() {
        root.started = true
        expanded.item.asynchronous = false
    }

    /// Room is needed for more than the resting notch.
    readonly property bool isSpread: panel.isExpanded || outline.shapeHeight > panel.restingHeight
    /// How far the panel is open, 0 to 1.
    readonly property real openness: Math.max(0, (outline.shapeHeight - panel.restingHeight)
                                                 / (panel.expandedHeight - panel.restingHeight))

    // Where the expanded panel is, which is all that anything in it is placed by.
    Item {
        id: frame
        x: (parent.width - width) / 2
        width: root.panel.expandedWidth
        height: root.panel.expandedHeight

        component Shade: DropShadow {
            // The ears and the upper edge have none: it begins far above that.
            x: outline.x + (outline.width - width) / 2
            y: -200
            width: outline.shapeWidth - 2 * outline.earRadius
            height: outline.shapeHeight - y
            radius: outline.bottomRadius
        }
        Loader {
            active: Appearance.compositing && root.openness < 1
            sourceComponent: Shade {
                kind: DropShadow.Notch
                radius: 14
                opacity: 1 - root.openness
            }
        }
        Loader {
            active: Appearance.compositing && root.isSpread
            sourceComponent: Shade {
                kind: DropShadow.Panel
                radius: 26
                opacity: root.openness
            }
        }
        NotchOutline {
            id: outline
            // As many whole points from either side, so that it covers whole pixels.
            x: Math.floor((parent.width - shapeWidth) / 2)
            width: parent.width - 2 * x
            height: Math.ceil(shapeHeight)
            shapeWidth: root.panel.shapeWidth
            shapeHeight: root.panel.shapeHeight
            earRadius: root.panel.earRadius
            bottomRadius: root.panel.bottomRadius
            fullHeight: root.panel.expandedHeight
            ground: root.panel.material === "black" ? NotchOutline.Black
                  : Theme.contrast || !Appearance.compositing ? NotchOutline.Shaded
                  : Appearance.blurring ? NotchOutline.Blurred : NotchOutline.Blended
            borderColor: Theme.outline
            rim: 0.16 * root.openness
            component Move: NumberAnimation {
                duration: root.panel.isExpanded ? Theme.panelDuration
                        : root.openness > 0 ? Theme.leaveDuration : Theme.hoverDuration
                easing.type: root.panel.isExpanded ? Easing.OutQuint
                           : root.openness > 0 ? Easing.InOutCubic : Easing.OutCubic
            }
            Behavior on shapeWidth { enabled: !Theme.still; Move {} }
            Behavior on shapeHeight { enabled: !Theme.still; Move {} }
            Behavior on earRadius { enabled: !Theme.still; Move {} }
            Behavior on bottomRadius { enabled: !Theme.still; Move {} }
        }

        // The first text brings the fonts with it, which takes longer than everything else the first frame needs.
        Loader {
            anchors.horizontalCenter: parent.horizontalCenter
            active: root.started || root.panel.phase !== 0
            sourceComponent: HoverHints { panel: root.panel }
        }
        Loader {
            anchors.horizontalCenter: parent.horizontalCenter
            active: root.panel.resting.kind !== "silent"
            sourceComponent: RestingSign { panel: root.panel }
        }
        // The minutes until an event pass also while nothing else happens.
        Timer {
            running: root.panel.resting.followsTime && !root.panel.isExpanded
            interval: 20000
            repeat: true
            onTriggered: root.calendar.refreshPresent()
        }

        Item {
            id: window
            anchors.horizontalCenter: parent.horizontalCenter
            width: outline.shapeWidth
            height: outline.shapeHeight
            // Content comes to light inside the growing outline, never beside it.
            clip: root.openness < 1
            property real shown: root.panel.isExpanded ? 1 : 0
            opacity: Theme.opacity(shown)
            visible: opacity > 0
            enabled: root.panel.isExpanded
            Behavior on shown {
                enabled: !Theme.still
                NumberAnimation {
                    duration: root.panel.isExpanded ? Theme.leaveDuration : 90
                    easing.type: Easing.OutCubic
                }
            }

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
            width: root.panel.expandedWidth
            height: root.panel.expandedHeight
            active: root.yearReveal.isShowing && root.panel.isExpanded
            visible: root.openness === 1
            sourceComponent: YearReveal {
                year: root.yearReveal
                sideMargin: root.panel.earRadius + Theme.margin
            }
            onLoaded: item.forceActiveFocus(Qt.OtherFocusReason)
            onItemChanged: if (!item && root.content && root.panel.isExpanded) root.content.focusFirst()
        }
        Component.onCompleted: root.overlays.frame = root.popoverFrame
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
                if (root.takesKeyboard)
                    root.focusContent()
            } else {
                root.overlays.dismissAll()
                root.reminders.searchQuery = ""
                if (root.content && root.takesKeyboard)
                    root.content.focusFirst()
            }
        }
        function onNewReminderRequested() {
            root.yearReveal.finish()
            root.recap.close()
            if (!root.overlays.isPresented("quickAdd"))
                root.content.openQuickAdd()
        }
        function onFindReminderRequested() {
            root.yearReveal.finish()
            root.recap.close()
            root.overlays.dismissAll()
            root.content.openSearch()
        }
    }
}
