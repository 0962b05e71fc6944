import QtQuick
import Kestrant

// A line with choices side by side.
FormLine {
    id: line

    property string controlName
    property var choices: []
    property var value
    property real minimumCellWidth: 0
    signal chosen(var rawValue)

    Segmented {
        objectName: line.controlName
        spokenName: line.label
        choices: line.choices
        value: line.value
        minimumCellWidth: line.minimumCellWidth
        onChosen: rawValue => line.chosen(rawValue)
    }
}
