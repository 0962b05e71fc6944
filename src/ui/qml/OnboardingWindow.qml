import QtQuick
import Kestrant

// The window that introduces the program.
FocusScope {
    id: root

    required property OnboardingViewModel onboarding
    required property SettingsViewModel settings

    width: 720
    height: 520

    Rectangle {
        anchors.fill: parent
        radius: Theme.popoverRadius
        color: Theme.popover
    }
}
