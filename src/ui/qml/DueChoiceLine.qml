import QtQuick
import Kestrant

// A choice that only a reminder with a due date has; without one, the reason why there is none.
FormLine {
    id: line

    required property OverlayHost overlays
    required property bool isPossible
    required property string title
    required property string chosenId
    required property var choices
    property alias iconName: chip.iconName
    property alias showsIcon: chip.showsIcon
    signal chosen(string id)

    Row {
        ChoiceChip {
            id: chip
            visible: line.isPossible
            overlays: line.overlays
            subject: line.label
            maximumWidth: 290
            text: line.title
            chosenId: line.chosenId
            choices: line.choices
            onChosen: id => line.chosen(id)
        }
        Text {
            visible: !line.isPossible
            height: chip.height
            verticalAlignment: Text.AlignVCenter
            text: Localizer.text("needs a due date", "demande une échéance")
            color: Theme.secondaryText
            font.pixelSize: 12
            Accessible.role: Accessible.StaticText
            Accessible.name: line.label + ", " + text
        }
    }
}
