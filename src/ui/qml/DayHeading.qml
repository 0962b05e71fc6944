import QtQuick
import Kestrant

Text {
    property bool isToday: false

    height: Theme.headingHeight
    leftPadding: 1
    topPadding: 4
    verticalAlignment: Text.AlignVCenter
    elide: Text.ElideRight
    color: isToday ? Theme.accentText : Theme.secondaryText
    font.pixelSize: 11
    font.weight: Font.DemiBold
    font.letterSpacing: 0.6
    Accessible.ignored: true
}
