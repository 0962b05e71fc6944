import QtQuick
import Kestrant

// One of {id, title, color} each, such as a list or a calendar; another one is chosen in the form's place.
Chip {
    id: chip

    required property OverlayHost overlays
    /// The property that is chosen, such as "List".
    required property string subject
    required property string chosenId
    /// Asked for when they are shown.
    required property var choices
    signal chosen(string id)

    height: 26
    maximumWidth: 180
    showsChevron: true
    spokenName: subject + ", " + text
    Accessible.role: Accessible.ButtonMenu
    onClicked: {
        const offered = choices()
        forceActiveFocus(Qt.OtherFocusReason)
        overlays.present("choice", "MenuPopover.qml", chip, {
            isPage: true, spokenName: subject, contentWidth: overlays.surface(overlays.topmost).contentWidth,
            entries: offered.map(entry => ({ title: entry.title, color: entry.color,
                                             checked: entry.id === chosenId })),
            choose: index => chip.chosen(offered[index].id)
        })
    }
}
