import QtQuick

Window {
    width: 940
    height: 292
    x: (Screen.width - width) / 2
    y: 0
    flags: Qt.FramelessWindowHint
    color: "black"
    visible: true

    Rectangle {
        anchors.fill: parent
        color: "black"
    }
}
