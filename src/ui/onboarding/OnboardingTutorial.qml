import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property OnboardingViewModel onboarding
    required property SettingsViewModel settings

    title: onboarding.current === exercises.length
           ? Localizer.text("That is all there is to it", "Vous savez tout")
           : Localizer.text("Try it on the notch above", "Essayez sur l’encoche ci\u2011dessus")

    /// In the order of OnboardingViewModel.Exercise.
    readonly property var exercises: [
        { title: settings.requiresClick ? Localizer.text("Click the notch", "Cliquez l’encoche")
                                        : Localizer.text("Point at the notch", "Pointez l’encoche"),
          words: Localizer.text("it opens", "elle s’ouvre") },
        { title: Localizer.text("Click a circle", "Cliquez un rond"),
          words: Localizer.text("the reminder is done", "le rappel est terminé") },
        { title: Localizer.text("Drag a card", "Glissez une carte"), words: Localizer.text("onto a day", "sur un jour") },
        { title: Localizer.text("Right-click a card", "Clic droit sur une carte"),
          words: Localizer.text("everything it can do", "tout ce qu’elle sait faire") },
        { keys: ["Ctrl", "N"], words: Localizer.text("a new reminder", "un nouveau rappel") },
        { keys: ["Ctrl", "Z"], words: Localizer.text("takes it back", "annule") }]

    Grid {
        columns: 3
        spacing: 8
        Repeater {
            model: page.exercises
            Rectangle {
                id: tile
                required property var modelData
                required property int index
                readonly property bool done: page.onboarding.tried >> index & 1
                readonly property bool isCurrent: index === page.onboarding.current
                width: 208
                height: 52
                radius: 12
                color: isCurrent ? Qt.rgba(0.04, 0.52, 1, Theme.contrast ? 0.34 : 0.2) : Theme.group
                border.color: isCurrent ? Theme.accent : Theme.contrast ? Theme.border : "transparent"
                border.width: isCurrent ? 1.5 : 1
                Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.leaveDuration } }

                Accessible.role: Accessible.StaticText
                Accessible.name: (modelData.keys ? modelData.keys.join(" ") : modelData.title) + ": " + modelData.words + ", "
                                 + (done ? Localizer.text("tried", "essayé") : Localizer.text("not tried yet", "pas encore essayé"))

                Rectangle {
                    x: 12
                    anchors.verticalCenter: parent.verticalCenter
                    width: 20
                    height: 20
                    radius: 10
                    color: tile.done ? Theme.done : "transparent"
                    border.color: tile.done ? Theme.done : Theme.white(Theme.contrast ? 0.6 : 0.4)
                    border.width: 1.5
                    Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.leaveDuration } }
                    Icon {
                        anchors.centerIn: parent
                        visible: tile.done
                        width: 14
                        height: 14
                        strokeWidth: 2
                        name: "check"
                        color: Theme.popover
                    }
                }
                PlainText {
                    visible: !tile.modelData.keys
                    x: 42
                    y: 8
                    width: parent.width - x - 8
                    elide: Text.ElideRight
                    text: tile.modelData.title ?? ""
                    color: Theme.text
                    font.pixelSize: 13
                    font.weight: Font.Medium
                    Accessible.ignored: true
                }
                KeyCaps {
                    visible: !!tile.modelData.keys
                    x: 42
                    y: 6
                    capHeight: 20
                    keys: tile.modelData.keys ?? []
                }
                PlainText {
                    x: 42
                    y: 27
                    width: parent.width - x - 8
                    elide: Text.ElideRight
                    text: tile.modelData.words
                    color: tile.isCurrent ? Theme.secondaryTextActive : Theme.secondaryText
                    font.pixelSize: 12
                    Accessible.ignored: true
                }
            }
        }
    }
}
