import QtQuick
import Kestrant

// A sentence that appears at the lower edge and goes by itself: what went wrong, or what was done and can be taken back.
Rectangle {
    id: toast

    property bool shown: false
    property bool isOffer: false
    property var act: null

    function show(message) {
        isOffer = false
        words.text = message
        begin(5000)
    }
    /// Tells what was done, with a button that calls `action`.
    function offer(message, label, action) {
        isOffer = true
        words.text = message
        actionLabel.text = label
        act = action
        begin(4000)
    }
    function hide() { shown = false }
    function begin(milliseconds) {
        shown = true
        stay.interval = milliseconds
        if (pointer.hovered)
            stay.stop()
        else
            stay.restart()
    }
    function perform() {
        hide()
        act()
    }

    readonly property real actionWidth: isOffer ? Math.ceil(actionLabel.implicitWidth) + 24 : 0

    width: Math.min(Math.ceil(words.implicitWidth) + 28 + actionWidth, parent.width - 80)
    height: 32
    radius: 16
    color: isOffer ? "#2a2c34" : "#3a1f1f"
    border.color: isOffer ? Theme.border : Qt.rgba(1, 0.41, 0.38, 0.4)
    visible: opacity > 0
    opacity: shown ? 1 : 0
    Behavior on opacity { enabled: !Theme.still; NumberAnimation { duration: Theme.popoverDuration } }

    Accessible.role: Accessible.AlertMessage
    Accessible.name: words.text

    Timer { id: stay; onTriggered: toast.hide() }
    HoverHandler {
        id: pointer
        // What is being read stays.
        onHoveredChanged: hovered ? stay.stop() : stay.restart()
    }
    TapHandler { enabled: !toast.isOffer; onTapped: toast.hide() }
    PlainText {
        id: words
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14 + toast.actionWidth
        verticalAlignment: Text.AlignVCenter
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
        color: Theme.text
        font.pixelSize: Theme.panelText(12)
        Accessible.ignored: true
    }
    Item {
        visible: toast.isOffer
        anchors.right: parent.right
        width: toast.actionWidth + 4
        height: parent.height

        Accessible.role: Accessible.Button
        Accessible.name: actionLabel.text
        Accessible.onPressAction: toast.perform()

        PlainText {
            id: actionLabel
            anchors.centerIn: parent
            anchors.horizontalCenterOffset: -3
            color: Theme.accentText
            font.pixelSize: Theme.panelText(12)
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        TapHandler { onTapped: toast.perform() }
    }
}
