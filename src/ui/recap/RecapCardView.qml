import QtQuick
import Kestrant

// One card over the whole panel: the number and its sentence, and the chart of its days or the list of one day.
FocusScope {
    id: view

    required property RecapViewModel recap

    readonly property var card: recap.card
    readonly property bool isDay: card.kind === "day"
    readonly property bool isYear: card.kind === "year"
    readonly property real chartX: 340

    /// A text without a full stop as a sentence. A single word says no more than the caption.
    function sentence(text) {
        return text.includes(" ") ? text[0].toUpperCase() + text.slice(1) + "." : ""
    }
    readonly property string openSentence: isDay && card.todayIndex === 0 && recap.openText !== ""
                                           ? Localizer.text("%1 for today.", "%1 pour aujourd’hui.").arg(recap.openText) : ""

    Column {
        visible: !view.isYear
        x: 16
        y: 22
        width: view.chartX - x - 24

        PlainText {
            text: view.card.title
            width: parent.width
            elide: Text.ElideRight
            color: Theme.accentText
            font.pixelSize: Theme.panelText(13)
            font.weight: Font.DemiBold
        }
        PlainText {
            text: view.card.number
            color: Theme.text
            width: parent.width
            fontSizeMode: Text.HorizontalFit
            height: 78
            verticalAlignment: Text.AlignVCenter
            minimumPixelSize: 36
            font.pixelSize: 72
            font.weight: Font.DemiBold
            font.letterSpacing: -2.2
        }
        PlainText {
            text: view.card.caption
            color: Theme.text
            font.pixelSize: Theme.panelText(15)
            font.weight: Font.Medium
        }
        PlainText {
            topPadding: 12
            width: parent.width
            text: [view.sentence(view.card.sentence), view.sentence(view.card.detail), view.openSentence]
                  .filter(words => words !== "").join("\n")
            wrapMode: Text.Wrap
            maximumLineCount: 4
            elide: Text.ElideRight
            lineHeight: 18
            lineHeightMode: Text.FixedHeight
            color: Theme.secondaryText
            font.pixelSize: Theme.panelText(12.5)
        }
    }
    Item {
        visible: view.isYear
        x: 16
        width: parent.width - 32
        height: parent.height

        PlainText {
            id: yearNumber
            y: -2
            text: view.card.number
            color: Theme.text
            font.pixelSize: 46
            font.weight: Font.DemiBold
            font.letterSpacing: -1.4
        }
        PlainText {
            anchors.left: yearNumber.right
            anchors.leftMargin: 12
            anchors.baseline: yearNumber.baseline
            text: Localizer.text("%1 in %2", "%1 en %2").arg(view.card.caption).arg(view.card.title)
            color: Theme.text
            font.pixelSize: Theme.panelText(15)
            font.weight: Font.Medium
        }
        PlainText {
            id: comparison
            anchors.right: parent.right
            anchors.baseline: yearNumber.baseline
            text: chart.current >= 0 ? chart.hint.title + ": " + chart.hint.counted : view.sentence(view.card.sentence)
            color: chart.current >= 0 ? Theme.text : Theme.secondaryText
            font.pixelSize: Theme.panelText(12.5)
        }
        PlainText {
            y: parent.height - height + 2
            width: parent.width - 190
            elide: Text.ElideRight
            text: view.sentence(view.card.detail).replace(/\.$/, "")
            color: Theme.secondaryText
            font.pixelSize: Theme.panelText(12)
        }
        Row {
            anchors.right: parent.right
            y: parent.height - height + 2
            spacing: 4
            Accessible.ignored: true
            PlainText {
                text: Localizer.text("fewer", "moins")
                rightPadding: 3
                color: Theme.secondaryText
                font.pixelSize: Theme.panelText(11)
                Accessible.ignored: true
            }
            Repeater {
                model: [Theme.white(0.10), "#1c4a80", "#1f6cc4", "#3d9bff", "#a6d2ff"]
                Rectangle {
                    required property color modelData
                    anchors.verticalCenter: parent.verticalCenter
                    width: 9
                    height: 9
                    radius: 2.5
                    color: modelData
                }
            }
            PlainText {
                text: Localizer.text("more", "plus")
                leftPadding: 3
                color: Theme.secondaryText
                font.pixelSize: Theme.panelText(11)
                Accessible.ignored: true
            }
        }
    }

    RecapChart {
        id: chart

        // Read anew with the card, whose titles may come later.
        readonly property var hint: current >= 0 && view.card ? view.recap.dayHint(current) : ({})
        readonly property string shownPeriod: view.card.kind + view.card.label
        // The pointer's day, else the keyboard's.
        readonly property int pointed: pointer.hovered && !view.isDay ? dayAt(pointer.point.position.x, pointer.point.position.y) : -1
        property int chosen: -1

        x: view.isYear ? 16 : view.chartX
        y: view.isYear ? 58 : view.isDay ? 192 : 14
        width: view.isYear ? parent.width - 32 : view.card.kind === "month" ? 392 : parent.width - x - 16
        height: view.isYear ? 140 : view.isDay ? 32 : parent.height - y - 2
        card: view.card
        contrast: Theme.contrast
        textScale: Math.min(1.2, Appearance.textScale)
        current: pointed >= 0 ? pointed : activeFocus && !view.isDay ? chosen : -1
        focus: !view.isDay
        activeFocusOnTab: !view.isDay

        Accessible.role: Accessible.Chart
        Accessible.name: view.card.spokenText
        Accessible.description: current >= 0 ? hint.spokenText : ""
        Accessible.focusable: !view.isDay

        function move(distance) {
            const last = Math.max(0, card.todayIndex >= 0 ? card.todayIndex : card.days - 1)
            const next = chosen < 0 ? last : chosen + distance
            if (next >= 0 && next < card.days)
                chosen = next
        }
        Keys.onLeftPressed: move(view.isYear ? -7 : -1)
        Keys.onRightPressed: move(view.isYear ? 7 : 1)
        Keys.onUpPressed: event => { event.accepted = card.kind !== "week"; if (event.accepted) move(view.isYear ? -1 : -7) }
        Keys.onDownPressed: if (card.kind !== "week") move(view.isYear ? 1 : 7)
        Keys.onReturnPressed: view.recap.showDay(chosen)
        Keys.onEnterPressed: view.recap.showDay(chosen)
        Keys.onSpacePressed: view.recap.showDay(chosen)

        onShownPeriodChanged: {
            chosen = -1
            if (!Theme.still)
                growth.restart()
        }
        Component.onCompleted: if (!Theme.still) growth.restart()
        NumberAnimation { id: growth; target: chart; property: "progress"; from: 0; to: 1; duration: 320; easing.type: Easing.OutCubic }

        HoverHandler { id: pointer }
        TapHandler { onTapped: if (chart.pointed >= 0) view.recap.showDay(chart.pointed) }
        FocusRing { target: chart; radius: 10; distance: 4 }
    }

    // What was done on the day that is pointed at.
    Rectangle {
        visible: view.card.kind === "month" && chart.current >= 0
        x: view.chartX + 392 + 20
        y: 26
        width: parent.width - x
        height: words.height + 22
        radius: 12
        color: "#26272e"
        border.color: Theme.border
        Column {
            id: words
            x: 12
            y: 10
            width: parent.width - 24
            PlainText {
                text: chart.hint.title ?? ""
                color: Theme.text
                font.pixelSize: Theme.panelText(12)
                font.weight: Font.DemiBold
            }
            PlainText {
                visible: text !== ""
                text: chart.hint.number ?? ""
                color: Theme.text
                font.pixelSize: 20
                font.weight: Font.DemiBold
            }
            PlainText {
                width: parent.width
                text: (chart.hint.names ?? "") !== "" ? chart.hint.names : (chart.hint.number ?? "") === "" ? chart.hint.counted ?? "" : ""
                visible: text !== ""
                wrapMode: Text.Wrap
                maximumLineCount: 4
                elide: Text.ElideRight
                color: Theme.secondaryText
                font.pixelSize: Theme.panelText(11.5)
            }
        }
    }

    ListView {
        id: rows
        visible: view.isDay
        x: view.chartX
        y: 8
        width: parent.width - x - 16
        height: 172
        clip: true
        focus: view.isDay
        activeFocusOnTab: view.isDay && count > 0
        boundsBehavior: Flickable.StopAtBounds
        interactive: contentHeight > height
        model: view.isDay ? view.recap.rows : []
        currentIndex: -1
        keyNavigationEnabled: true
        Accessible.role: Accessible.List
        Accessible.name: view.card.spokenText
        delegate: Item {
            id: row
            required property var modelData
            required property int index
            width: rows.width
            height: 36
            Accessible.role: Accessible.ListItem
            Accessible.name: [modelData.time, modelData.title, modelData.list].filter(part => part !== "").join(", ")
            Accessible.focusable: true
            Accessible.focused: rows.activeFocus && ListView.isCurrentItem
            Rectangle {
                anchors.fill: parent
                anchors.bottomMargin: 1
                radius: 8
                color: rows.activeFocus && row.ListView.isCurrentItem && Appearance.showsFocus ? Theme.cardActive : "transparent"
            }
            FigureText {
                x: 2
                anchors.verticalCenter: parent.verticalCenter
                text: row.modelData.time
                color: Theme.secondaryText
                font.pixelSize: Theme.panelText(12)
            }
            CompletionCircle {
                x: 60
                anchors.verticalCenter: parent.verticalCenter
                width: 18
                height: 18
                diameter: 16
                progress: 1
                color: row.modelData.color
            }
            PlainText {
                x: 88
                width: parent.width - x - place.width - 20
                anchors.verticalCenter: parent.verticalCenter
                text: row.modelData.title
                elide: Text.ElideRight
                color: row.modelData.isKnown ? Theme.text : Theme.secondaryText
                font.pixelSize: Theme.panelText(13)
            }
            PlainText {
                id: place
                anchors.right: parent.right
                anchors.rightMargin: 6
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, 140)
                text: row.modelData.list
                elide: Text.ElideRight
                color: Theme.secondaryText
                font.pixelSize: Theme.panelText(12)
            }
            Rectangle {
                y: parent.height - 1
                width: parent.width
                height: 1
                color: Theme.separator
            }
        }
        Rectangle {
            parent: rows
            visible: rows.interactive
            x: rows.width + 5
            y: rows.visibleArea.yPosition * rows.height
            width: 3
            height: Math.max(24, rows.visibleArea.heightRatio * rows.height)
            radius: 1.5
            color: Theme.white(Theme.contrast ? 0.5 : 0.18)
        }
    }
}
