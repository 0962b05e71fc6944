import QtQuick
import Kestrant

// What was completed, in place of the modules: an overview of four cards, or one of them over the whole panel.
FocusScope {
    id: view

    required property RecapViewModel recap
    required property OverlayHost overlays
    required property Tooltip tooltip
    /// Points at either side that content keeps free of, and in the middle where a camera is.
    required property real sideMargin
    required property bool hasCamera

    readonly property bool showsCard: recap.view !== "overview"
    readonly property int controlsY: hasCamera ? 5 : 8

    Accessible.role: Accessible.Grouping
    Accessible.name: Localizer.text("Recap", "Bilan")

    function focusBody() {
        body.forceActiveFocus(Qt.OtherFocusReason)
    }
    /// One step back: from a card to the overview, from there to the panel.
    function leave() {
        if (!showsCard)
            return recap.close()
        recap.view = "overview"
        focusBody()
    }
    function openCard(kind) {
        recap.view = kind
        focusBody()
    }
    function openShare() {
        overlays.present("recapShare", "RecapSharePopover.qml", shareButton, { alignment: "right", sharing: recap.sharing,
                                                                         card: recap.card })
    }

    Keys.onEscapePressed: leave()
    Keys.onPressed: event => {
        event.accepted = true
        if (event.key === Qt.Key_PageUp || event.key === Qt.Key_Left)
            recap.showPrevious()
        else if (event.key === Qt.Key_PageDown || event.key === Qt.Key_Right)
            recap.showNext()
        else if (event.key === Qt.Key_Down)
            focusBody()
        else
            event.accepted = false
    }

    Row {
        x: view.sideMargin - 5
        y: view.controlsY
        height: 24
        spacing: 4

        IconButton {
            iconName: "chevronLeft"
            spokenName: view.showsCard ? Localizer.text("Back to the overview", "Retour à l’ensemble")
                                       : Localizer.text("Back to the reminders", "Retour aux rappels")
            tip: spokenName + "  " + Localizer.text("Esc", "Échap")
            onClicked: view.leave()
            onHoveredChanged: view.tooltip.follow(this)
        }
        PlainText {
            visible: !view.hasCamera
            height: parent.height
            rightPadding: 12
            verticalAlignment: Text.AlignVCenter
            text: Localizer.text("Recap", "Bilan")
            color: Theme.text
            font.pixelSize: Theme.panelText(13)
            font.weight: Font.DemiBold
        }
        RecapTabs {
            choices: view.recap.views
            value: view.recap.view
            cellPadding: view.hasCamera ? 7 : 12
            pixelSize: view.hasCamera ? 11 : Theme.panelText(12)
            onChosen: rawValue => view.recap.view = rawValue
        }
    }
    Row {
        id: right
        anchors.right: parent.right
        anchors.rightMargin: view.sideMargin
        y: view.controlsY
        height: 24
        spacing: 4

        IconButton {
            id: previousButton
            visible: view.showsCard
            enabled: view.recap.hasPrevious
            opacity: enabled ? 1 : 0.35
            iconName: "chevronLeft"
            spokenName: Localizer.text("Earlier", "Plus tôt")
            onClicked: view.recap.showPrevious()
            onHoveredChanged: view.tooltip.follow(this)
        }
        PlainText {
            visible: view.showsCard
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            text: view.recap.card.label
            color: Theme.chipText
            font.pixelSize: Theme.panelText(12)
            font.weight: Font.Medium
        }
        IconButton {
            visible: view.showsCard
            enabled: view.recap.hasNext
            opacity: enabled ? 1 : 0.35
            iconName: "chevronRight"
            spokenName: Localizer.text("Later", "Plus tard")
            onClicked: view.recap.showNext()
            onHoveredChanged: view.tooltip.follow(this)
        }
        Item { visible: view.showsCard; width: 4; height: 1 }
        Chip {
            id: shareButton
            visible: !view.recap.isEmpty
            pixelSize: Theme.panelText(12)
            text: Localizer.text("Share", "Partager")
            iconName: "share"
            showsIcon: true
            spokenName: Localizer.text("Share this card", "Partager cette carte")
            onClicked: view.openShare()
        }
    }

    Loader {
        id: body
        x: view.sideMargin
        y: Theme.toolbarHeight
        width: parent.width - 2 * x
        height: parent.height - y - Theme.margin
        focus: true
        sourceComponent: view.recap.isEmpty && !view.showsCard ? firstDay : view.showsCard ? card : overview
    }
    Component {
        id: firstDay
        FocusScope {
            focus: true
            Notice {
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width
                picture: "empty"
                heading: Localizer.text("Your year starts here", "Votre année commence ici")
                explanation: Localizer.text("What you complete is counted here, on this computer alone.",
                                            "Ce que vous terminez est compté ici, sur cet ordinateur seulement.")
            }
        }
    }
    Component {
        id: overview
        RecapOverview {
            recap: view.recap
            focus: true
            onOpened: kind => view.openCard(kind)
        }
    }
    Component {
        id: card
        RecapCardView {
            recap: view.recap
            focus: true
        }
    }
}
