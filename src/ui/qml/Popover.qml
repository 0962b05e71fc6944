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
    readonly property real marginX: translucent ? 44 : 0
    readonly property real marginTop: translucent ? 28 : 0
    readonly property real marginBottom: translucent ? 60 : 0

    implicitWidth: contentWidth + 2 * padding + 2 * marginX
    implicitHeight: contentHeight + 2 * padding + marginTop + marginBottom

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
        width: parent.width
        height: parent.height

        DropShadow {
            visible: popover.translucent
            anchors.fill: parent
            radius: Theme.popoverRadius
            marginLeft: popover.marginX
            marginTop: popover.marginTop
            marginBottom: popover.marginBottom
        }
        Rectangle {
            x: popover.marginX
            y: popover.marginTop
            width: parent.width - 2 * x
            height: parent.height - y - popover.marginBottom
            radius: Theme.popoverRadius
            color: Theme.popover
            // Opaque, since there is nothing of the surface below it.
            border.color: Qt.tint(Theme.popover, Theme.border)
            border.width: 1
        }
        Item {
            id: body
            x: popover.marginX + popover.padding
            y: popover.marginTop + popover.padding
            width: popover.contentWidth
            height: popover.contentHeight
        }
    }
}
