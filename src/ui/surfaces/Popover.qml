import QtQuick
import Kestrant

// The surface that popovers and menus are made of. Its shadow lies around it.
FocusScope {
    id: popover

    required property OverlayHost overlays
    required property string overlayId
    property real contentWidth: 320
    property real contentHeight: 100
    property int padding: 16
    property string spokenName
    /// Stands in the place of the surface that it opens from, which is there again when it closes.
    property bool isPage: false
    default property alias content: body.data

    /// Popovers grow with the texts on them.
    readonly property real zoom: Appearance.textScale
    readonly property real cornerRadius: Theme.popoverRadius * zoom

    implicitWidth: (contentWidth + 2 * padding) * zoom
    implicitHeight: (contentHeight + 2 * padding) * zoom

    Accessible.role: Accessible.Dialog
    Accessible.name: spokenName

    function close() {
        overlays.dismiss(overlayId)
    }

    /// One step back; what has more than one replaces it.
    function leave() {
        close()
    }
    Keys.onEscapePressed: leave()

    property real shown: Theme.still || isPage ? 1 : 0
    opacity: Theme.opacity(shown)
    transform: Translate { id: rise }
    ParallelAnimation {
        running: !Theme.still && !popover.isPage
        NumberAnimation { target: popover; property: "shown"; to: 1; duration: Theme.popoverDuration; easing.type: Easing.OutCubic }
        NumberAnimation {
            target: rise; property: "y"; from: 4; to: 0
            duration: Theme.popoverDuration; easing.type: Easing.OutCubic
        }
    }

    Item {
        width: parent.width / popover.zoom
        height: parent.height / popover.zoom
        scale: popover.zoom
        transformOrigin: Item.TopLeft

        DropShadow {
            visible: Appearance.compositing
            anchors.fill: parent
            radius: Theme.popoverRadius
        }
        Rectangle {
            anchors.fill: parent
            radius: Theme.popoverRadius
            color: Theme.popover
            // Opaque, since there is nothing of the surface below it.
            border.color: Qt.tint(Theme.popover, Theme.border)
            border.width: 1
        }
        Item {
            id: body
            x: popover.padding
            y: popover.padding
            width: popover.contentWidth
            height: popover.contentHeight
            NumberAnimation on opacity {
                running: !Theme.still && popover.isPage
                from: 0
                to: 1
                duration: 120
            }
        }
    }
}
