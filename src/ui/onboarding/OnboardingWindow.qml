import QtQuick
import QtQuick.Window
import Kestrant

// The window that introduces the program: a drawn desktop with a notch at its top edge, a page of words and choices
// below it, and the way from page to page.
FocusScope {
    id: root

    required property OnboardingViewModel onboarding
    required property OnboardingTrial trial
    required property SettingsViewModel settings

    readonly property int page: onboarding.page
    readonly property bool isLast: page === OnboardingViewModel.Page.ready
    readonly property var pages: [welcome, tutorial, panelChoices, habits, ready]
    readonly property string title: loader.item ? loader.item.title : ""

    // Grows with the texts on it, as far as the screen has room.
    readonly property real zoom: Math.max(1, Math.min(Appearance.textScale, Screen.desktopAvailableHeight / 576))

    width: 720 * zoom
    height: 536 * zoom
    focus: true

    Accessible.role: Accessible.Dialog
    Accessible.name: title

    Keys.onEscapePressed: event => {
        // The first time there is nothing behind the introduction to escape to.
        event.accepted = onboarding.isRepeated
        if (onboarding.isRepeated)
            Window.window.close()
    }

    Component { id: welcome; OnboardingWelcome { settings: root.settings } }
    Component { id: tutorial; OnboardingTutorial { onboarding: root.onboarding; settings: root.settings } }
    Component { id: panelChoices; OnboardingPanelChoices { settings: root.settings } }
    Component { id: habits; OnboardingHabits { settings: root.settings } }
    Component { id: ready; OnboardingReady {} }

    Item {
        width: parent.width / root.zoom
        height: parent.height / root.zoom
        scale: root.zoom
        transformOrigin: Item.TopLeft

        Rectangle {
            anchors.fill: parent
            radius: Theme.popoverRadius
            color: Theme.popover
        }
        Wallpaper {
            id: wallpaper
            width: parent.width
            height: 240
            warm: !Localizer.isFrench
            radius: Theme.popoverRadius
        }
        DragHandler {
            target: null
            onActiveChanged: if (active) root.Window.window.startSystemMove()
        }
        OnboardingNotch {
            objectName: "onboarding.notch"
            width: parent.width
            height: wallpaper.height
            onboarding: root.onboarding
            settings: root.settings
            trial: root.trial
            popoverFrame: popovers
            live: root.page === OnboardingViewModel.Page.tutorial || root.page === OnboardingViewModel.Page.habits
            magnified: root.page === OnboardingViewModel.Page.habits || root.isLast
            pointedOut: root.isLast || (root.page === OnboardingViewModel.Page.tutorial && root.onboarding.current === 0)
            hint: root.isLast ? Localizer.text("It rests here, above everything", "Elle se tient ici, au-dessus de tout")
                : root.trial.isCarrying ? Localizer.text("Let go on a day", "Lâchez sur un jour")
                : ""
        }
        Loader {
            id: loader
            x: 40
            y: wallpaper.height + 24
            width: parent.width - 2 * x
            height: footer.y - y
            sourceComponent: root.pages[root.page]
            onLoaded: {
                if (!Theme.still)
                    appear.restart()
                forward.forceActiveFocus(Qt.OtherFocusReason)
            }
            NumberAnimation { id: appear; target: loader; property: "opacity"; from: 0; to: 1; duration: 200 }
        }
        Item {
            id: footer
            x: 40
            y: parent.height - height - 24
            width: parent.width - 2 * x
            height: 36

            PushButton {
                objectName: "onboarding.back"
                width: Math.max(104, implicitWidth)
                visible: root.page > 0
                height: parent.height
                text: Localizer.text("Back", "Retour")
                onClicked: root.onboarding.back()
            }
            Row {
                anchors.centerIn: parent
                spacing: 8
                Accessible.role: Accessible.StaticText
                Accessible.name: Localizer.text("Page %1 of %2", "Page %1 sur %2").arg(root.page + 1)
                                                                                  .arg(root.onboarding.pageCount)
                Repeater {
                    model: root.onboarding.pageCount
                    Rectangle {
                        required property int index
                        readonly property bool isCurrent: index === root.page
                        width: isCurrent ? 20 : 6
                        height: 6
                        radius: 3
                        color: isCurrent ? Theme.accent : Theme.white(Theme.contrast ? 0.6 : index < root.page ? 0.5 : 0.2)
                        Behavior on width { enabled: !Theme.still; NumberAnimation { duration: Theme.leaveDuration; easing.type: Easing.OutCubic } }
                    }
                }
            }
            PushButton {
                id: forward
                objectName: "onboarding.forward"
                anchors.right: parent.right
                width: Math.max(104, implicitWidth)
                height: parent.height
                primary: true
                text: !root.isLast ? Localizer.text("Continue", "Continuer")
                    : root.onboarding.isRepeated ? Localizer.text("Done", "Terminé")
                                                 : Localizer.text("Start", "Commencer")
                onClicked: {
                    if (root.isLast)
                        root.onboarding.finish()
                    else if (root.page !== OnboardingViewModel.Page.habits || loader.item.mayContinue())
                        root.onboarding.next()
                }
            }
        }
        Rectangle {
            // Keeps the sign legible on any part of the picture.
            anchors.fill: closeButton
            radius: 7
            color: Qt.rgba(0, 0, 0, 0.3)
        }
        IconButton {
            id: closeButton
            objectName: "onboarding.close"
            x: parent.width - width - 12
            y: 12
            iconName: "close"
            spokenName: Localizer.text("Close", "Fermer")
            onClicked: root.Window.window.close()
        }
        Rectangle {
            anchors.fill: parent
            radius: Theme.popoverRadius
            color: "transparent"
            border.color: Theme.border
        }
        // Popovers are larger than the picture, so that they can be read, and reach over the page below it.
        Item {
            id: popovers
            width: parent.width / scale
            height: parent.height / scale
            scale: 0.86
            transformOrigin: Item.TopLeft
        }
    }

    Shortcut {
        enabled: root.page === OnboardingViewModel.Page.tutorial
        sequence: "Ctrl+N"
        onActivated: root.trial.addReminder()
    }
    Shortcut {
        enabled: root.page === OnboardingViewModel.Page.tutorial
        sequence: "Ctrl+Z"
        onActivated: root.trial.undo()
    }
}
