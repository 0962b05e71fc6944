import QtQuick
import Kestrant

// The card as it is passed on: its picture, and, where there is a page that shows it, its link. In words what either
// tells.
Popover {
    id: popover

    required property RecapSharing sharing
    required property var card
    readonly property bool hasLink: sharing.link !== ""
    property bool showsLinks: false

    contentWidth: hasLink ? 592 : 420
    contentHeight: 34 + 230 + (hasLink ? 46 : 0)
    spokenName: showsLinks ? Localizer.text("Links made here", "Liens créés ici")
                           : Localizer.text("Share this card", "Partager cette carte")
    focus: true

    Component.onCompleted: {
        sharing.begin(card)
        first.forceActiveFocus(Qt.PopupFocusReason)
    }
    readonly property Item first: hasLink ? copyLinkButton : saveButton
    function leave() {
        if (!showsLinks)
            return close()
        showsLinks = false
        first.forceActiveFocus(Qt.OtherFocusReason)
    }

    IconButton {
        visible: popover.showsLinks
        x: -5
        iconName: "chevronLeft"
        spokenName: Localizer.text("Back", "Retour")
        onClicked: popover.leave()
    }
    PlainText {
        x: popover.showsLinks ? 26 : 0
        width: parent.width - x - 30
        height: 24
        verticalAlignment: Text.AlignVCenter
        text: popover.showsLinks ? popover.spokenName
                                 : Localizer.text("Share: %1", "Partager : %1").arg(popover.card.label)
        elide: Text.ElideRight
        color: Theme.text
        font.pixelSize: 15
        font.weight: Font.DemiBold
    }
    IconButton {
        x: parent.width - width
        iconName: "close"
        spokenName: Localizer.text("Close", "Fermer")
        onClicked: popover.close()
    }

    Item {
        visible: !popover.showsLinks
        y: 34
        width: parent.width
        height: parent.height - y

        RecapPicture {
            id: picture
            width: 184
            height: 230
            card: popover.card
            Accessible.role: Accessible.Graphic
            Accessible.name: popover.card.spokenText
            Rectangle {
                anchors.fill: parent
                radius: 14
                color: "transparent"
                border.color: Theme.border
            }
        }
        QrCodePicture {
            id: code
            visible: popover.hasLink
            x: 204
            width: 176
            height: 176
            text: popover.sharing.link
            Accessible.role: Accessible.Graphic
            Accessible.name: Localizer.text("QR code of the link", "Code QR du lien")
        }
        PlainText {
            visible: popover.hasLink
            x: code.x
            y: code.height + 8
            width: code.width
            text: Localizer.text("Scan it, or copy the link.", "Scannez-le, ou copiez le lien.")
            wrapMode: Text.Wrap
            color: Theme.secondaryText
            font.pixelSize: 12
        }

        Column {
            id: linkColumn
            visible: popover.hasLink
            x: 400
            width: parent.width - x
            spacing: 8

            Rectangle {
                width: parent.width
                height: 28
                radius: 9
                color: Theme.well
                PlainText {
                    anchors.fill: parent
                    anchors.leftMargin: 10
                    anchors.rightMargin: 10
                    verticalAlignment: Text.AlignVCenter
                    text: popover.sharing.link.replace(/^https?:\/\//, "")
                    elide: Text.ElideRight
                    color: Theme.link
                    font.pixelSize: 12
                    Accessible.name: popover.sharing.link
                }
            }
            PushButton {
                id: copyLinkButton
                width: parent.width
                primary: true
                text: Localizer.text("Copy link", "Copier le lien")
                onClicked: popover.sharing.copyLink()
            }
            PlainText {
                topPadding: 4
                text: Localizer.text("What the link holds", "Ce que contient le lien")
                color: Theme.text
                font.pixelSize: 12
                font.weight: Font.DemiBold
            }
            Repeater {
                model: [{ holds: true, words: popover.sharing.contentText },
                        { holds: false, words: Localizer.text("No titles, no lists, no names, no times",
                                                              "Ni titres, ni listes, ni noms, ni heures") },
                        { holds: false, words: Localizer.text("Nothing is uploaded: the link itself is all there is",
                                                              "Rien n’est envoyé : le lien est tout ce qu’il y a") }]
                Row {
                    id: fact
                    required property var modelData
                    width: linkColumn.width
                    spacing: 7
                    Icon {
                        y: 2
                        width: 12
                        height: 12
                        name: fact.modelData.holds ? "check" : "close"
                        color: fact.modelData.holds ? Theme.done : Theme.destructiveText
                    }
                    PlainText {
                        width: fact.width - 19
                        text: fact.modelData.words
                        wrapMode: Text.Wrap
                        color: Theme.chipText
                        font.pixelSize: 12
                    }
                }
            }
        }

        PlainText {
            visible: !popover.hasLink
            x: 208
            width: parent.width - x
            text: Localizer.text("The picture holds the period and its numbers; no titles, no lists.",
                                 "L’image contient la période et ses nombres ; ni titres, ni listes.")
            wrapMode: Text.Wrap
            color: Theme.secondaryText
            font.pixelSize: 12
        }
        // Below each other beside the picture, or in a row below everything.
        Grid {
            id: actions
            x: popover.hasLink ? 0 : 208
            y: popover.hasLink ? 246 : 44
            columns: popover.hasLink ? 4 : 1
            spacing: 8
            PushButton {
                id: saveButton
                primary: !popover.hasLink
                text: Localizer.text("Save picture", "Enregistrer l’image")
                onClicked: popover.sharing.savePicture()
            }
            PushButton {
                text: Localizer.text("Copy picture", "Copier l’image")
                onClicked: popover.sharing.copyPicture()
            }
            PushButton {
                text: Localizer.text("Copy text", "Copier le texte")
                onClicked: popover.sharing.copyText()
            }
            PushButton {
                visible: popover.sharing.madeLinks.length > 0
                text: Localizer.text("Links made (%1)", "Liens créés (%1)").arg(popover.sharing.madeLinks.length)
                onClicked: {
                    popover.showsLinks = true
                    forgetAll.forceActiveFocus(Qt.TabFocusReason)
                }
            }
        }
        PlainText {
            x: popover.hasLink ? 400 : 208
            y: popover.hasLink ? 194 : actions.y + actions.height + 8
            width: parent.width - x
            text: popover.sharing.message
            wrapMode: Text.Wrap
            maximumLineCount: 3
            elide: Text.ElideRight
            color: popover.sharing.hasFailed ? Theme.destructiveText : Theme.text
            font.pixelSize: 12
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
    }

    Item {
        visible: popover.showsLinks
        y: 34
        width: parent.width
        height: parent.height - y

        ScrollArea {
            id: links
            width: parent.width
            height: parent.height - 40
            contentHeight: rows.height
            Column {
                id: rows
                width: parent.width
                Repeater {
                    model: popover.showsLinks ? popover.sharing.madeLinks : []
                    Item {
                        id: row
                        required property var modelData
                        width: rows.width
                        height: 40
                        PlainText {
                            width: parent.width - forget.width - made.width - 40
                            anchors.verticalCenter: parent.verticalCenter
                            text: row.modelData.title
                            elide: Text.ElideRight
                            color: Theme.text
                            font.pixelSize: 13
                        }
                        PlainText {
                            id: made
                            anchors.right: forget.left
                            anchors.rightMargin: 16
                            anchors.verticalCenter: parent.verticalCenter
                            text: row.modelData.made
                            color: Theme.secondaryText
                            font.pixelSize: 12
                        }
                        PushButton {
                            id: forget
                            anchors.right: parent.right
                            anchors.rightMargin: 10
                            anchors.verticalCenter: parent.verticalCenter
                            text: Localizer.text("Forget", "Oublier")
                            spokenDescription: row.modelData.title
                            onClicked: {
                                forgetAll.forceActiveFocus(Qt.OtherFocusReason)
                                popover.sharing.forgetLink(row.modelData.link)
                            }
                        }
                    }
                }
            }
        }
        PlainText {
            visible: popover.sharing.madeLinks.length === 0
            anchors.centerIn: links
            text: Localizer.text("No link is remembered.", "Aucun lien n’est mémorisé.")
            color: Theme.secondaryText
            font.pixelSize: 13
        }
        PushButton {
            id: forgetAll
            y: parent.height - height
            text: Localizer.text("Forget all", "Tout oublier")
            enabled: popover.sharing.madeLinks.length > 0
            onClicked: popover.sharing.forgetAllLinks()
        }
    }
}
