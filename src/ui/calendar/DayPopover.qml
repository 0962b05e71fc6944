import QtQuick
import Kestrant

// A month to pick a day from, in the place of the form. Enter and a click take it, Escape goes back to the day that was
// there.
Popover {
    id: popover

    required property DayPicker picker
    property string before

    isPage: true
    contentHeight: heading.height + 8 + month.height
    focus: true

    Component.onCompleted: {
        before = picker.day
        if (before === "")
            picker.day = picker.today
        picker.showMonthOfDay()
        month.forceActiveFocus(Qt.PopupFocusReason)
    }
    function leave() {
        picker.day = before
        close()
    }

    PageHeading {
        id: heading
        page: popover
        text: popover.spokenName
    }
    MonthPicker {
        id: month
        y: heading.height + 8
        width: parent.width
        height: implicitHeight
        focus: true
        picker: popover.picker
        onPicked: popover.close()
        onAccepted: popover.close()
    }
}
