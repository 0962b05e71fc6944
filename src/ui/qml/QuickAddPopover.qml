import QtQuick
import Kestrant

// A new reminder: its title first, the rest beside it. Enter adds, Escape closes.
Popover {
    id: quickAdd

    required property QuickAddViewModel form
    property bool picksDate: false

    contentWidth: 372
    contentHeight: column.height
    spokenName: Localizer.text("New reminder", "Nouveau rappel")
    focus: true

    function submit() {
        if (form.canSubmit)
            form.submit()
    }

    Keys.onReturnPressed: submit()
    Keys.onEnterPressed: submit()
    Component.onCompleted: {
        form.begin()
        picksDate = form.dueDay !== ""
        titleBox.forceActiveFocus(Qt.PopupFocusReason)
    }
    Connections {
        target: quickAdd.form
        function onAdded() { quickAdd.overlays.dismissAfterSaving(quickAdd.overlayId) }
    }

    Column {
        id: column
        width: parent.width
        spacing: 12

        TextBox {
            id: titleBox
            width: parent.width
            height: 42
            focus: true
            pixelSize: 15
            text: quickAdd.form.title
            placeholder: Localizer.text("What to remember?", "Que faut-il retenir ?")
            spokenName: Localizer.text("Title", "Titre")
            onEdited: text => quickAdd.form.title = text
            onAccepted: quickAdd.submit()
        }

        Row {
            width: parent.width
            spacing: 8
            Chip {
                id: listChip
                maximumWidth: 130
                text: quickAdd.form.listTitle
                dotColor: quickAdd.form.listColor
                showsChevron: true
                spokenName: Localizer.text("List: %1", "Liste : %1").arg(text)
                Accessible.role: Accessible.ButtonMenu
                onClicked: {
                    const lists = quickAdd.form.lists
                    quickAdd.overlays.present("quickAdd.list", "MenuPopover.qml", listChip, {
                        alignment: "left", spokenName: Localizer.text("Lists", "Listes"),
                        entries: lists.map(list => ({ title: list.title, color: list.color,
                                                      checked: list.id === quickAdd.form.listId })),
                        choose: index => { quickAdd.form.listId = lists[index].id }
                    })
                }
            }
            Chip {
                iconName: "calendar"
                showsIcon: true
                maximumWidth: 190
                text: quickAdd.form.dueText !== "" ? quickAdd.form.dueText : Localizer.text("Due date", "Échéance")
                spokenName: quickAdd.form.dueText !== "" ? Localizer.text("Due: %1", "Échéance : %1").arg(text) : text
                showsCross: quickAdd.form.dueDay !== ""
                checkable: true
                checked: quickAdd.picksDate || quickAdd.form.dueDay !== ""
                onClicked: {
                    quickAdd.picksDate = !quickAdd.picksDate
                    if (quickAdd.picksDate) {
                        if (quickAdd.form.dueDay === "")
                            quickAdd.form.dueDay = quickAdd.form.today
                        month.forceActiveFocus(Qt.OtherFocusReason)
                    }
                }
                onCrossClicked: {
                    quickAdd.form.dueDay = ""
                    quickAdd.picksDate = false
                    titleBox.forceActiveFocus(Qt.OtherFocusReason)
                }
            }
        }

        Row {
            visible: quickAdd.picksDate
            width: parent.width
            spacing: 16
            MonthPicker {
                id: month
                width: 7 * 34
                form: quickAdd.form
                onAccepted: quickAdd.submit()
            }
            Column {
                width: parent.width - month.width - parent.spacing
                spacing: 8
                topPadding: 2
                Chip {
                    text: Localizer.text("Today", "Aujourd’hui")
                    checkable: true
                    checked: quickAdd.form.dueDay === quickAdd.form.today
                    onClicked: quickAdd.form.dueDay = quickAdd.form.today
                }
                Chip {
                    text: Localizer.text("Tomorrow", "Demain")
                    checkable: true
                    checked: quickAdd.form.dueDay === quickAdd.form.tomorrow
                    onClicked: quickAdd.form.dueDay = quickAdd.form.tomorrow
                }
                Chip {
                    text: Localizer.text("Next Monday", "Lundi prochain")
                    checkable: true
                    checked: quickAdd.form.dueDay === quickAdd.form.nextWeek
                    onClicked: quickAdd.form.dueDay = quickAdd.form.nextWeek
                }
                Item { width: 1; height: 6 }
                Text {
                    text: Localizer.text("Time", "Heure")
                    color: Theme.secondaryText
                    font.pixelSize: 11
                    font.weight: Font.DemiBold
                }
                TextBox {
                    id: timeBox
                    width: 96
                    text: quickAdd.form.timeText
                    placeholder: Localizer.text("all day", "journée")
                    spokenName: Localizer.text("Time, empty for the whole day", "Heure, vide pour la journée entière")
                    onEdited: text => quickAdd.form.timeText = text
                    onAccepted: quickAdd.submit()
                }
            }
        }

        Row {
            spacing: 12
            Text {
                height: 26
                verticalAlignment: Text.AlignVCenter
                text: Localizer.text("Priority", "Priorité")
                color: Theme.secondaryText
                font.pixelSize: 12
            }
            Segmented {
                spokenName: Localizer.text("Priority", "Priorité")
                choices: quickAdd.form.priorities
                value: quickAdd.form.priority
                minimumCellWidth: 68
                onChosen: rawValue => quickAdd.form.priority = rawValue
            }
        }

        Text {
            visible: text !== ""
            width: parent.width
            text: quickAdd.form.errorText
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: Theme.overdue
            font.pixelSize: 12
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }

        Item {
            width: parent.width
            height: 32
            Text {
                anchors.verticalCenter: parent.verticalCenter
                anchors.verticalCenterOffset: 1
                text: Localizer.text("Enter adds · Esc closes", "Entrée ajoute · Échap ferme")
                color: Theme.secondaryText
                font.pixelSize: 11
            }
            Row {
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                spacing: 8
                PushButton {
                    text: Localizer.text("Cancel", "Annuler")
                    onClicked: quickAdd.close()
                }
                PushButton {
                    text: Localizer.text("Add", "Ajouter")
                    primary: true
                    enabled: quickAdd.form.canSubmit
                    onClicked: quickAdd.submit()
                }
            }
        }
    }
}
