import QtQuick
import Kestrant

// A line of a form for what only a reminder with a due date has; without one, the reason why there is none.
FormLine {
    id: line

    required property bool isPossible
    default property alias choice: choice.data

    control: Row {
        Row {
            id: choice
            visible: line.isPossible
            height: 26
        }
        PlainText {
            visible: !line.isPossible
            height: 26
            verticalAlignment: Text.AlignVCenter
            text: Localizer.text("needs a due date", "demande une échéance")
            color: Theme.secondaryText
            font.pixelSize: 12
            Accessible.role: Accessible.StaticText
            Accessible.name: line.label + ", " + text
        }
    }
}
