import QtQuick
import Kestrant

// Tells once how a reminder is added by keyboard, below the button that does the same.
Item {
    id: tip

    property bool shown: false
    /// Where the button's middle is, in the parent.
    property real buttonX: 0
    signal done

    x: Math.round(Math.max(0, Math.min(buttonX - width / 2, parent.width - width)))
    width: Math.ceil(words.implicitWidth) + 28
    height: 30
    visible: opacity > 0
    opacity: shown ? 1 : 0
    Behavior on opacity { enabled: !Theme.still; NumberAnimation { duration: Theme.popoverDuration } }

    Accessible.role: Accessible.AlertMessage
    Accessible.name: words.text
    Accessible.onPressAction: tip.done()

    // Long enough to have been read.
    Timer {
        running: tip.shown
        interval: 8000
        onTriggered: tip.done()
    }
    Rectangle {
        x: tip.buttonX - tip.x - width / 2
        y: -4
        width: 12
        height: 12
        rotation: 45
        radius: 2
        color: bubble.color
        border.color: bubble.border.color
    }
    Rectangle {
        id: bubble
        anchors.fill: parent
        radius: 10
        color: "#2a2c34"
        border.color: Theme.border
    }
    // Hides the line between the two.
    Rectangle {
        x: tip.buttonX - tip.x - width / 2
        width: 11
        height: 2
        color: bubble.color
    }
    PlainText {
        id: words
        anchors.centerIn: parent
        text: Localizer.text("Ctrl N adds a reminder from here", "Ctrl N ajoute un rappel depuis ici")
        color: Theme.text
        font.pixelSize: Theme.panelText(12)
        Accessible.ignored: true
    }
    // Clicks do not reach what lies beneath.
    MouseArea {
        anchors.fill: parent
        enabled: tip.shown
        hoverEnabled: true
        onClicked: tip.done()
        onWheel: wheel => wheel.accepted = true
    }
}
