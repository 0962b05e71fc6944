import QtQuick
import Kestrant

// Chips for the properties of a new reminder: those that are set, and below those that can be added.
Column {
    id: facts

    required property QuickAddViewModel form
    required property OverlayHost overlays
    /// A day is to be picked.
    signal dayWanted
    /// The line is to become an event.
    signal eventWanted
    signal accepted
    /// The keyboard has nothing left to act on here.
    signal titleWanted

    readonly property var names: ({
        list: Localizer.text("List", "Liste"),
        due: Localizer.text("Due date", "Échéance"),
        zone: Localizer.text("Time elsewhere", "Heure d’ailleurs"),
        priority: Localizer.text("Priority", "Priorité"),
        flag: Localizer.text("Flag", "Signaler"),
        alert: Localizer.text("Alert", "Alerte"),
        repeat: Localizer.text("Repeat", "Répétition"),
        link: Localizer.text("Link", "Lien"),
        notes: Localizer.text("Notes", "Notes")
    })
    readonly property var values: ({
        list: form.listTitle,
        due: form.dueText,
        zone: form.zoneText,
        priority: form.priorityTitle,
        flag: Localizer.text("Flagged", "Marqué"),
        alert: form.alert.title,
        repeat: form.repeatTitle,
        link: form.linkText,
        notes: form.notesText
    })
    readonly property var icons: ({ due: "calendar", priority: "priority", flag: "flag", alert: "bell", repeat: "repeat" })

    spacing: 8

    function act(kind, chip) {
        if (kind === "link" || kind === "notes" || kind === "zone")
            return titleWanted()
        if (kind === "due") {
            dayWanted()
        } else if (kind === "flag") {
            const hadFocus = chip.activeFocus
            form.isFlagged = !form.isFlagged
            if (hadFocus)
                focusLater(kind)
        } else {
            const offered = kind === "list" ? form.lists : kind === "priority" ? form.priorities
                          : kind === "alert" ? form.alert.choices() : form.repeats()
            const chosen = kind === "list" ? form.listId : kind === "priority" ? form.priority
                         : kind === "alert" ? form.alert.id : form.repeatId
            chip.forceActiveFocus(Qt.OtherFocusReason)
            overlays.present("choice", "MenuPopover.qml", chip, {
                isPage: true, spokenName: names[kind], contentWidth: overlays.surface(overlays.topmost).contentWidth,
                entries: offered.map(entry => ({ title: entry.title, color: entry.color, checked: entry.id === chosen })),
                choose: index => {
                    const id = offered[index].id
                    if (kind === "list")
                        form.listId = id
                    else if (kind === "priority")
                        form.priority = id
                    else if (kind === "alert")
                        form.alert.id = id
                    else
                        form.repeatId = id
                    focusLater(kind)
                }
            })
        }
    }
    function acceptOffer(words) {
        form.accept(words)
        titleWanted()
    }
    function takeBack(kind) {
        form.takeBack(kind)
        titleWanted()
    }
    /// A fact moves from one line to the other when it is said or taken back.
    function focusLater(kind) {
        Qt.callLater(() => {
            for (const chips of [saidChips, addableChips]) {
                for (let index = 0; index < chips.count; ++index) {
                    const chip = chips.itemAt(index)
                    if (chip && chip.kind === kind)
                        return chip.forceActiveFocus(Qt.OtherFocusReason)
                }
            }
            facts.titleWanted()
        })
    }

    component Fact: Chip {
        id: fact
        required property string modelData
        readonly property string kind: modelData
        property bool isSaid: false
        readonly property bool isUnderstood: isSaid && facts.form.understood.includes(kind)
        readonly property color hue: isUnderstood ? Theme.understood(kind) : kind === "flag" || kind === "priority" ? Theme.flag : Theme.text

        height: 28
        maximumWidth: kind === "repeat" ? 260 : 190
        text: isSaid ? facts.values[kind] : facts.names[kind]
        iconName: facts.icons[kind] ?? ""
        showsIcon: iconName !== ""
        dotColor: kind === "list" ? facts.form.listColor : "transparent"
        outlined: !isSaid
        color: isUnderstood ? Qt.alpha(hue, 0.14) : Theme.control
        textColor: isSaid ? hue : Theme.chipText
        showsChevron: isSaid && !showsCross && kind !== "link" && kind !== "notes" && kind !== "zone"
        showsCross: isSaid && facts.form.canTakeBack(kind)
        spokenName: kind === "flag" ? facts.names.flag : facts.names[kind] + ", " + facts.values[kind]
        Accessible.description: kind === "list" ? facts.form.listReason : ""
        Accessible.role: kind === "flag" ? Accessible.CheckBox : Accessible.ButtonMenu
        Accessible.checked: isSaid
        onClicked: facts.act(kind, fact)
        onCrossClicked: facts.takeBack(kind)
    }

    Flow {
        width: parent.width
        spacing: 8
        Repeater {
            id: saidChips
            model: facts.form.said
            delegate: Fact { isSaid: true }
        }
        Repeater {
            // What may be meant, to be accepted.
            model: facts.form.offers
            delegate: Chip {
                required property var modelData
                height: 28
                maximumWidth: 220
                outlined: true
                iconName: facts.icons[modelData.kind]
                showsIcon: true
                text: modelData.title + " ?"
                textColor: Theme.understood(modelData.kind)
                spokenName: facts.names[modelData.kind] + ", " + modelData.title + "?"
                Accessible.description: modelData.words
                onClicked: facts.acceptOffer(modelData.words)
            }
        }
        Chip {
            // A line with a start and an end may be one.
            visible: facts.form.mayBeEvent
            height: 28
            outlined: true
            iconName: facts.icons.due
            showsIcon: true
            text: Localizer.text("Make it an event", "En faire un événement")
            onClicked: facts.eventWanted()
        }
        PlainText {
            // Why it is this list, while nothing else is said.
            visible: facts.form.said.length === 1
            height: 28
            leftPadding: 2
            verticalAlignment: Text.AlignVCenter
            text: facts.form.listReason
            color: Theme.secondaryText
            font.pixelSize: 12
        }
        TextBox {
            visible: facts.form.alert.hasTime
            width: Localizer.hasTwelveHours ? 86 : 62
            height: 28
            text: facts.form.alert.time
            readOnly: !facts.form.canEdit
            isWrong: facts.form.alert.timeIsWrong
            selectsOnFocus: true
            horizontalAlignment: TextInput.AlignHCenter
            spokenName: Localizer.text("Alert, time", "Alerte, heure")
            onEdited: text => facts.form.alert.time = text
            onAccepted: facts.accepted()
        }
    }
    Flow {
        width: parent.width
        spacing: 8
        Repeater {
            id: addableChips
            model: facts.form.addable
            delegate: Fact {}
        }
    }
}
