import QtQuick
import Kestrant

// Today, this week, this month and this year side by side, one number each.
FocusScope {
    id: overview

    required property RecapViewModel recap
    signal opened(string kind)

    function step(from, distance) {
        const card = cards.itemAt(from + distance)
        if (card)
            card.forceActiveFocus(Qt.TabFocusReason)
    }

    Row {
        anchors.fill: parent
        spacing: Theme.gap

        Repeater {
            id: cards
            // The number of cards does not change, so that each keeps its focus while numbers do.
            model: 4
            delegate: FocusScope {
                id: card
                required property int index
                readonly property var content: overview.recap.cards[index] ?? null
                readonly property string kind: content ? content.kind : ""
                readonly property string sentence: {
                    if (!content)
                        return ""
                    if (kind !== "day" || overview.recap.openText === "")
                        return content.sentence
                    return content.sentence + " · " + overview.recap.openText
                }
                width: (overview.width - 3 * Theme.gap) / 4
                height: overview.height
                focus: index === 0
                activeFocusOnTab: true

                Accessible.role: Accessible.Button
                Accessible.name: content ? content.spokenText : ""
                Accessible.focusable: true
                Accessible.onPressAction: overview.opened(kind)

                Keys.onLeftPressed: overview.step(index, -1)
                Keys.onRightPressed: overview.step(index, 1)
                Keys.onPressed: event => {
                    if ([Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key)) {
                        event.accepted = true
                        overview.opened(kind)
                    }
                }

                Rectangle {
                    anchors.fill: parent
                    radius: Theme.cardRadius
                    color: pointer.hovered ? Theme.cardActive : Theme.card
                    border.color: Theme.outline
                    border.width: Theme.contrast ? 1 : 0
                    Behavior on color { enabled: !Theme.still; ColorAnimation { duration: pointer.hovered ? 90 : 140 } }
                }
                PlainText {
                    x: 14
                    y: 11
                    text: card.content ? card.content.title : ""
                    color: Theme.text
                    font.pixelSize: Theme.panelText(12.5)
                    font.weight: Font.DemiBold
                    Accessible.ignored: true
                }
                PlainText {
                    x: 13
                    y: 24
                    text: card.content ? card.content.number : ""
                    color: Theme.text
                    font.pixelSize: 40
                    font.weight: Font.DemiBold
                    font.letterSpacing: -1.2
                    Accessible.ignored: true
                }
                PlainText {
                    x: 14
                    y: 72
                    width: parent.width - 2 * x
                    text: card.sentence
                    wrapMode: Text.Wrap
                    maximumLineCount: 2
                    elide: Text.ElideRight
                    lineHeight: 16
                    lineHeightMode: Text.FixedHeight
                    color: pointer.hovered ? Theme.secondaryTextActive : Theme.secondaryText
                    font.pixelSize: Theme.panelText(12)
                    Accessible.ignored: true
                }
                Loader {
                    active: card.content !== null && card.kind !== "day"
                    x: 14
                    y: parent.height - height - (card.kind === "week" ? 8 : 12)
                    width: parent.width - 2 * x
                    height: 106
                    sourceComponent: RecapChart {
                        card: overview.recap.cards[index]
                        compact: true
                        contrast: Theme.contrast
                    }
                    property int index: card.index
                }
                Column {
                    visible: card.kind === "day"
                    x: 14
                    y: parent.height - height - 14
                    spacing: 6
                    Repeater {
                        model: card.kind === "day" ? overview.recap.rows.slice(-4) : []
                        Row {
                            required property var modelData
                            spacing: 8
                            CompletionCircle {
                                width: 16
                                height: 16
                                diameter: 14
                                progress: 1
                                color: modelData.color
                            }
                            PlainText {
                                width: card.width - 28 - 24
                                height: 16
                                verticalAlignment: Text.AlignVCenter
                                text: modelData.title
                                elide: Text.ElideRight
                                color: modelData.isKnown ? Theme.chipText : Theme.secondaryText
                                font.pixelSize: Theme.panelText(12)
                                Accessible.ignored: true
                            }
                        }
                    }
                }
                HoverHandler { id: pointer }
                TapHandler { onTapped: overview.opened(card.kind) }
                FocusRing { target: card; radius: Theme.cardRadius + 2 }
            }
        }
    }
}
