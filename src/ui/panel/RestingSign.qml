import QtQuick
import Kestrant

// The one thing that the notch says at rest: what it is on the left, the time or the number on the right.
Item {
    id: sign

    required property PanelViewModel panel
    readonly property RestingViewModel resting: panel.resting
    readonly property string kind: resting.kind
    readonly property bool shown: panel.phase === 0 && kind !== "silent"
    readonly property bool rings: shown && kind === "ringing"
    /// Beside a camera there is room for a number on either side.
    readonly property bool isShort: panel.hasCamera
    readonly property string minutes: isShort ? resting.minutes + "′"
        : resting.minutes < 1 ? Localizer.text("now", "maintenant")
        : resting.hasBegun ? Localizer.text("%1 min left", "encore %1 min").arg(resting.minutes)
                           : Localizer.text("in %1 min", "dans %1 min").arg(resting.minutes)
    readonly property string lead: kind === "ringing" || kind === "event" ? resting.title
        : kind === "done" ? Localizer.text("All done", "Tout est fait") : resting.count > 0 ? resting.count : ""
    readonly property string trail: kind === "event" ? minutes
        : kind === "overdue" ? (isShort ? resting.overdue : Localizer.text("%1 overdue", "%1 en retard").arg(resting.overdue))
        : kind === "count" && !isShort ? Localizer.text("today", "aujourd’hui") : ""

    width: panel.shapeWidth
    height: panel.restingHeight
    opacity: shown ? 1 : 0
    visible: opacity > 0
    Behavior on opacity { enabled: !Theme.still; NumberAnimation { duration: Theme.hoverDuration } }

    Accessible.role: Accessible.StaticText
    Accessible.name: (kind === "overdue" ? trail : [lead, trail].join(" ")).trim()

    RingingEdge {
        visible: sign.rings
        reach: Appearance.compositing ? 18 : 0
        x: -reach
        width: parent.width + 2 * reach
        height: parent.height + reach
        earRadius: sign.panel.earRadius
        bottomRadius: sign.panel.bottomRadius
        color: Theme.flag
        // Three times, and then only the edge stays.
        NumberAnimation on progress {
            running: sign.rings && sign.resting.pulses && Appearance.compositing && !Theme.still
            from: 0
            to: 1
            duration: 1200
            loops: 3
            easing.type: Easing.OutQuad
        }
    }
    Item {
        readonly property int margin: sign.panel.earRadius + (sign.isShort ? 3 : 12)
        x: margin
        width: parent.width - 2 * margin
        height: parent.height

        Item {
            id: mark
            readonly property bool isBar: sign.kind === "event"
            visible: !sign.isShort && (sign.kind !== "overdue" || sign.lead !== "")
            width: !visible ? 0 : isBar ? 3 : 14
            height: 14
            anchors.verticalCenter: parent.verticalCenter
            Rectangle {
                visible: mark.isBar
                anchors.fill: parent
                radius: 1.5
                color: sign.resting.color
            }
            Icon {
                visible: sign.kind === "ringing"
                anchors.fill: parent
                name: "bell"
                strokeWidth: 1.5
                color: Theme.flag
            }
            Rectangle {
                visible: !mark.isBar && sign.kind !== "ringing"
                anchors.fill: parent
                anchors.margins: sign.kind === "done" ? 0 : 1
                radius: width / 2
                color: sign.kind === "done" ? Theme.done : "transparent"
                border.color: sign.kind === "done" ? Theme.done : Theme.chipText
                border.width: 1.5
                Icon {
                    visible: sign.kind === "done"
                    anchors.fill: parent
                    anchors.margins: 2
                    name: "check"
                    strokeWidth: 1.5
                    color: "#000"
                }
            }
        }
        PlainText {
            id: leadText
            visible: !sign.isShort || (sign.kind !== "event" && sign.kind !== "ringing")
            anchors.left: mark.right
            anchors.leftMargin: mark.visible ? 7 : 0
            anchors.right: trailRow.left
            anchors.rightMargin: 8
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            text: sign.lead
            color: Theme.text
            font.pixelSize: Theme.panelText(12)
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        Row {
            id: trailRow
            anchors.right: parent.right
            height: parent.height
            spacing: 6
            Rectangle {
                visible: sign.kind === "overdue"
                anchors.verticalCenter: parent.verticalCenter
                width: 7
                height: 7
                radius: 3.5
                color: Theme.overdue
            }
            PlainText {
                height: parent.height
                verticalAlignment: Text.AlignVCenter
                text: sign.trail
                color: sign.kind === "overdue" ? Theme.overdue : sign.kind === "event" ? Theme.accentText : Theme.secondaryText
                font.pixelSize: Theme.panelText(12)
                font.weight: sign.kind === "count" ? Font.Normal : Font.DemiBold
                Accessible.ignored: true
            }
        }
    }
    // The message is shown for a moment, once it can be seen.
    Timer {
        running: sign.shown && sign.kind === "done"
        interval: 4000
        onTriggered: sign.resting.finishDone()
    }
}
