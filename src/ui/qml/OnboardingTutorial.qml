import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property OnboardingViewModel onboarding
    required property SettingsViewModel settings

    title: onboarding.triedAll ? Localizer.text("That is all there is to it", "Vous savez tout")
                               : Localizer.text("Try it out on the notch above", "Essayez sur l’encoche ci-dessus")

    component Gesture: Item {
        id: gesture

        required property string words
        required property bool done
        property string keys

        width: (page.width - 40) / 2
        height: 32

        Accessible.role: Accessible.StaticText
        Accessible.name: (keys !== "" ? keys + ": " : "") + words + ", "
                         + (done ? Localizer.text("tried", "essayé") : Localizer.text("not tried yet", "pas encore essayé"))

        Rectangle {
            y: 6
            width: 20
            height: 20
            radius: 10
            color: gesture.done ? Theme.done : "transparent"
            border.color: gesture.done ? Theme.done : Theme.white(Theme.contrast ? 0.6 : 0.28)
            border.width: 1.5
            Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.leaveDuration } }
            Icon {
                anchors.centerIn: parent
                visible: gesture.done
                width: 14
                height: 14
                strokeWidth: 2
                name: "check"
                color: Theme.popover
            }
        }
        Rectangle {
            id: cap
            visible: gesture.keys !== ""
            x: 32
            y: 4
            width: 60
            height: 24
            radius: 6
            color: Theme.control
            border.color: Theme.border
            PlainText {
                anchors.centerIn: parent
                text: gesture.keys
                color: Theme.text
                font.pixelSize: 12
                font.weight: Font.Medium
            }
        }
        PlainText {
            x: cap.visible ? 104 : 32
            width: parent.width - x
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            text: gesture.words
            color: Theme.chipText
            font.pixelSize: 13
        }
    }

    Column {
        Gesture {
            words: page.settings.requiresClick
                   ? Localizer.text("Point at it: it grows a little", "Pointez-la : elle grandit un peu")
                   : Localizer.text("Point at it: it opens", "Pointez-la : elle s’ouvre")
            done: page.onboarding.hovered
        }
        Gesture {
            words: Localizer.text("Click it: it opens or closes", "Cliquez : elle s’ouvre ou se ferme")
            done: page.onboarding.clicked
        }
        Gesture {
            words: Localizer.text("Two fingers down: it opens", "Deux doigts vers le bas : elle s’ouvre")
            done: page.onboarding.swipedDown
        }
        Gesture {
            words: Localizer.text("Two fingers up: it closes", "Deux doigts vers le haut : elle se ferme")
            done: page.onboarding.swipedUp
        }
    }
    Column {
        x: (page.width + 40) / 2
        Gesture {
            keys: "Ctrl N"
            words: Localizer.text("New reminder", "Nouveau rappel")
            done: page.onboarding.addedReminder
        }
        Gesture {
            keys: "Ctrl F"
            words: Localizer.text("Search", "Rechercher")
            done: page.onboarding.searched
        }
        Gesture {
            keys: "Ctrl Z"
            words: Localizer.text("Take the last change back", "Annuler le dernier changement")
            done: page.onboarding.undone
        }
        PlainText {
            x: 32
            width: (page.width - 40) / 2 - x
            height: 32
            verticalAlignment: Text.AlignVCenter
            text: Localizer.text("Shortcuts work while it is open.", "Les raccourcis agissent quand elle est ouverte.")
            color: Theme.secondaryText
            font.pixelSize: 12
        }
    }
}
