import QtQuick
import Kestrant

// The way back from a surface that stands in another's place, and what it is.
Item {
    id: heading

    required property Popover page
    required property string text

    width: parent.width
    height: 28

    IconButton {
        x: -8
        anchors.verticalCenter: parent.verticalCenter
        iconName: "chevronLeft"
        spokenName: Localizer.text("Back", "Retour")
        onClicked: heading.page.leave()
    }
    PlainText {
        x: 22
        width: parent.width - x
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        text: heading.text
        color: Theme.text
        font.pixelSize: 15
        font.weight: Font.DemiBold
    }
}
