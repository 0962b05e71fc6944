import QtQuick
import Kestrant

// When a reminder rings: a choice, and for a whole day the time of day.
Row {
    id: alert

    required property AlertPicker picker
    required property OverlayHost overlays
    property bool showsIcon: false
    property alias readOnly: time.readOnly
    /// Enter was pressed while writing the time.
    signal accepted

    spacing: 6

    ChoiceChip {
        anchors.verticalCenter: parent.verticalCenter
        overlays: alert.overlays
        subject: Localizer.text("Alert", "Alerte")
        text: alert.picker.title
        iconName: "bell"
        showsIcon: alert.showsIcon
        chosenId: alert.picker.id
        choices: () => alert.picker.choices()
        onChosen: id => alert.picker.id = id
    }
    TextBox {
        id: time
        visible: alert.picker.hasTime
        width: Localizer.hasTwelveHours ? 86 : 62
        height: 26
        text: alert.picker.time
        isWrong: alert.picker.timeIsWrong
        selectsOnFocus: true
        horizontalAlignment: TextInput.AlignHCenter
        spokenName: Localizer.text("Alert, time", "Alerte, heure")
        onEdited: text => alert.picker.time = text
        onAccepted: alert.accepted()
    }
}
