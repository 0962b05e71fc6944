import QtQuick
import Kestrant

// Tells of something new, once, below the button that opens it. The panel works on around it.
FocusScope {
    id: card

    required property AnnouncementViewModel announcement
    /// Where the button's middle is, in the parent.
    property real buttonX: 0

    x: Math.round(Math.max(0, Math.min(buttonX - width / 2, parent.width - width)))
    width: 296
    height: column.height + 28

    Accessible.role: Accessible.AlertMessage
    Accessible.name: heading.text + ". " + words.text

    Keys.onEscapePressed: announcement.dismiss()

    // Clicks do not reach what lies beneath.
    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }
    DropShadow {
        visible: Appearance.compositing
        anchors.fill: parent
        radius: 14
    }
    Rectangle {
        x: card.buttonX - card.x - width / 2
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
        radius: 14
        color: "#2a2c34"
        border.color: Theme.border
    }
    Rectangle {
        x: card.buttonX - card.x - width / 2
        width: 11
        height: 2
        color: bubble.color
    }
    Column {
        id: column
        x: 16
        y: 14
        width: parent.width - 32
        spacing: 4
        PlainText {
            id: heading
            width: parent.width - 24
            text: Localizer.text("New: your recap", "Nouveau : votre bilan")
            color: Theme.text
            font.pixelSize: Theme.panelText(13.5)
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        PlainText {
            id: words
            width: parent.width
            text: Localizer.text("What you completed, by day, week, month and year. Ctrl R opens it.",
                                 "Ce que vous avez terminé, par jour, semaine, mois et année. Ctrl R l’ouvre.")
            wrapMode: Text.Wrap
            color: Theme.chipText
            font.pixelSize: Theme.panelText(12)
            Accessible.ignored: true
        }
        Row {
            topPadding: 8
            spacing: 8
            PushButton {
                primary: true
                text: Localizer.text("Show me", "Montrer")
                onClicked: card.announcement.showRecap()
            }
            PushButton {
                text: Localizer.text("Not again", "Ne plus annoncer")
                spokenDescription: Localizer.text("Nothing new is announced any more", "Plus aucune nouveauté n’est annoncée")
                onClicked: card.announcement.neverAgain()
            }
        }
    }
    IconButton {
        x: parent.width - width - 8
        y: 8
        iconName: "close"
        spokenName: Localizer.text("Close", "Fermer")
        onClicked: card.announcement.dismiss()
    }
}
