import QtQuick
import Kestrant

// What an event says, to read, with ways to its meeting, its links, its form and its end.
Popover {
    id: popover

    required property EventDetailsViewModel details
    required property EditActions actions
    /// A row of the calendar, and its item.
    required property var row
    required property Item anchor
    readonly property bool opensByClick: true

    contentWidth: 320
    contentHeight: column.height
    spokenName: details.title
    focus: true
    Accessible.description: details.timeText

    function remove() {
        if (details.isWritable)
            actions.removeRow(row, anchor)
    }

    Keys.onDeletePressed: remove()
    Component.onCompleted: {
        details.show(row)
        const first = joinButton.visible ? joinButton : editButton.enabled ? editButton : popover
        first.forceActiveFocus(Qt.PopupFocusReason)
    }
    Timer {
        running: true
        repeat: true
        interval: 20000
        onTriggered: popover.details.refreshPresent()
    }

    component Fact: Item {
        id: fact
        property string iconName
        property alias text: words.text
        property alias color: words.color
        visible: text !== ""
        width: column.width
        height: visible ? Math.max(18, words.height) : 0
        Icon {
            y: 2
            width: 14
            height: 14
            strokeWidth: 1.3
            name: fact.visible ? fact.iconName : ""
            color: Theme.secondaryText
        }
        PlainText {
            id: words
            x: 28
            width: fact.width - x
            wrapMode: Text.WrapAtWordBoundaryOrAnywhere
            maximumLineCount: 4
            elide: Text.ElideRight
            color: Theme.text
            font.pixelSize: 13
        }
    }

    Column {
        id: column
        width: parent.width
        spacing: 10

        Item {
            width: parent.width
            height: heading.height
            Rectangle {
                width: 4
                height: parent.height
                radius: 2
                color: popover.details.color
            }
            Column {
                id: heading
                x: 14
                width: parent.width - x - 28
                spacing: 2
                PlainText {
                    width: parent.width
                    text: popover.details.title
                    wrapMode: Text.Wrap
                    maximumLineCount: 3
                    elide: Text.ElideRight
                    color: Theme.text
                    font.pixelSize: 15
                    font.weight: Font.DemiBold
                }
                Row {
                    spacing: 6
                    PlainText {
                        text: popover.details.timeText
                        color: Theme.secondaryText
                        font.pixelSize: 13
                    }
                    PlainText {
                        visible: text !== ""
                        text: popover.details.remainingText
                        color: Theme.accentText
                        font.pixelSize: 13
                    }
                }
            }
            IconButton {
                x: parent.width - width + 6
                y: -3
                iconName: "close"
                spokenName: Localizer.text("Close", "Fermer")
                onClicked: popover.close()
            }
        }
        PushButton {
            id: joinButton
            visible: popover.details.joinLink !== ""
            width: parent.width
            height: 34
            primary: true
            text: Localizer.text("Join the meeting", "Rejoindre la réunion")
            spokenDescription: popover.details.joinLink
            onClicked: popover.details.open(popover.details.joinLink)
        }
        Repeater {
            model: popover.details.links
            // The whole address is read before it is opened.
            Item {
                id: line
                required property var modelData
                width: column.width
                height: link.height
                Pressable {
                    id: link
                    width: parent.width - 30
                    height: address.height
                    ringRadius: 6
                    spokenName: line.modelData.address
                    Accessible.role: Accessible.Link
                    onClicked: popover.details.open(line.modelData.address)
                    Fact {
                        id: address
                        width: parent.width
                        iconName: "link"
                        text: line.modelData.text
                        color: link.hovered ? Theme.text : Theme.link
                    }
                }
                IconButton {
                    x: parent.width - width + 6
                    y: -3
                    iconName: "copy"
                    spokenName: Localizer.text("Copy %1", "Copier %1").arg(line.modelData.address)
                    onClicked: popover.details.copy(line.modelData.address)
                }
            }
        }
        Fact { iconName: "pin"; text: popover.details.place }
        Fact { iconName: "repeat"; text: popover.details.repeatText }
        Fact { iconName: "bell"; text: popover.details.alertText }
        Fact { iconName: "calendar"; text: popover.details.calendarTitle }
        Item {
            visible: popover.details.notes !== ""
            width: parent.width
            height: notes.height
            Icon {
                y: 2
                width: 14
                height: 14
                strokeWidth: 1.3
                name: "notes"
                color: Theme.secondaryText
            }
            ScrolledText {
                id: notes
                x: 28
                width: parent.width - x
                maximumHeight: 132
                text: popover.details.notes
                color: Theme.text
                pixelSize: 13
                Accessible.role: Accessible.StaticText
            }
        }
        PlainText {
            visible: text !== ""
            width: parent.width
            text: popover.details.errorText
            wrapMode: Text.Wrap
            color: Theme.destructiveText
            font.pixelSize: 12
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        Rectangle {
            width: parent.width
            height: 1
            color: Theme.separator
        }
        Item {
            width: parent.width
            height: editButton.height
            PushButton {
                id: editButton
                text: Localizer.text("Edit", "Modifier")
                enabled: popover.details.isWritable && popover.details.errorText === ""
                onClicked: popover.actions.editRow(popover.row, popover.anchor)
            }
            PushButton {
                x: parent.width - width
                text: Localizer.text("Delete", "Supprimer")
                enabled: popover.details.isWritable
                onClicked: popover.remove()
            }
        }
    }
}
