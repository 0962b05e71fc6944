import QtQuick
import Kestrant

// What can be set; every change is in force at once.
Popover {
    id: popover

    required property SettingsViewModel settings

    contentWidth: 340
    contentHeight: title.height + area.height
    padding: 16
    spokenName: Localizer.text("Settings", "Réglages")
    focus: true

    Component.onCompleted: settings.refresh()

    readonly property real roomHeight: overlays ? overlays.roomHeight() : 0
    readonly property string offTitle: Localizer.text("Off", "Aucun")
    readonly property bool showsBoth: settings.showReminders && settings.showCalendar

    component Heading: PlainText {
        topPadding: 14
        bottomPadding: 4
        color: Theme.secondaryText
        font.pixelSize: 11
        font.weight: Font.DemiBold
        font.letterSpacing: 0.6
        font.capitalization: Font.AllUppercase
    }
    component Line: FormLine {
        width: column.width
        height: visible ? 34 : 0
    }
    component Explanation: PlainText {
        width: column.width
        topPadding: 2
        color: Theme.secondaryText
        font.pixelSize: 11
        wrapMode: Text.Wrap
    }
    // A value that opens the list of its choices.
    component Choice: Chip {
        id: choice
        property string subject
        property var choices: []
        property var value
        signal chosen(var rawValue)
        text: (choices.find(entry => entry.rawValue === value) ?? { title: "" }).title
        spokenName: subject + ", " + text
        showsChevron: true
        maximumWidth: 200
        Accessible.role: Accessible.ButtonMenu
        onClicked: {
            const offered = choices
            popover.overlays.present("settings." + subject, "MenuPopover.qml", choice, {
                alignment: "right", spokenName: subject,
                entries: offered.map(entry => ({ title: entry.title, checked: entry.rawValue === value })),
                choose: index => choice.chosen(offered[index].rawValue)
            })
        }
    }
    function seconds(values) {
        return values.map(value => ({
            rawValue: value,
            title: value === 0 ? Localizer.text("at once", "tout de suite")
                 : Localizer.text("after %1 s", "après %1 s").arg(Localizer.isFrench ? String(value).replace(".", ",") : value)
        }))
    }
    /// The offered values, with the present one among them also when it is none of them.
    function withPresent(values, present) {
        return values.includes(present) ? values : values.concat(present).sort((a, b) => a - b)
    }

    PlainText {
        id: title
        height: 26
        text: Localizer.text("Settings", "Réglages")
        color: Theme.text
        font.pixelSize: 14
        font.weight: Font.DemiBold
    }
    ScrollArea {
        id: area
        objectName: "settings.area"
        // A margin of its own for the scroll mark and for the lines around what has the focus.
        x: -8
        width: parent.width + 16
        anchors.top: title.bottom
        height: Math.min(contentHeight, Math.max(240, Math.min(560, popover.roomHeight / popover.zoom - 110)))
        contentHeight: column.height

        Column {
            id: column
            x: 8
            width: popover.contentWidth

            ProblemList {
                width: parent.width
                problems: popover.settings.problems
            }
            Heading {
                topPadding: 6
                text: Localizer.text("Panel", "Panneau")
            }
            Line {
                label: Localizer.text("Language", "Langue")
                Segmented {
                    spokenName: Localizer.text("Language", "Langue")
                    choices: [{ rawValue: "en", title: "English" }, { rawValue: "fr", title: "Français" }]
                    value: popover.settings.language
                    onChosen: rawValue => popover.settings.language = rawValue
                }
            }
            Line {
                label: Localizer.text("Click or swipe to open", "Clic ou balayage pour ouvrir")
                Toggle {
                    spokenName: Localizer.text("Click or swipe to open", "Clic ou balayage pour ouvrir")
                    checked: popover.settings.requiresClick
                    onToggled: checked => popover.settings.requiresClick = checked
                }
            }
            Line {
                visible: !popover.settings.requiresClick
                label: Localizer.text("Open on hover", "Ouvrir au survol")
                Choice {
                    subject: Localizer.text("Open on hover", "Ouvrir au survol")
                    choices: popover.seconds(popover.withPresent([0, 0.15, 0.3, 0.6, 1], value))
                    value: popover.settings.hoverDelay
                    onChosen: rawValue => popover.settings.hoverDelay = rawValue
                }
            }
            Line {
                label: Localizer.text("Close", "Fermer")
                Choice {
                    subject: Localizer.text("Close", "Fermer")
                    choices: popover.seconds(popover.withPresent([0, 0.2, 0.5, 1, 2], value))
                    value: popover.settings.autoCloseDelay
                    onChosen: rawValue => popover.settings.autoCloseDelay = rawValue
                }
            }
            Line {
                label: Localizer.text("Material", "Matière")
                last: true
                Segmented {
                    spokenName: Localizer.text("Material", "Matière")
                    choices: [{ rawValue: "glass", title: Localizer.text("Glass", "Verre") },
                              { rawValue: "black", title: Localizer.text("Black", "Noir") }]
                    value: popover.settings.material
                    onChosen: rawValue => popover.settings.material = rawValue
                }
            }

            Heading { text: Localizer.text("Modules", "Modules") }
            Line {
                label: Localizer.text("Reminders", "Rappels")
                Toggle {
                    spokenName: Localizer.text("Reminders", "Rappels")
                    checked: popover.settings.showReminders
                    onToggled: checked => popover.settings.showReminders = checked
                }
            }
            Line {
                label: Localizer.text("Calendar", "Calendrier")
                last: !popover.settings.showCalendar
                Toggle {
                    spokenName: Localizer.text("Calendar", "Calendrier")
                    checked: popover.settings.showCalendar
                    onToggled: checked => popover.settings.showCalendar = checked
                }
            }
            Line {
                visible: popover.settings.showCalendar
                label: Localizer.text("Reminders in the calendar", "Rappels dans le calendrier")
                last: !popover.showsBoth
                Toggle {
                    spokenName: Localizer.text("Reminders in the calendar", "Rappels dans le calendrier")
                    checked: popover.settings.showRemindersInCalendar
                    onToggled: checked => popover.settings.showRemindersInCalendar = checked
                }
            }
            Line {
                visible: popover.showsBoth
                label: Localizer.text("Order", "Ordre")
                Choice {
                    subject: Localizer.text("Order", "Ordre")
                    choices: popover.settings.moduleOrders
                    value: popover.settings.moduleOrder
                    onChosen: rawValue => popover.settings.moduleOrder = rawValue
                }
            }
            Line {
                visible: popover.showsBoth
                last: true
                label: Localizer.text("Share", "Partage")
                Choice {
                    subject: Localizer.text("Share", "Partage")
                    choices: popover.settings.layoutRatios
                    value: popover.settings.layoutRatio
                    onChosen: rawValue => popover.settings.layoutRatio = rawValue
                }
            }

            Heading { text: Localizer.text("Sound and touch", "Son et toucher") }
            Line {
                label: Localizer.text("Sounds", "Sons")
                Segmented {
                    spokenName: Localizer.text("Sounds", "Sons")
                    choices: [{ rawValue: 0, title: popover.offTitle },
                              { rawValue: 2, title: Localizer.text("Soft", "Doux") },
                              { rawValue: 1, title: Localizer.text("Full", "Complet") }]
                    value: popover.settings.sounds
                    onChosen: rawValue => popover.settings.sounds = rawValue
                }
            }
            Line {
                label: Localizer.text("Touch feedback", "Retour tactile")
                last: true
                Segmented {
                    spokenName: Localizer.text("Touch feedback", "Retour tactile")
                    choices: [{ rawValue: 0, title: popover.offTitle },
                              { rawValue: 1, title: Localizer.text("Light", "Léger") },
                              { rawValue: 2, title: Localizer.text("Full", "Complet") }]
                    value: popover.settings.haptics
                    onChosen: rawValue => popover.settings.haptics = rawValue
                }
            }

            Heading {
                visible: popover.settings.dataStore.isOffered
                text: Localizer.text("Reminders and events", "Rappels et événements")
            }
            Line {
                visible: popover.settings.dataStore.isOffered
                label: Localizer.text("Kept", "Conservés")
                last: true
                Choice {
                    subject: Localizer.text("Kept", "Conservés")
                    choices: popover.settings.dataStore.kinds
                    value: popover.settings.dataStore.kind
                    onChosen: rawValue => popover.settings.dataStore.kind = rawValue
                }
            }
            DataStoreFields {
                visible: popover.settings.dataStore.isOffered
                width: parent.width
                store: popover.settings.dataStore
            }

            Heading { text: Localizer.text("Program", "Programme") }
            Line {
                visible: popover.settings.canLaunchAtLogin
                label: Localizer.text("Start at login", "Lancer à l’ouverture de session")
                Toggle {
                    objectName: "settings.launchAtLogin"
                    spokenName: Localizer.text("Start at login", "Lancer à l’ouverture de session")
                    checked: popover.settings.launchesAtLogin
                    onToggled: checked => popover.settings.launchesAtLogin = checked
                }
            }
            Explanation {
                visible: text !== ""
                bottomPadding: 6
                text: popover.settings.launchAtLoginProblem
                color: Theme.overdue
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }
            Line {
                visible: popover.settings.canCount
                label: Localizer.text("Count completed reminders", "Compter les rappels terminés")
                last: true
                Toggle {
                    spokenName: Localizer.text("Count completed reminders", "Compter les rappels terminés")
                    checked: popover.settings.counts
                    onToggled: checked => popover.settings.counts = checked
                }
            }
            Explanation {
                visible: popover.settings.canCount
                bottomPadding: 8
                text: popover.settings.countsHelp
            }
            Flow {
                width: parent.width
                topPadding: 8
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
                                                        { form: popover.settings.feedback, alignment: "right" })
                }
                PushButton {
                    text: Localizer.text("Quit Kestrant", "Quitter Kestrant")
                    onClicked: popover.settings.quit()
                }
            }
            Explanation {
                topPadding: 12
                text: "Kestrant " + popover.settings.version + " · "
                      + Localizer.text("free software under the MIT licence", "logiciel libre sous licence MIT")
            }
        }
    }

    Tooltip {
        id: tooltip
        parent: popover
        silent: popover.overlays.topmost !== popover.overlayId
    }
}
