import QtQuick
import Kestrant

// The drawn notch at the top edge of the drawn desktop. While it is live it does what the panel would.
Item {
    id: scene

    required property OnboardingViewModel onboarding
    required property SettingsViewModel settings
    property bool live: false
    property bool forcedOpen: false
    /// A sign below shows where it is.
    property bool pointedOut: false

    readonly property int phase: forcedOpen ? 2 : live ? onboarding.notch.phase : 0
    readonly property bool open: phase === 2

    /// What the last shortcut brought up on the open notch.
    property string shownIcon
    property string shownText
    onOpenChanged: if (!open) shownText = ""
    onLiveChanged: shownText = ""

    NotchOutline {
        id: outline
        width: parent.width
        height: Math.ceil(shapeHeight)
        shapeWidth: [132, 168, 500][scene.phase]
        shapeHeight: scene.open ? 176 : 22
        earRadius: [4, 6, 7][scene.phase]
        bottomRadius: [8, 10, 18][scene.phase]
        shadeHeight: scene.settings.material !== "black" ? scene.height : 0
        borderColor: Theme.outline
        Behavior on shapeWidth { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
        Behavior on shapeHeight { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
        Behavior on earRadius { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
        Behavior on bottomRadius { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
    }
    Item {
        id: area
        anchors.horizontalCenter: parent.horizontalCenter
        width: outline.shapeWidth
        height: outline.shapeHeight
        clip: true
        enabled: scene.live

        Row {
            readonly property real sideWidth: (area.width - 120) / 2
            visible: scene.phase === 1 && area.height < 30
            width: parent.width
            height: 22
            PlainText {
                width: 26
                height: parent.height
                horizontalAlignment: Text.AlignRight
                verticalAlignment: Text.AlignVCenter
                text: "3"
                color: Theme.text
                font.pixelSize: 10
                font.weight: Font.DemiBold
                Accessible.ignored: true
            }
            PlainText {
                width: area.width - 44
                height: parent.height
                horizontalAlignment: Text.AlignRight
                verticalAlignment: Text.AlignVCenter
                text: "14:00"
                color: Theme.accentText
                font.pixelSize: 10
                font.weight: Font.DemiBold
                Accessible.ignored: true
            }
        }
        OnboardingPreview {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 500
            height: 176
            opacity: scene.open ? 1 : 0
            visible: opacity > 0
            settings: scene.settings
            Behavior on opacity { enabled: !Theme.still; NumberAnimation { duration: Theme.leaveDuration } }
        }
        Rectangle {
            visible: scene.open && scene.shownText !== ""
            anchors.horizontalCenter: parent.horizontalCenter
            y: 70
            width: shown.implicitWidth + 32
            height: 36
            radius: 12
            color: "#2a2b31"
            border.color: Theme.accent
            border.width: 1.5
            Row {
                id: shown
                anchors.centerIn: parent
                spacing: 8
                Icon {
                    anchors.verticalCenter: parent.verticalCenter
                    name: scene.shownIcon
                    color: Theme.accentText
                }
                PlainText {
                    anchors.verticalCenter: parent.verticalCenter
                    text: scene.shownText
                    color: Theme.text
                    font.pixelSize: 13
                    font.weight: Font.Medium
                }
            }
        }
        HoverHandler {
            onHoveredChanged: scene.onboarding.pointAtNotch(hovered)
        }
        MouseArea {
            anchors.fill: parent
            onClicked: scene.onboarding.clickNotch()
            onWheel: wheel => scene.onboarding.scrollNotch(wheel.angleDelta.y)
        }
    }
    Icon {
        id: pointer
        visible: scene.pointedOut && !scene.open
        anchors.horizontalCenter: parent.horizontalCenter
        y: 34
        width: 28
        height: 28
        rotation: 180
        strokeWidth: 2.5
        name: "chevronDown"
        color: Theme.white(0.85)
        SequentialAnimation on y {
            running: pointer.visible && !Theme.still
            loops: 8
            NumberAnimation { to: 42; duration: 700; easing.type: Easing.InOutSine }
            NumberAnimation { to: 34; duration: 700; easing.type: Easing.InOutSine }
        }
    }
    FocusScope {
        id: keys
        anchors.horizontalCenter: parent.horizontalCenter
        width: outline.shapeWidth - 2 * outline.earRadius
        height: outline.shapeHeight
        enabled: scene.live
        activeFocusOnTab: scene.live
        Accessible.role: Accessible.Button
        Accessible.name: Localizer.text("Notch to try out", "Encoche d’essai")
        Accessible.description: scene.open ? Localizer.text("open", "ouverte") : Localizer.text("closed", "fermée")
        Accessible.focusable: scene.live
        Accessible.ignored: !scene.live
        Accessible.onPressAction: scene.onboarding.clickNotch()
        Keys.onPressed: event => {
            event.accepted = [Qt.Key_Space, Qt.Key_Return, Qt.Key_Enter].includes(event.key)
            if (event.accepted)
                scene.onboarding.clickNotch()
        }
        FocusRing {
            target: keys
            distance: -3
            radius: outline.bottomRadius - 3
        }
    }
    Connections {
        target: scene.onboarding
        function onPressed(shortcut) {
            scene.shownIcon = ["plus", "search", "check"][shortcut - OnboardingViewModel.Gesture.newReminder]
            scene.shownText = [Localizer.text("New reminder", "Nouveau rappel"),
                               Localizer.text("Search", "Rechercher"),
                               Localizer.text("Taken back", "Annulé")][shortcut - OnboardingViewModel.Gesture.newReminder]
        }
    }
}
