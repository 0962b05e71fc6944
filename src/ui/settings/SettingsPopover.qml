import QtQuick
import Kestrant

// The settings; every change takes effect at once. Two columns of groups; head and foot stay where they scroll.
Popover {
    id: popover

    required property SettingsViewModel settings

    readonly property int gap: 20
    /// Side by side where the panel is wide enough for the size of the texts, else one below the other.
    readonly property bool hasTwoColumns: !overlays || (752 + 2 * padding) * zoom <= overlays.roomWidth() - 32
    readonly property real columnWidth: hasTwoColumns ? Math.floor((contentWidth - gap) / 2) : contentWidth
    readonly property real roomHeight: overlays ? overlays.roomHeight() : 0
    readonly property string offTitle: Localizer.text("Off", "Aucun")
    readonly property bool showsBoth: settings.showReminders && settings.showCalendar

    contentWidth: hasTwoColumns ? 752 : 366
    contentHeight: head.height + area.height + foot.height
    padding: 16
    spokenName: Localizer.text("Settings", "Réglages")
    focus: true

    Component.onCompleted: settings.refresh()

    // A title and its rows on a ground of their own.
    component Group: Column {
        id: group
        property string title
        default property alias rows: rowColumn.data
        width: popover.columnWidth
        spacing: 6
        PlainText {
            x: 4
            text: group.title
            color: Theme.text
            font.pixelSize: 12
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        Rectangle {
            width: parent.width
            height: rowColumn.height
            radius: 14
            color: Theme.group
            border.color: Theme.outline
            border.width: Theme.contrast ? 1 : 0
            Column {
                id: rowColumn
                x: 14
                width: parent.width - 28
            }
        }
    }
    component Line: FormLine {
        width: popover.columnWidth - 28
        height: visible ? 40 : 0
    }
    component Explanation: PlainText {
        width: popover.columnWidth - 28
        color: Theme.secondaryText
        font.pixelSize: 11
        wrapMode: Text.Wrap
    }
    component SwitchedLine: ToggleLine {
        width: popover.columnWidth - 28
        height: visible ? 40 : 0
    }
    component SplitLine: SegmentedLine {
        width: popover.columnWidth - 28
        height: visible ? 40 : 0
    }
    component ListedLine: ChoiceLine {
        overlays: popover.overlays
        width: popover.columnWidth - 28
        height: visible ? 40 : 0
    }
    function seconds(values, none) {
        return values.map(value => ({
            rawValue: value,
            title: value === 0 ? none
                 : Localizer.text("%1 s", "%1 s").arg(Localizer.isFrench ? String(value).replace(".", ",") : value)
        }))
    }
    /// The offered values, with the present one among them also when it is none of them.
    function withPresent(values, present) {
        return values.includes(present) ? values : values.concat(present).sort((a, b) => a - b)
    }

    Item {
        id: head
        width: parent.width
        height: 40

        PlainText {
            height: 26
            verticalAlignment: Text.AlignVCenter
            text: Localizer.text("Settings", "Réglages")
            color: Theme.text
            font.pixelSize: 15
            font.weight: Font.DemiBold
        }
        Segmented {
            id: language
            anchors.right: close.left
            anchors.rightMargin: 10
            spokenName: Localizer.text("Language", "Langue")
            choices: [{ rawValue: "en", title: "English" }, { rawValue: "fr", title: "Français" }]
            value: popover.settings.language
            onChosen: rawValue => popover.settings.language = rawValue
        }
        IconButton {
            id: close
            objectName: "settings.close"
            anchors.right: parent.right
            y: 1
            iconName: "close"
            spokenName: Localizer.text("Close", "Fermer")
            onClicked: popover.close()
        }
    }
    ScrollArea {
        id: area
        objectName: "settings.area"
        // A margin of its own for the scroll mark and for the lines around what has the focus.
        x: -8
        width: parent.width + 16
        anchors.top: head.bottom
        height: Math.min(contentHeight, Math.max(200, (popover.roomHeight - 60) / popover.zoom - 2 * popover.padding - head.height - foot.height))
        contentHeight: columns.height

        Item {
            id: columns
            x: 8
            width: popover.contentWidth
            height: right.y + (popover.hasTwoColumns ? Math.max(left.height, right.height) : right.height)

            ProblemList {
                id: problems
                width: parent.width
                height: visible ? implicitHeight + 8 : 0
                problems: popover.settings.problems
            }
            Column {
                id: left
                y: problems.height
                spacing: 16

                Group {
                    title: Localizer.text("Opening", "Ouverture")
                    SplitLine {
                        label: Localizer.text("Opens", "S’ouvre")
                        last: popover.settings.requiresClick
                        choices: [{ rawValue: false, title: Localizer.text("on hover", "au survol") },
                                  { rawValue: true, title: Localizer.text("on click or swipe", "au clic ou geste") }]
                        value: popover.settings.requiresClick
                        onChosen: rawValue => popover.settings.requiresClick = rawValue
                    }
                    ListedLine {
                        visible: !popover.settings.requiresClick
                        label: Localizer.text("Wait before opening", "Attente avant l’ouverture")
                        choices: popover.seconds(popover.withPresent([0, 0.15, 0.3, 0.6, 1], value),
                                                 Localizer.text("none", "aucune"))
                        value: popover.settings.hoverDelay
                        onChosen: rawValue => popover.settings.hoverDelay = rawValue
                    }
                    ListedLine {
                        label: Localizer.text("Wait before closing", "Attente avant la fermeture")
                        last: !popover.settings.canInvertSwipes
                        choices: popover.seconds(popover.withPresent([0, 0.2, 0.5, 1, 2], value),
                                                 Localizer.text("none", "aucune"))
                        value: popover.settings.autoCloseDelay
                        onChosen: rawValue => popover.settings.autoCloseDelay = rawValue
                    }
                    SwitchedLine {
                        visible: popover.settings.canInvertSwipes
                        label: Localizer.text("Turn the direction of swipes round", "Inverser le sens des gestes")
                        last: true
                        checked: popover.settings.invertsSwipes
                        onToggled: checked => popover.settings.invertsSwipes = checked
                    }
                }
                Group {
                    title: Localizer.text("Place", "Place")
                    ListedLine {
                        visible: choices.length > 1
                        label: Localizer.text("Screen", "Écran")
                        choices: popover.settings.panelScreens
                        value: popover.settings.panelScreen
                        onChosen: rawValue => popover.settings.panelScreen = rawValue
                    }
                    SplitLine {
                        label: Localizer.text("Position", "Position")
                        choices: [{ rawValue: "left", title: Localizer.text("left", "à gauche") },
                                  { rawValue: "middle", title: Localizer.text("middle", "au milieu") },
                                  { rawValue: "right", title: Localizer.text("right", "à droite") }]
                        value: popover.settings.panelPlace
                        onChosen: rawValue => popover.settings.panelPlace = rawValue
                    }
                    Explanation {
                        bottomPadding: 8
                        text: Localizer.text("Alt and a drag carry the notch along the edge.",
                                             "Alt et glisser déplacent l’encoche le long du bord.")
                    }
                    ListedLine {
                        label: Localizer.text("Hangs", "Accrochée")
                        choices: popover.settings.panelEdges
                        value: popover.settings.panelEdge
                        onChosen: rawValue => popover.settings.panelEdge = rawValue
                    }
                    SwitchedLine {
                        label: Localizer.text("Below windows in full screen", "Sous les fenêtres en plein écran")
                        last: true
                        checked: popover.settings.yieldsToFullScreen
                        onToggled: checked => popover.settings.yieldsToFullScreen = checked
                    }
                }
                Group {
                    title: Localizer.text("At rest", "Au repos")
                    ListedLine {
                        label: Localizer.text("What is left", "Ce qui reste")
                        choices: popover.settings.restingLooks
                        value: popover.settings.restingLook
                        onChosen: rawValue => popover.settings.restingLook = rawValue
                    }
                    ListedLine {
                        visible: popover.settings.restingLook === "notch"
                        label: Localizer.text("Show", "Afficher")
                        subject: Localizer.text("Show at rest", "Afficher au repos")
                        choices: popover.settings.restingContents
                        value: popover.settings.restingContent
                        onChosen: rawValue => popover.settings.restingContent = rawValue
                    }
                    SwitchedLine {
                        label: Localizer.text("Pulse when something rings", "Onduler quand un rappel sonne")
                        last: true
                        checked: popover.settings.pulsesWhenRinging
                        onToggled: checked => popover.settings.pulsesWhenRinging = checked
                    }
                }
                Group {
                    title: Localizer.text("Look", "Aspect")
                    SplitLine {
                        label: Localizer.text("Material", "Matière")
                        last: true
                        choices: [{ rawValue: "glass", title: Localizer.text("Glass", "Verre") },
                                  { rawValue: "black", title: Localizer.text("Black", "Noir") }]
                        value: popover.settings.material
                        onChosen: rawValue => popover.settings.material = rawValue
                    }
                }
            }
            Column {
                id: right
                x: popover.contentWidth - popover.columnWidth
                y: problems.height + (popover.hasTwoColumns ? 0 : left.height + left.spacing)
                spacing: 16

                Group {
                    title: Localizer.text("Modules", "Modules")
                    SwitchedLine {
                        label: Localizer.text("Reminders", "Rappels")
                        checked: popover.settings.showReminders
                        onToggled: checked => popover.settings.showReminders = checked
                    }
                    SwitchedLine {
                        label: Localizer.text("Calendar", "Calendrier")
                        last: !popover.settings.showCalendar
                        checked: popover.settings.showCalendar
                        onToggled: checked => popover.settings.showCalendar = checked
                    }
                    SwitchedLine {
                        visible: popover.settings.showCalendar
                        label: Localizer.text("Reminders in the calendar", "Rappels dans le calendrier")
                        last: !popover.showsBoth
                        checked: popover.settings.showRemindersInCalendar
                        onToggled: checked => popover.settings.showRemindersInCalendar = checked
                    }
                    ListedLine {
                        visible: popover.showsBoth
                        label: Localizer.text("Order", "Ordre")
                        choices: popover.settings.moduleOrders
                        value: popover.settings.moduleOrder
                        onChosen: rawValue => popover.settings.moduleOrder = rawValue
                    }
                    Line {
                        visible: popover.showsBoth
                        last: true
                        label: Localizer.text("Share", "Partage")
                        RatioChoice {
                            spokenName: Localizer.text("Share", "Partage")
                            choices: popover.settings.layoutRatios
                            value: popover.settings.layoutRatio
                            onChosen: rawValue => popover.settings.layoutRatio = rawValue
                        }
                    }
                }
                Group {
                    title: Localizer.text("Sound and touch", "Son et toucher")
                    SplitLine {
                        label: Localizer.text("Sounds", "Sons")
                        choices: [{ rawValue: 0, title: popover.offTitle },
                                  { rawValue: 2, title: Localizer.text("Soft", "Doux") },
                                  { rawValue: 1, title: Localizer.text("Full", "Complet") }]
                        value: popover.settings.sounds
                        onChosen: rawValue => popover.settings.sounds = rawValue
                    }
                    SplitLine {
                        visible: popover.settings.canBeFelt
                        label: Localizer.text("Touch", "Toucher")
                        choices: [{ rawValue: 0, title: popover.offTitle },
                                  { rawValue: 1, title: Localizer.text("Light", "Léger") },
                                  { rawValue: 2, title: Localizer.text("Full", "Complet") }]
                        value: popover.settings.haptics
                        onChosen: rawValue => popover.settings.haptics = rawValue
                    }
                    SwitchedLine {
                        label: Localizer.text("Celebrate what is done", "Fêter ce qui est fait")
                        last: true
                        checked: popover.settings.celebrates
                        onToggled: checked => popover.settings.celebrates = checked
                    }
                }
                Group {
                    visible: popover.settings.dataStore.isOffered
                    title: Localizer.text("Reminders and events", "Rappels et événements")
                    ListedLine {
                        label: Localizer.text("Kept in", "Conservés dans")
                        last: true
                        choices: popover.settings.dataStore.kinds
                        value: popover.settings.dataStore.kind
                        onChosen: rawValue => popover.settings.dataStore.kind = rawValue
                    }
                    DataStoreFields {
                        width: popover.columnWidth - 28
                        bottomPadding: 12
                        store: popover.settings.dataStore
                    }
                }
                Group {
                    title: Localizer.text("Program", "Programme")
                    SwitchedLine {
                        visible: popover.settings.canLaunchAtLogin
                        label: Localizer.text("Start at login", "Lancer à l’ouverture de session")
                        last: !popover.settings.canCount
                        controlName: "settings.launchAtLogin"
                        checked: popover.settings.launchesAtLogin
                        onToggled: checked => popover.settings.launchesAtLogin = checked
                    }
                    Explanation {
                        visible: text !== ""
                        bottomPadding: 8
                        text: popover.settings.launchAtLoginProblem
                        color: Theme.overdue
                        Accessible.role: Accessible.AlertMessage
                        Accessible.name: text
                    }
                    SwitchedLine {
                        visible: popover.settings.canCount
                        label: Localizer.text("Count completed reminders", "Compter les rappels terminés")
                        last: true
                        checked: popover.settings.counts
                        onToggled: checked => popover.settings.counts = checked
                    }
                    Explanation {
                        visible: popover.settings.canCount
                        bottomPadding: 10
                        text: popover.settings.countsHelp
                    }
                }
            }
        }
    }
    Item {
        id: foot
        anchors.top: area.bottom
        width: parent.width
        height: 44

        PlainText {
            anchors.bottom: parent.bottom
            x: 4
            height: 28
            width: buttons.x - x - 12
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            text: popover.hasTwoColumns ? "Kestrant " + popover.settings.version + " · "
                  + Localizer.text("free software under the MIT licence", "logiciel libre sous licence MIT") : ""
            color: Theme.secondaryText
            font.pixelSize: 11
        }
        Row {
            id: buttons
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            spacing: 8
            PushButton {
                objectName: "settings.tutorial"
                visible: popover.settings.canShowTutorial
                text: Localizer.text("Tutorial", "Tutoriel")
                onClicked: popover.settings.showTutorial()
            }
            PushButton {
                id: feedbackEntry
                readonly property string tip: popover.settings.feedback.entryHelp
                objectName: "settings.feedback"
                visible: popover.settings.feedback.isAvailable
                text: popover.settings.feedback.texts.title
                spokenDescription: tip
                onHoveredChanged: tooltip.follow(this)
                onClicked: popover.overlays.present("feedback", "FeedbackPopover.qml", feedbackEntry,
                                                    { form: popover.settings.feedback })
            }
            PushButton {
                text: Localizer.text("Quit Kestrant", "Quitter Kestrant")
                onClicked: popover.settings.quit()
            }
        }
    }

    Tooltip {
        id: tooltip
        parent: popover
        silent: popover.overlays.topmost !== popover.overlayId
    }
}
