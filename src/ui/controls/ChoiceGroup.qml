import QtQuick
import Kestrant

// One of a few choices that are all in view: {rawValue, title} each. The arrow keys of its direction choose.
FocusScope {
    id: group

    property string spokenName
    property var choices: []
    property var value
    property bool isColumn: false
    /// The keyboard is on the choices.
    property bool hasKeyboard: activeFocus
    readonly property int currentIndex: choices.findIndex(choice => choice.rawValue === value)
    signal chosen(var rawValue)

    activeFocusOnTab: true

    Accessible.role: Accessible.Grouping
    Accessible.name: spokenName

    Keys.onPressed: event => {
        const step = event.key === (isColumn ? Qt.Key_Down : Qt.Key_Right) ? 1
                   : event.key === (isColumn ? Qt.Key_Up : Qt.Key_Left) ? -1 : 0
        const next = choices[currentIndex + step]
        event.accepted = step !== 0 && hasKeyboard
        if (event.accepted && currentIndex >= 0 && next)
            chosen(next.rawValue)
    }
}
