import QtQuick
import Kestrant

// A line with a switch.
FormLine {
    id: line

    property string controlName
    property bool checked
    signal toggled(bool checked)

    Toggle {
        objectName: line.controlName
        spokenName: line.label
        checked: line.checked
        onToggled: checked => line.toggled(checked)
    }
}
