import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property SettingsViewModel settings

    title: Localizer.text("How the notch behaves", "Comment réagit l’encoche")
    explanation: Localizer.text("All of it can be changed later in the settings.",
                                "Tout se change plus tard dans les réglages.")

    /// Four lines take the room of three where the desktop's bar asks for one more.
    readonly property int lineHeight: settings.barIsBusy ? 32 : 42

    component SwitchedLine: ToggleLine {
        width: 308
        height: page.lineHeight
    }
    component SplitLine: SegmentedLine {
        width: 308
        height: page.lineHeight
    }

    Component.onCompleted: settings.refresh()
    Component.onDestruction: settings.dataStore.refresh()

    /// Whether nothing that was begun here would be lost.
    function mayContinue() { return !store.details || store.details.settle() }

    Column {
        SplitLine {
            label: Localizer.text("Opens", "S’ouvre")
            controlName: "onboarding.opens"
            choices: [{ rawValue: false, title: Localizer.text("on hover", "au survol") },
                      { rawValue: true, title: Localizer.text("on click", "au clic") }]
            value: page.settings.requiresClick
            onChosen: rawValue => page.settings.requiresClick = rawValue
        }
        SplitLine {
            visible: page.settings.barIsBusy
            label: Localizer.text("Hangs", "Accrochée")
            controlName: "onboarding.edge"
            choices: [{ rawValue: "belowBar", title: Localizer.text("below the bar", "sous la barre") },
                      { rawValue: "screen", title: Localizer.text("over it", "par-dessus") }]
            value: page.settings.panelEdge === "screen" ? "screen" : "belowBar"
            onChosen: rawValue => page.settings.panelEdge = rawValue
        }
        SplitLine {
            label: Localizer.text("Sounds", "Sons")
            last: !page.settings.canLaunchAtLogin
            controlName: "onboarding.sounds"
            choices: [{ rawValue: 0, title: Localizer.text("Off", "Aucun") },
                      { rawValue: 2, title: Localizer.text("Soft", "Doux") },
                      { rawValue: 1, title: Localizer.text("Full", "Complet") }]
            value: page.settings.sounds
            onChosen: rawValue => page.settings.sounds = rawValue
        }
        SwitchedLine {
            visible: page.settings.canLaunchAtLogin
            label: Localizer.text("Start at login", "Lancer à l’ouverture de session")
            last: true
            controlName: "onboarding.launchAtLogin"
            checked: page.settings.launchesAtLogin
            onToggled: checked => page.settings.launchesAtLogin = checked
        }
        PlainText {
            visible: text !== ""
            width: 308
            text: page.settings.launchAtLoginProblem
            wrapMode: Text.Wrap
            color: Theme.overdue
            font.pixelSize: 12
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
    }
    RadioList {
        id: store
        objectName: "onboarding.store"
        visible: page.settings.dataStore.isOffered
        x: page.width - 308
        // Its title stands beside the first line; what is wrong with a folder takes the room above it.
        y: Math.min(11, parent.height - height - 6)
        width: 308
        title: Localizer.text("Reminders and events are kept", "Rappels et événements sont conservés")
        choices: page.settings.dataStore.kinds
        value: page.settings.dataStore.kind
        onChosen: rawValue => page.settings.dataStore.kind = rawValue
        // Only the folder has something to add.
        detailsOf: "folder"
        detailsComponent: DataStoreFields {
            store: page.settings.dataStore
            compact: true
        }
    }
}
