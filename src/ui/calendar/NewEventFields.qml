import QtQuick
import Kestrant

// The fields of a new event beside its title.
Column {
    id: fields

    required property NewEventViewModel form
    required property OverlayHost overlays
    signal accepted

    // What the line says and no field shows; the cross gives the words back.
    Flow {
        visible: fields.form.facts.length > 0 || fields.form.offers.length > 0
        width: parent.width
        spacing: 8
        bottomPadding: 10
        Repeater {
            model: fields.form.facts
            delegate: Chip {
                required property var modelData
                height: 28
                maximumWidth: 220
                text: modelData.title
                iconName: ({ place: "pin", repeat: "repeat", alert: "bell" })[modelData.kind] ?? ""
                showsIcon: iconName !== ""
                color: Qt.alpha(textColor, 0.14)
                textColor: Theme.understood(modelData.kind)
                showsCross: true
                onClicked: fields.form.takeBack(modelData.kind)
                onCrossClicked: fields.form.takeBack(modelData.kind)
            }
        }
        Repeater {
            // What may be meant, to be accepted.
            model: fields.form.offers
            delegate: Chip {
                required property var modelData
                height: 28
                maximumWidth: 220
                outlined: true
                text: modelData.title + " ?"
                iconName: "repeat"
                showsIcon: true
                textColor: Theme.understood(modelData.kind)
                onClicked: fields.form.accept(modelData.words)
            }
        }
    }
    EventTimesLines {
        width: parent.width
        times: fields.form.times
        readOnly: !fields.form.canEdit
        overlays: fields.overlays
        onAccepted: fields.accepted()
    }
    FormLine {
        width: parent.width
        last: true
        label: Localizer.text("Calendar", "Calendrier")
        ChoiceChip {
            overlays: fields.overlays
            subject: Localizer.text("Calendar", "Calendrier")
            text: fields.form.calendarTitle
            dotColor: fields.form.calendarColor
            chosenId: fields.form.calendarId
            choices: () => fields.form.calendars()
            onChosen: id => fields.form.calendarId = id
        }
    }
}
