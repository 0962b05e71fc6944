import QtQuick
import Kestrant

// A moment of joy over the panel's content. Whatever is clicked is reached beneath it, and ends it.
Item {
    id: view

    required property CelebrationViewModel celebration
    /// Of the whole, 0 to 1.
    property real progress: 0
    readonly property real presence: Theme.still ? 1 : Math.max(0, Math.min(1, progress * 8, (1 - progress) * 8))

    Accessible.role: Accessible.AlertMessage
    Accessible.name: [celebration.title, celebration.detail].filter(words => words !== "").join(". ")

    NumberAnimation {
        target: view
        property: "progress"
        from: 0
        to: 1
        duration: view.celebration.duration
        running: !Theme.still
    }
    Rectangle {
        anchors.fill: parent
        radius: 26
        color: "#111218"
        opacity: Theme.opacity(0.95 * view.presence)
    }
    CelebrationArt {
        anchors.horizontalCenter: parent.horizontalCenter
        y: 8
        width: 460
        height: parent.height - y
        progress: view.progress
        still: Theme.still
        opacity: Theme.opacity(view.presence)
    }
    Column {
        anchors.horizontalCenter: parent.horizontalCenter
        y: 126
        width: parent.width - 80
        spacing: 2
        opacity: Theme.still ? 1 : Theme.opacity(Math.min(view.presence, Math.max(0, Math.min(1, (view.progress - 0.4) * 6))))
        PlainText {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
            text: view.celebration.title
            color: Theme.text
            font.pixelSize: Theme.panelText(18)
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        PlainText {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
            text: view.celebration.detail
            color: Theme.chipText
            font.pixelSize: Theme.panelText(13)
            Accessible.ignored: true
        }
    }
    // Looks on passively: the press goes on to what lies beneath.
    PointHandler {
        onActiveChanged: if (active) view.celebration.dismiss()
    }
}
