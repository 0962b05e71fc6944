import QtQuick
import Kestrant

// The module's state in place of cards: a picture, a sentence, and an action where there is one.
Item {
    id: view

    required property RemindersViewModel reminders
    required property OverlayHost overlays
    property bool modulesOff: false
    readonly property string kind: modulesOff ? "off" : reminders.content
    signal addWanted

    readonly property string heading: {
        switch (kind) {
        case "loading": return Localizer.text("Loading reminders…", "Chargement des rappels…")
        case "empty": return reminders.hasCompleted ? Localizer.text("All done", "Tout est fait")
                                                    : Localizer.text("No reminders yet", "Pas encore de rappel")
        case "allDone": return Localizer.text("Nothing here", "Rien ici")
        case "nothingFound": return Localizer.text("Nothing found", "Aucun résultat")
        case "denied": return Localizer.text("No access to reminders", "Pas d’accès aux rappels")
        case "restricted": return Localizer.text("Access is restricted", "L’accès est restreint")
        case "failed": return Localizer.text("Reminders could not be opened", "Impossible d’ouvrir les rappels")
        case "off": return Localizer.text("Nothing to show", "Rien à afficher")
        default: return ""
        }
    }
    readonly property string explanation: {
        switch (kind) {
        case "empty": return Localizer.text("Write down what comes to mind. Ctrl\u00a0N opens a new reminder from here.",
                                            "Notez ce qui vous vient à l’esprit. Ctrl\u00a0N ouvre un nouveau rappel.")
        case "allDone": return Localizer.text("No open reminder passes these filters.",
                                              "Aucun rappel ne correspond à ces filtres.")
        case "nothingFound": return Localizer.text("No open reminder contains “%1”.",
                                                   "Aucun rappel ne contient « %1 ».").arg(reminders.searchQuery.trim())
        case "denied": return Localizer.text("Allow Kestrant to read and change your reminders, then come back.",
                                             "Autorisez Kestrant à lire et modifier vos rappels, puis revenez.")
        case "restricted": return Localizer.text("The rules of this computer do not let Kestrant read reminders.",
                                                 "Les règles de cet ordinateur interdisent à Kestrant de lire les rappels.")
        case "failed": return reminders.failureText
        case "off": return Localizer.text("Switch a module on in the settings to see it here.",
                                          "Activez un module dans les réglages pour le voir ici.")
        default: return ""
        }
    }
    readonly property string action: {
        switch (kind) {
        case "empty": return Localizer.text("New reminder", "Nouveau rappel")
        case "allDone": return Localizer.text("Show all", "Tout afficher")
        case "nothingFound": return Localizer.text("Clear the search", "Effacer la recherche")
        case "denied": return Localizer.openSystemSettings || Localizer.text("Try again", "Réessayer")
        case "failed": return Localizer.text("Try again", "Réessayer")
        default: return ""
        }
    }

    function act() {
        switch (kind) {
        case "empty": addWanted(); break
        case "allDone":
            reminders.showsTodayOnly = false
            reminders.showsOverdueOnly = false
            reminders.showsFlaggedOnly = false
            break
        case "nothingFound": reminders.searchQuery = ""; break
        case "denied": Localizer.openSystemSettings ? reminders.openPrivacyPage() : reminders.retry(); break
        case "failed": reminders.retry(); break
        }
    }

    Row {
        id: skeleton
        readonly property int columns: Math.max(1, Math.floor((view.width + Theme.gap) / 204))
        visible: view.kind === "loading"
        y: 11
        spacing: Theme.gap
        Repeater {
            model: skeleton.columns
            Rectangle {
                required property int index
                width: Math.floor((view.width + Theme.gap) / skeleton.columns) - Theme.gap
                height: Theme.cardHeight
                radius: Theme.cardRadius
                color: Theme.white(0.045)
                Rectangle {
                    x: 11; y: 10; width: 18; height: 18; radius: 9
                    color: "transparent"
                    border.color: Theme.white(0.12)
                    border.width: 2
                }
                Rectangle { x: 38; y: 14; width: (parent.width - 52) * [0.9, 0.7, 0.8, 0.6][parent.index % 4]; height: 8; radius: 4; color: Theme.white(0.09) }
                Rectangle { x: 38; y: 53; width: 58; height: 7; radius: 3.5; color: Theme.white(0.06) }
            }
        }
        SequentialAnimation on opacity {
            running: skeleton.visible && !Theme.still && view.visible
            loops: Animation.Infinite
            NumberAnimation { to: 0.5; duration: 700; easing.type: Easing.InOutSine }
            NumberAnimation { to: 1; duration: 700; easing.type: Easing.InOutSine }
        }
    }

    Notice {
        width: parent.width
        y: view.kind === "loading" ? 112 : Math.round((parent.height - height) / 2) - 2
        height: implicitHeight
        picture: view.kind === "loading" ? "" : view.kind === "restricted" ? "denied"
               : view.kind === "empty" && !view.reminders.hasCompleted ? "new" : view.kind
        heading: view.heading
        explanation: view.explanation
        action: view.action
        onActed: view.act()
    }
}
