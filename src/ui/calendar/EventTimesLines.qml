import QtQuick
import Kestrant

// When an event begins and ends: lines of a form.
Column {
    id: lines

    required property EventTimes times
    required property OverlayHost overlays
    property bool readOnly: false
    /// Enter was pressed while writing a time.
    signal accepted

    component Side: FormLine {
        id: side
        required property DayPicker picker
        required property string time
        required property bool isWrong
        signal edited(string text)
        width: lines.width
        Row {
            spacing: 6
            DayChip {
                anchors.verticalCenter: parent.verticalCenter
                picker: side.picker
                overlays: lines.overlays
                subject: side.label
            }
            TextBox {
                visible: !lines.times.isAllDay
                width: Localizer.hasTwelveHours ? 86 : 62
                height: 26
                text: side.time
                readOnly: lines.readOnly
                isWrong: side.isWrong
                selectsOnFocus: true
                horizontalAlignment: TextInput.AlignHCenter
                spokenName: Localizer.text("%1, time", "%1, heure").arg(side.label)
                onEdited: text => side.edited(text)
                onAccepted: lines.accepted()
                onActiveFocusChanged: if (!activeFocus) lines.times.applyTyped()
            }
        }
    }

    ToggleLine {
        width: lines.width
        label: Localizer.text("All day", "Journée entière")
        checked: lines.times.isAllDay
        onToggled: checked => lines.times.isAllDay = checked
    }
    Side {
        label: Localizer.text("Starts", "Début")
        picker: lines.times.startDay
        time: lines.times.startTime
        isWrong: lines.times.startTimeIsWrong
        onEdited: text => lines.times.startTime = text
    }
    Side {
        label: Localizer.text("Ends", "Fin")
        picker: lines.times.endDay
        time: lines.times.endTime
        isWrong: lines.times.endTimeIsWrong
        onEdited: text => lines.times.endTime = text
    }
}
