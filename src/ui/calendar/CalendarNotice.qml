import QtQuick
import Kestrant

// The calendar module's state while it has no rows.
Item {
    id: view

    required property CalendarViewModel calendar
    readonly property string kind: calendar.content
    readonly property bool waits: kind === "loading" || kind === "requesting"

    readonly property string heading: {
        switch (kind) {
        case "requesting": return Localizer.connectingToCalendar
        case "loading": return ""
        case "empty": return Localizer.text("No upcoming events", "Aucun événement à venir")
        case "denied": return Localizer.text("Calendar access is disabled", "L’accès au calendrier est désactivé")
        case "restricted": return Localizer.text("Calendar access is disabled", "L’accès au calendrier est désactivé")
        case "failed": return Localizer.text("The calendar could not be opened", "Impossible d’ouvrir le calendrier")
        default: return ""
        }
    }
    readonly property string explanation: {
        switch (kind) {
        case "empty": return calendar.showsAllEvents
            ? Localizer.text("There is nothing in the days that are loaded.", "Rien dans les jours chargés.")
            : Localizer.text("Next 7 days are clear", "Rien de prévu pour les 7 prochains jours")
        case "denied": return Localizer.text("Authorize Kestrant to show your calendar",
                                             "Autorisez Kestrant à afficher vos événements")
        case "restricted": return Localizer.text("The rules of this computer do not let Kestrant read your calendar.",
                                                 "Les règles de cet ordinateur interdisent à Kestrant de lire votre calendrier.")
        case "failed": return calendar.failureText
        default: return ""
        }
    }
    readonly property string action: {
        switch (kind) {
        case "empty": return calendar.showsAllEvents
            ? Localizer.text("Return to the current week", "Revenir à la semaine actuelle")
            : Localizer.text("Show your full calendar", "Afficher tout le calendrier")
        case "denied": return Localizer.openSystemSettings || Localizer.text("Try again", "Réessayer")
        case "failed": return Localizer.text("Try again", "Réessayer")
        default: return ""
        }
    }

    function act() {
        switch (kind) {
        case "empty": calendar.showsAllEvents = !calendar.showsAllEvents; break
        case "denied": Localizer.openSystemSettings ? calendar.openPrivacyPage() : calendar.retry(); break
        case "failed": calendar.retry(); break
        }
    }

    Column {
        id: skeleton
        visible: view.waits
        width: parent.width
        y: 12
        opacity: 0.9
        Repeater {
            model: [[0.34, 0], [0.62, 46], [0.48, 46], [0.3, 0], [0.55, 46], [0.7, 46]]
            Item {
                required property var modelData
                readonly property bool isHeading: modelData[1] === 0
                width: skeleton.width
                height: isHeading ? 26 : 31
                Rectangle { visible: !parent.isHeading; x: 7; y: 6; width: 3; height: 18; radius: 1.5; color: Theme.white(0.12) }
                Rectangle {
                    x: parent.isHeading ? 1 : 18
                    y: parent.isHeading ? 6 : 11
                    width: (Math.min(parent.width, 420) - 80) * parent.modelData[0]
                    height: 8
                    radius: 4
                    color: Theme.white(parent.isHeading ? 0.06 : 0.09)
                }
                Rectangle { visible: !parent.isHeading; x: parent.width - width - 8; y: 12; width: 34; height: 7; radius: 3.5; color: Theme.white(0.06) }
            }
        }
        SequentialAnimation {
            running: skeleton.visible && !Theme.still && view.visible
            loops: Animation.Infinite
            NumberAnimation { target: skeleton; property: "opacity"; to: 0.5; duration: 700; easing.type: Easing.InOutSine }
            NumberAnimation { target: skeleton; property: "opacity"; to: 1; duration: 700; easing.type: Easing.InOutSine }
        }
    }

    Notice {
        width: parent.width
        height: implicitHeight
        y: view.waits ? parent.height - height - 18 : Math.round((parent.height - height) / 2) - 2
        subject: "calendar"
        picture: view.waits ? "" : view.kind === "restricted" ? "denied" : view.kind
        heading: view.heading
        explanation: view.explanation
        action: view.action
        onActed: view.act()
    }
}
