import QtQuick
import QtQuick.Window
import Kestrant

// The window that introduces the program: a drawn desktop with a notch at its top edge, a page of words and choices
// below it, and the way from page to page.
FocusScope {
    id: root

    required property OnboardingViewModel onboarding
    required property SettingsViewModel settings

    readonly property int page: onboarding.page
    readonly property bool isLast: page === OnboardingViewModel.Page.ready
    readonly property var pages: [welcome, tutorial, panelChoices, habits, ready]
    readonly property string title: loader.item ? loader.item.title : ""

    // Grows with the texts on it, as far as the screen has room.
    readonly property real zoom: Math.max(1, Math.min(Appearance.textScale, Screen.desktopAvailableHeight / 600))

    width: 720 * zoom
    height: 560 * zoom
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
            height: 248
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
            live: root.page === OnboardingViewModel.Page.tutorial || root.page === OnboardingViewModel.Page.habits
            pointedOut: root.isLast || (root.page === OnboardingViewModel.Page.tutorial && !root.onboarding.hovered)
            forcedOpen: root.page === OnboardingViewModel.Page.welcome || root.page === OnboardingViewModel.Page.panel
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
            height: 32

            PushButton {
                objectName: "onboarding.back"
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
                        color: isCurrent ? Theme.accent : Theme.white(Theme.contrast ? 0.5 : 0.2)
                        Behavior on width { enabled: !Theme.still; NumberAnimation { duration: Theme.leaveDuration; easing.type: Easing.OutCubic } }
                    }
                }
            }
            PushButton {
                id: forward
                objectName: "onboarding.forward"
                anchors.right: parent.right
                height: parent.height
                primary: true
                text: !root.isLast ? Localizer.text("Continue", "Continuer")
                    : root.onboarding.isRepeated ? Localizer.text("Done", "Terminé")
                                                 : Localizer.text("Start", "Commencer")
                onClicked: root.isLast ? root.onboarding.finish() : root.onboarding.next()
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
    }

    component Tried: Shortcut {
        required property int shortcut
        enabled: root.page === OnboardingViewModel.Page.tutorial
        onActivated: root.onboarding.press(shortcut)
    }
    Tried { sequence: "Ctrl+N"; shortcut: OnboardingViewModel.Gesture.newReminder }
    Tried { sequence: "Ctrl+F"; shortcut: OnboardingViewModel.Gesture.find }
    Tried { sequence: "Ctrl+Z"; shortcut: OnboardingViewModel.Gesture.undo }
}
