import QtQuick
import Kestrant

// The year's completed reminders on a map that lights from January on, in place of the open panel's content. It rests
// until a click or a key.
FocusScope {
    id: reveal

    required property YearRevealViewModel year
    required property real sideMargin
    readonly property bool greets: year.total === 0
    /// Milliseconds that have been played.
    property real played: Theme.still ? whole : 0
    readonly property int whole: 2300
    /// How much of what lies between two moments has been played, 0 to 1.
    function part(from, to) {
        return Math.max(0, Math.min(1, (played - from) / (to - from)))
    }

    Accessible.role: Accessible.AlertMessage
    Accessible.name: year.summary

    Component.onCompleted: if (Theme.still) year.noteSeen()
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
        property: "played"
        to: reveal.whole
        duration: reveal.whole
        running: !Theme.still
        onFinished: reveal.year.noteSeen()
    }
    NumberAnimation {
        id: fade
        target: reveal
        property: "opacity"
        to: 0
        duration: 280
        onFinished: reveal.year.finish()
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onClicked: reveal.leave()
        onWheel: wheel => wheel.accepted = true
    }

    Column {
        visible: reveal.greets
        anchors.centerIn: parent
        width: 520
        opacity: reveal.part(500, 900)

        PlainText {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: reveal.year.heading
            color: Theme.text
            font.pixelSize: 34
            font.weight: Font.DemiBold
        }
        PlainText {
            width: parent.width
            topPadding: 10
            horizontalAlignment: Text.AlignHCenter
            text: reveal.year.caption
            wrapMode: Text.Wrap
            color: Theme.chipText
            font.pixelSize: 15
        }
    }

    Item {
        visible: !reveal.greets
        x: reveal.sideMargin + 16
        y: Theme.toolbarHeight
        width: parent.width - 2 * x
        height: parent.height - y - Theme.margin
        opacity: reveal.part(300, 700)

        PlainText {
            text: reveal.year.heading
            color: Theme.accentText
            font.pixelSize: Theme.panelText(13)
            font.weight: Font.DemiBold
        }
        PlainText {
            id: number
            y: 14
            text: Number(Math.round(reveal.year.total * (1 - Math.pow(1 - reveal.part(500, 1400), 3)))).toLocaleString(
                      Qt.locale(Localizer.isFrench ? "fr_FR" : "en_US"), "f", 0)
            color: Theme.text
            font.pixelSize: 56
            font.weight: Font.DemiBold
            font.letterSpacing: -1.7
        }
        PlainText {
            anchors.left: number.right
            anchors.leftMargin: 14
            anchors.baseline: number.baseline
            text: reveal.year.caption
            color: Theme.text
            font.pixelSize: Theme.panelText(16)
            font.weight: Font.Medium
        }
        RecapChart {
            y: 88
            width: parent.width
            height: 138
            card: reveal.year.card
            contrast: Theme.contrast
            textScale: Math.min(1.2, Appearance.textScale)
            progress: reveal.part(500, reveal.whole)
        }
    }
    Row {
        anchors.right: parent.right
        anchors.rightMargin: reveal.sideMargin + 16
        y: reveal.greets ? parent.height - height - 20 : Theme.toolbarHeight
        spacing: 5
        opacity: reveal.part(1400, 1800)
        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            text: Localizer.text("Click or", "Un clic ou")
            color: Theme.chipText
            font.pixelSize: Theme.panelText(12)
        }
        KeyCaps {
            keys: [Localizer.text("Esc", "Échap")]
            capHeight: 20
        }
        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            text: Localizer.text("to go on", "pour continuer")
            color: Theme.chipText
            font.pixelSize: Theme.panelText(12)
        }
    }
}
