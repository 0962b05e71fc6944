import QtQuick
import Kestrant

// The panel at the top edge of the drawn desktop, to look at and, while it is live, to use.
Item {
    id: scene

    required property OnboardingViewModel onboarding
    required property OnboardingTrial trial
    required property SettingsViewModel settings
    /// The parent of popovers.
    required property Item popoverFrame
    property bool live: false
    /// At rest it is drawn larger than life.
    property bool magnified: false
    Binding { target: scene.trial; property: "showsSigns"; value: scene.magnified }
    /// A sign below shows where it is.
    property bool pointedOut: false
    /// Words below it; they make way for its own messages.
    property string hint

    readonly property bool open: trial.panel.isExpanded
    readonly property bool inside: live && (trial.overlays.topmost !== "" || (pointer.hovered && isOver(pointer.point.position)))
    // Later, since what it brings about may change where the panel is.
    onInsideChanged: Qt.callLater(() => onboarding.pointAtNotch(inside))

    function isOver(place) {
        const at = panel.mapFromItem(scene, place)
        const toast = trial.overlays.toast
        return (at.y <= trial.panel.shapeHeight && Math.abs(at.x - panel.width / 2) <= trial.panel.shapeWidth / 2)
            || (toast.width > 0 && at.y <= toast.y + toast.height && at.x >= toast.x && at.x <= toast.x + toast.width)
    }

    HoverHandler { id: pointer }
    WheelHandler {
        enabled: scene.inside
        onWheel: event => event.accepted = scene.onboarding.scrollNotch(event.angleDelta.y)
    }
    SilentPicture {
        anchors.fill: parent
        clip: true
        description: scene.open ? Localizer.text("The open panel", "Le panneau ouvert") : Localizer.text("The notch at rest", "L’encoche au repos")
        Accessible.role: Accessible.Graphic
        Panel {
            id: panel
            anchors.horizontalCenter: parent.horizontalCenter
            width: scene.trial.panel.expandedWidth
            height: scene.trial.panel.expandedHeight
            transformOrigin: Item.Top
            scale: scene.open || !scene.magnified ? 0.64 : 1.6
            // Too little to be seen: the software renderer draws what is turned from whole pictures and paths, smoothly, and
            // what is only scaled piece by piece, with gaps.
            rotation: 0.0005
            Behavior on scale { enabled: !Theme.still; NumberAnimation { duration: Theme.panelDuration; easing.type: Easing.OutCubic } }
            enabled: scene.live
            takesKeyboard: false
            loadInBackground: false
            popoverFrame: scene.popoverFrame
            panel: scene.trial.panel
            reminders: scene.trial.reminders
            calendar: scene.trial.calendar
            quickAdd: scene.trial.quickAdd
            settings: scene.settings
            newEvent: scene.trial.newEvent
            calendarEdit: scene.trial.calendarEdit
            eventDetails: scene.trial.eventDetails
            reminderEdit: scene.trial.reminderEdit
            history: scene.trial.history
            recap: scene.trial.recap
            celebration: scene.trial.celebration
            announcement: scene.trial.announcement
            yearReveal: scene.trial.yearReveal
            overlays: scene.trial.overlays
        }
    }
    // A picture does not react to the pointer.
    Item {
        anchors.fill: parent
        visible: !scene.live
        HoverHandler { blocking: true }
    }
    Item {
        id: resting
        anchors.horizontalCenter: parent.horizontalCenter
        width: scene.trial.panel.shapeWidth * panel.scale
        height: scene.trial.panel.shapeHeight * panel.scale
        visible: scene.live && !scene.open
        TapHandler { onTapped: scene.onboarding.clickNotch() }
    }
    Icon {
        id: arrow
        readonly property real restY: resting.height + 8
        visible: scene.pointedOut && !scene.open
        anchors.horizontalCenter: parent.horizontalCenter
        y: restY
        width: 26
        height: 26
        rotation: 180
        strokeWidth: 2.5
        name: "chevronDown"
        color: Theme.white(0.9)
        SequentialAnimation on y {
            running: arrow.visible && !Theme.still
            loops: 8
            NumberAnimation { to: arrow.restY + 8; duration: 700; easing.type: Easing.InOutSine }
            NumberAnimation { to: arrow.restY; duration: 700; easing.type: Easing.InOutSine }
        }
    }
    Rectangle {
        visible: scene.hint !== "" && scene.trial.overlays.toast.width === 0
        anchors.horizontalCenter: parent.horizontalCenter
        y: scene.open ? 197 : resting.height + 50
        width: Math.ceil(hintText.implicitWidth) + 32
        height: 32
        radius: 16
        color: Qt.rgba(0.06, 0.06, 0.08, 0.94)
        PlainText {
            id: hintText
            anchors.centerIn: parent
            text: scene.hint
            color: Theme.text
            font.pixelSize: 13
            font.weight: Font.DemiBold
        }
    }
    FocusScope {
        id: keys
        anchors.horizontalCenter: parent.horizontalCenter
        width: resting.width
        height: resting.height
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
            radius: scene.trial.panel.bottomRadius * panel.scale - 3
        }
    }
}
