import QtQuick
import Kestrant

// A placeholder for a module's contents: a picture, a sentence, and an action where there is one.
Item {
    id: notice

    /// See StateArt; empty shows none.
    property string picture
    property string subject: "reminders"
    property string heading
    property string explanation
    property string action
    signal acted

    readonly property bool narrow: width < 360

    implicitHeight: column.height

    Accessible.role: Accessible.StaticText
    Accessible.name: heading + (explanation === "" ? "" : ". " + explanation)

    Column {
        id: column
        width: parent.width

        StateArt {
            visible: notice.picture !== ""
            anchors.horizontalCenter: parent.horizontalCenter
            kind: notice.picture
            subject: notice.subject
        }
        Item { width: 1; height: notice.picture === "" ? 0 : 10 }
        PlainText {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: notice.heading
            color: Theme.text
            font.pixelSize: Theme.panelText(notice.narrow ? 13 : 14)
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        Item { width: 1; height: 4; visible: notice.explanation !== "" }
        PlainText {
            visible: text !== ""
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(implicitWidth, notice.width - (notice.narrow ? 8 : 80), 520)
            text: notice.explanation
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            maximumLineCount: notice.narrow ? 4 : 2
            elide: Text.ElideRight
            color: Theme.secondaryText
            font.pixelSize: Theme.panelText(12)
            Accessible.ignored: true
        }
        Item { width: 1; height: 14; visible: notice.action !== "" }
        PushButton {
            visible: notice.action !== ""
            anchors.horizontalCenter: parent.horizontalCenter
            text: notice.action
            onClicked: notice.acted()
        }
    }
}
