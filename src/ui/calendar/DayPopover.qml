import QtQuick
import Kestrant

// A month to pick a day from. Enter and a click take it, Escape goes back to the day that was there.
Popover {
    id: popover

    required property DayPicker picker
    property string before

    contentWidth: month.implicitWidth
    contentHeight: month.implicitHeight
    padding: 12
    focus: true

    Component.onCompleted: {
        before = picker.day
        if (before === "")
            picker.day = picker.today
        picker.showMonthOfDay()
        month.forceActiveFocus(Qt.PopupFocusReason)
    }
    Keys.onEscapePressed: {
        picker.day = before
        close()
    }

    MonthPicker {
        id: month
        width: implicitWidth
        height: implicitHeight
        focus: true
        picker: popover.picker
        onPicked: popover.close()
        onAccepted: popover.close()
    }
}
