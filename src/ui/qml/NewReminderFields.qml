import QtQuick
import Kestrant

// What belongs to a new reminder beside its title.
Column {
    id: fields

    required property QuickAddViewModel form
    required property OverlayHost overlays
    property bool picksDate: false
    signal accepted
    /// The keyboard has nothing left to act on here.
    signal titleWanted

    spacing: 12

    // What was understood of the line; a click on one leaves its words in the title.
    Flow {
        visible: fields.form.pieces.length > 0
        width: parent.width
        spacing: 6
        Repeater {
            model: fields.form.pieces
            delegate: Chip {
                required property var modelData
                required property int index
                text: modelData.words
                showsIcon: iconName !== ""
                iconName: ({ day: "calendar", time: "overdue" })[modelData.kind] ?? ""
                showsCross: true
                color: Theme.controlOn
                textColor: Theme.text
                spokenName: Localizer.text("Understood: %1. Press to keep it in the title.",
                                           "Compris : %1. Appuyer pour le garder dans le titre.").arg(modelData.spoken)
                onClicked: fields.form.refuse(index)
                onCrossClicked: fields.form.refuse(index)
            }
        }
    }
    Row {
        width: parent.width
        spacing: 8
        Chip {
            id: listChip
            maximumWidth: 130
            text: fields.form.listTitle
            dotColor: fields.form.listColor
            showsChevron: true
            spokenName: Localizer.text("List: %1", "Liste : %1").arg(text)
            Accessible.role: Accessible.ButtonMenu
            onClicked: {
                const lists = fields.form.lists
                fields.overlays.present("quickAdd.list", "MenuPopover.qml", listChip, {
                    alignment: "left", spokenName: Localizer.text("Lists", "Listes"),
                    entries: lists.map(list => ({ title: list.title, color: list.color,
                                                  checked: list.id === fields.form.listId })),
                    choose: index => { fields.form.listId = lists[index].id }
                })
            }
        }
        Chip {
            iconName: "calendar"
            showsIcon: true
            maximumWidth: 190
            text: fields.form.dueText !== "" ? fields.form.dueText : Localizer.text("Due date", "Échéance")
            spokenName: fields.form.dueText !== "" ? Localizer.text("Due: %1", "Échéance : %1").arg(text) : text
            showsCross: fields.form.dueDay.day !== ""
            checkable: true
            checked: fields.picksDate || fields.form.dueDay.day !== ""
            onClicked: {
                fields.picksDate = !fields.picksDate
                if (fields.picksDate) {
                    if (fields.form.dueDay.day === "")
                        fields.form.dueDay.day = fields.form.dueDay.today
                    duePicker.focusMonth()
                }
            }
            onCrossClicked: {
                fields.form.dueDay.day = ""
                fields.picksDate = false
                fields.titleWanted()
            }
        }
        Chip {
            iconName: "flag"
            showsIcon: true
            text: ""
            tip: Localizer.text("Flag", "Signaler")
            spokenName: tip
            checkable: true
            checked: fields.form.isFlagged
            onClicked: fields.form.isFlagged = !checked
        }
    }
    Row {
        visible: fields.form.dueDay.day !== ""
        spacing: 8
        AlertChoice {
            picker: fields.form.alert
            overlays: fields.overlays
            showsIcon: true
            onAccepted: fields.accepted()
        }
        ChoiceChip {
            overlays: fields.overlays
            subject: Localizer.text("Repeat", "Répétition")
            text: fields.form.repeatId === "none" ? subject : fields.form.repeatTitle
            spokenName: subject + ", " + fields.form.repeatTitle
            iconName: "repeat"
            showsIcon: true
            chosenId: fields.form.repeatId
            choices: () => fields.form.repeats()
            onChosen: id => fields.form.repeatId = id
        }
    }

    DuePicker {
        id: duePicker
        visible: fields.picksDate
        width: parent.width
        picker: fields.form.dueDay
        timeText: fields.form.timeText
        onTimeEdited: text => fields.form.timeText = text
        onAccepted: fields.accepted()
    }

    Row {
        spacing: 12
        PlainText {
            height: 26
            verticalAlignment: Text.AlignVCenter
            text: Localizer.text("Priority", "Priorité")
            color: Theme.secondaryText
            font.pixelSize: 12
        }
        Segmented {
            spokenName: Localizer.text("Priority", "Priorité")
            choices: fields.form.priorities
            value: fields.form.priority
            minimumCellWidth: 58
            onChosen: rawValue => fields.form.priority = rawValue
        }
    }
}
