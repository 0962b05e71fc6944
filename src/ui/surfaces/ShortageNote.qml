import QtQuick

/// At an end of the list: what lies beyond is more than can be shown. No height without a text.
PlainText {
    width: parent.width
    height: text === "" ? 0 : implicitHeight + 12
    leftPadding: 16
    rightPadding: 16
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    wrapMode: Text.Wrap
    color: Theme.secondaryText
    font.pixelSize: 11
}
