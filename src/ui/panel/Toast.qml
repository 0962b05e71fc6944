import QtQuick
import Kestrant

// A sentence that hangs below the panel and goes by itself: what went wrong, or what was done and can be taken back.
Item {
    id: toast

    property bool shown: false
    property bool isOffer: false
    property var act: null
    /// Of its time, 1 to 0.
    property real remaining: 1
    /// Where it is, in its parent; empty while it is not shown.
    readonly property rect area: shown ? Qt.rect(x, y, width, height) : Qt.rect(0, 0, 0, 0)

    /// A message is there, also in place of one that was still shown.
    signal begun

    function show(message) {
        isOffer = false
        words.text = message
        begin()
    }
    /// Tells what was done, with a button that calls `action`, as do the keys named by `shortcut`.
    function offer(message, label, action, shortcut) {
        isOffer = true
        words.text = message
        actionLabel.text = label
        keys.text = shortcut
        act = action
        begin()
    }
    function hide() { shown = false }
    function begin() {
        shown = true
        stay.restart()
        if (pointer.hovered)
            stay.pause()
        begun()
    }
    function perform() {
        hide()
        act()
    }

    readonly property real actionWidth: isOffer ? action.width + 6 : 16

    width: Math.min(Math.ceil(words.implicitWidth) + 42 + 12 + actionWidth, parent.width - 80)
    height: 40
    visible: opacity > 0
    /// How much of it is there, 0 to 1.
    property real presence: shown ? 1 : 0
    opacity: Theme.opacity(presence)
    Behavior on presence {
        enabled: !Theme.still
        NumberAnimation { duration: toast.shown ? 180 : 140; easing.type: Easing.OutCubic }
    }
    transform: Translate {
        y: toast.shown ? 0 : -8
        Behavior on y {
            enabled: !Theme.still && toast.shown
            NumberAnimation { duration: 180; easing.type: Easing.OutCubic }
        }
    }

    Accessible.role: Accessible.AlertMessage
    Accessible.name: words.text

    NumberAnimation {
        id: stay
        target: toast
        property: "remaining"
        from: 1
        to: 0
        duration: 5000
        onFinished: toast.hide()
    }
    HoverHandler {
        id: pointer
        // The message stays while the pointer is on it.
        onHoveredChanged: if (toast.shown) hovered ? stay.pause() : stay.resume()
    }
    TapHandler { enabled: !toast.isOffer; onTapped: toast.hide() }

    DropShadow {
        visible: Appearance.compositing
        anchors.fill: parent
        radius: height / 2
        kind: DropShadow.Toast
    }
    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: Theme.popover
        border.color: Qt.tint(Theme.popover, Theme.border)
    }
    Icon {
        x: 14
        width: 18
        height: 18
        anchors.verticalCenter: parent.verticalCenter
        name: toast.isOffer ? "check" : "warning"
        color: toast.isOffer ? Theme.done : Theme.overdue
    }
    PlainText {
        id: words
        anchors.fill: parent
        anchors.leftMargin: 42
        anchors.rightMargin: 12 + toast.actionWidth
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        color: Theme.text
        font.pixelSize: Theme.panelText(13)
        Accessible.ignored: true
    }
    Rectangle {
        id: action
        visible: toast.isOffer
        anchors.right: parent.right
        anchors.rightMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        width: row.width + 24
        height: 28
        radius: 14
        color: actionPointer.hovered ? Theme.controlHovered : Theme.control

        Accessible.role: Accessible.Button
        Accessible.name: actionLabel.text
        Accessible.onPressAction: toast.perform()

        Row {
            id: row
            anchors.centerIn: parent
            height: parent.height
            spacing: 7
            CountdownRing {
                visible: !Theme.still
                anchors.verticalCenter: parent.verticalCenter
                width: 16
                height: 16
                color: Theme.text
                remaining: visible ? Math.ceil(toast.remaining * 90) / 90 : 1
            }
            PlainText {
                id: actionLabel
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.text
                font.pixelSize: Theme.panelText(13)
                font.weight: Font.DemiBold
                Accessible.ignored: true
            }
            PlainText {
                id: keys
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondaryText
                font.pixelSize: Theme.panelText(11)
                Accessible.ignored: true
            }
        }
        HoverHandler { id: actionPointer }
        TapHandler { onTapped: toast.perform() }
    }
}
