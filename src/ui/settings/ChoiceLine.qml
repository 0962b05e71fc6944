import QtQuick
import Kestrant

// A line with a value that opens the list of its choices.
FormLine {
    id: line

    required property OverlayHost overlays
    /// What is chosen, for assistive technology.
    property string subject: label
    property var choices: []
    property var value
    signal chosen(var rawValue)

    Chip {
        id: chip
        height: 28
        text: (line.choices.find(entry => entry.rawValue === line.value) ?? { title: "" }).title
        spokenName: line.subject + ", " + text
        showsChevron: true
        maximumWidth: 200
        Accessible.role: Accessible.ButtonMenu
        onClicked: {
            const offered = line.choices
            line.overlays.present("settings." + line.subject, "MenuPopover.qml", chip, {
                alignment: "right", spokenName: line.subject,
                entries: offered.map(entry => ({ title: entry.title, checked: entry.rawValue === line.value })),
                choose: index => line.chosen(offered[index].rawValue)
            })
        }
    }
}
