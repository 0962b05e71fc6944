import QtQuick
import Kestrant

// The year's completed reminders, month by month, in place of the open panel's content. Ends by itself, by a click or a
// key.
FocusScope {
    id: reveal

    required property YearRevealViewModel year
    readonly property bool greets: year.total === 0
    /// How much of it has been played, 0 to 1.
    property real progress: Theme.still ? 1 : 0

    Accessible.role: Accessible.AlertMessage
    Accessible.name: year.summary

    Keys.onPressed: event => {
        event.accepted = true
        if ([Qt.Key_Escape, Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key))
            leave()
    }

    function leave() {
        if (Theme.still)
            year.finish()
        else
            fade.start()
    }

    NumberAnimation {
        target: reveal
        property: "progress"
        to: 1
        duration: 2200
        easing.type: Easing.OutCubic
        running: !Theme.still
    }
    NumberAnimation {
        id: fade
        target: reveal
        property: "opacity"
        to: 0
        duration: 280
        onFinished: reveal.year.finish()
    }
    Timer {
        running: true
        interval: 8000
        onTriggered: reveal.leave()
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onClicked: reveal.leave()
        onWheel: wheel => wheel.accepted = true
    }

    Column {
        id: words
        x: reveal.greets ? (parent.width - width) / 2 : 64
        anchors.verticalCenter: parent.verticalCenter
        width: reveal.greets ? 520 : 280
        opacity: Math.min(1, reveal.progress * 4)

        PlainText {
            width: parent.width
            horizontalAlignment: reveal.greets ? Text.AlignHCenter : Text.AlignLeft
            text: reveal.year.heading
            color: reveal.greets ? Theme.text : Theme.accentText
            font.pixelSize: reveal.greets ? 34 : 15
            font.weight: Font.DemiBold
        }
        PlainText {
            visible: !reveal.greets
            text: Number(Math.round(reveal.year.total * reveal.progress)).toLocaleString(
                      Qt.locale(Localizer.isFrench ? "fr_FR" : "en_US"), "f", 0)
            color: Theme.text
            font.pixelSize: 84
            font.weight: Font.DemiBold
        }
        PlainText {
            width: parent.width
            topPadding: reveal.greets ? 10 : 0
            horizontalAlignment: reveal.greets ? Text.AlignHCenter : Text.AlignLeft
            text: reveal.year.caption
            wrapMode: Text.Wrap
            color: Theme.chipText
            font.pixelSize: 15
        }
    }

    Row {
        id: bars
        visible: !reveal.greets
        anchors.right: parent.right
        anchors.rightMargin: 64
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 52
        height: 168
        spacing: 14

        Repeater {
            model: reveal.year.months
            Item {
                id: bar
                required property var modelData
                required property int index
                // One month after the other.
                readonly property real grown: Math.max(0, Math.min(1, reveal.progress * 2 - index / 11))
                width: 26
                height: bars.height

                PlainText {
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: column.y - height - 4
                    visible: bar.modelData.count > 0
                    opacity: Math.max(0, bar.grown * 3 - 2)
                    text: bar.modelData.count
                    color: Theme.chipText
                    font.pixelSize: 11
                    font.weight: Font.Medium
                }
                Rectangle {
                    id: column
                    anchors.bottom: letter.top
                    anchors.bottomMargin: 8
                    width: parent.width
                    height: Math.max(6, (bar.height - 48) * bar.modelData.share * bar.grown)
                    radius: Math.min(8, height / 2)
                    color: bar.modelData.count === 0 ? Theme.white(Theme.contrast ? 0.3 : 0.1)
                         : bar.modelData.isCurrent ? Theme.accentText : Theme.accent
                }
                PlainText {
                    id: letter
                    anchors.horizontalCenter: parent.horizontalCenter
                    anchors.bottom: parent.bottom
                    text: bar.modelData.initial
                    color: bar.modelData.isCurrent ? Theme.text : Theme.secondaryText
                    font.pixelSize: 11
                    font.weight: Font.DemiBold
                }
            }
        }
    }
    PlainText {
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 16
        opacity: Math.max(0, reveal.progress * 3 - 2)
        text: Localizer.text("Click or Esc to go on", "Clic ou Échap pour continuer")
        color: Theme.secondaryText
        font.pixelSize: 11
    }
}
