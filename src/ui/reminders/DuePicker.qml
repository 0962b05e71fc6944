import QtQuick
import Kestrant

// A month to pick a due day from, and beside it the days that are chosen most and a time of day.
Row {
    id: due

    required property DayPicker picker
    property string timeText
    property bool timeIsWrong: false
    property alias readOnly: time.readOnly
    /// Offers to have no due date at all.
    property bool canBeNone: false
    signal timeEdited(string text)
    signal accepted

    spacing: 16

    function focusMonth() {
        month.forceActiveFocus(Qt.OtherFocusReason)
    }

    MonthPicker {
        id: month
        width: 7 * 34
        picker: due.picker
        onAccepted: due.accepted()
    }
    Column {
        width: parent.width - month.width - parent.spacing
        spacing: 8
        topPadding: 2
        Repeater {
            model: [
                { title: Localizer.text("Today", "Aujourd’hui"), day: due.picker.today },
                { title: Localizer.text("Tomorrow", "Demain"), day: due.picker.tomorrow },
                { title: Localizer.text("Weekend", "Week-end"), day: due.picker.weekend },
                { title: Localizer.text("Next Monday", "Lundi prochain"), day: due.picker.nextWeek },
                { title: Localizer.text("No date", "Aucune date"), day: "" }
            ]
            delegate: Chip {
                required property var modelData
                visible: modelData.day !== "" || due.canBeNone
                text: modelData.title
                checkable: true
                checked: due.picker.day === modelData.day
                onClicked: due.picker.day = modelData.day
            }
        }
        PlainText {
            topPadding: 2
            text: Localizer.text("Time", "Heure")
            color: Theme.secondaryText
            font.pixelSize: 11
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        TextBox {
            id: time
            width: 96
            height: 28
            enabled: due.picker.day !== ""
            opacity: enabled ? 1 : 0.45
            text: due.timeText
            isWrong: due.timeIsWrong
            selectsOnFocus: true
            placeholder: Localizer.text("all day", "journée")
            spokenName: Localizer.text("Time, empty for the whole day", "Heure, vide pour la journée entière")
            onEdited: text => due.timeEdited(text)
            onAccepted: due.accepted()
        }
    }
}
