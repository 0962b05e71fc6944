import QtQuick
import Kestrant

// A sentence that appears at the lower edge and goes by itself.
Rectangle {
    id: toast

    function show(message) {
        words.text = message
        stay.restart()
    }

    width: Math.min(Math.ceil(words.implicitWidth) + 28, parent.width - 80)
    height: 32
    radius: 16
    color: "#3a1f1f"
    border.color: Qt.rgba(1, 0.41, 0.38, 0.4)
    visible: opacity > 0
    opacity: stay.running ? 1 : 0
    Behavior on opacity { enabled: !Theme.still; NumberAnimation { duration: Theme.popoverDuration } }

    Accessible.role: Accessible.AlertMessage
    Accessible.name: words.text

    Timer { id: stay; interval: 5000 }
    TapHandler { onTapped: stay.stop() }
    Text {
        id: words
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        verticalAlignment: Text.AlignVCenter
        horizontalAlignment: Text.AlignHCenter
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: Theme.text
        font.pixelSize: 12
        Accessible.ignored: true
    }
}
