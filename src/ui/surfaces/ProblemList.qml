import QtQuick
import Kestrant

// Problems with reading or saving; takes no room while there are none.
Column {
    id: list

    required property var problems

    visible: problems.length > 0
    bottomPadding: 6
    spacing: 6

    Repeater {
        model: list.problems
        Rectangle {
            id: problem
            required property string modelData
            width: list.width
            height: sentence.height + 16
            radius: 8
            color: Qt.alpha(Theme.flag, Theme.contrast ? 0.3 : 0.14)
            Accessible.role: Accessible.AlertMessage
            Accessible.name: modelData

            Icon {
                x: 9
                y: 9
                name: "warning"
                color: Theme.flag
            }
            PlainText {
                id: sentence
                x: 32
                y: 8
                width: parent.width - x - 10
                text: problem.modelData
                color: Theme.text
                font.pixelSize: 12
                // Paths have no spaces to break at.
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }
        }
    }
}
