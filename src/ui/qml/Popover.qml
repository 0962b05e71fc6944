import QtQuick
import Kestrant

// The surface that popovers and menus are made of: fills a window of its own, with room for its shadow.
FocusScope {
    id: popover

    required property OverlayHost overlays
    required property string overlayId
    property real contentWidth: 320
    property real contentHeight: 100
    property int padding: 14
    property string spokenName
    default property alias content: body.data

    readonly property bool translucent: Appearance.compositing
    /// Popovers grow with the texts on them.
    readonly property real zoom: Appearance.textScale
    readonly property real shadowX: translucent ? 44 : 0
    readonly property real shadowTop: translucent ? 28 : 0
    readonly property real shadowBottom: translucent ? 60 : 0
    // As much of the window as is only shadow.
    readonly property real marginX: shadowX * zoom
    readonly property real marginTop: shadowTop * zoom
    readonly property real marginBottom: shadowBottom * zoom

    implicitWidth: (contentWidth + 2 * padding + 2 * shadowX) * zoom
    implicitHeight: (contentHeight + 2 * padding + shadowTop + shadowBottom) * zoom

    Accessible.role: Accessible.Dialog
    Accessible.name: spokenName

    function close() {
        overlays.dismiss(overlayId)
    }

    Keys.onEscapePressed: close()

    opacity: 0
    Component.onCompleted: {
        if (Theme.still)
            opacity = 1
        else
            appear.start()
    }
    ParallelAnimation {
        id: appear
        NumberAnimation { target: popover; property: "opacity"; to: 1; duration: Theme.popoverDuration }
        NumberAnimation {
            target: rise; property: "y"; from: 4; to: 0
            duration: Theme.popoverDuration; easing.type: Easing.OutCubic
        }
    }

    Item {
        id: rise
        width: parent.width / popover.zoom
        height: parent.height / popover.zoom
        scale: popover.zoom
        transformOrigin: Item.TopLeft

        DropShadow {
            visible: popover.translucent
            anchors.fill: parent
            radius: Theme.popoverRadius
            marginLeft: popover.shadowX
            marginTop: popover.shadowTop
            marginBottom: popover.shadowBottom
        }
        Rectangle {
            x: popover.shadowX
            y: popover.shadowTop
            width: parent.width - 2 * x
            height: parent.height - y - popover.shadowBottom
            radius: Theme.popoverRadius
            color: Theme.popover
            // Opaque, since there is nothing of the surface below it.
            border.color: Qt.tint(Theme.popover, Theme.border)
            border.width: 1
        }
        Item {
            id: body
            x: popover.shadowX + popover.padding
            y: popover.shadowTop + popover.padding
            width: popover.contentWidth
            height: popover.contentHeight
        }
    }
}
