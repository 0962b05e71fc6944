import QtQuick
import Kestrant

// The fields of a new event beside its title.
Column {
    id: fields

    required property NewEventViewModel form
    required property OverlayHost overlays
    signal accepted

    EventTimesLines {
        width: parent.width
        times: fields.form.times
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
