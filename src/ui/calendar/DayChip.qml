import QtQuick
import Kestrant

// A day, and the month to pick another one from.
Chip {
    id: chip

    required property DayPicker picker
    required property OverlayHost overlays
    /// The property that the day belongs to, for assistive technology.
    required property string subject
    /// Stands in place of the day when there is none.
    property string placeholder

    iconName: "calendar"
    showsIcon: true
    height: 26
    text: picker.day === "" ? placeholder : picker.text
    spokenName: subject + ", " + text
    Accessible.role: Accessible.ButtonMenu
    onClicked: {
        forceActiveFocus(Qt.OtherFocusReason)
        overlays.present("day", "DayPopover.qml", chip,
                         { picker: picker, spokenName: subject,
                           contentWidth: overlays.surface(overlays.topmost).contentWidth })
    }
}
