import QtQuick
import Kestrant

// A line to write on.
FocusScope {
    id: box

    property alias text: input.text
    property string placeholder
    property string spokenName: placeholder
    property int pixelSize: 13
    property bool isWrong: false
    /// For short texts that are rather replaced than edited: focusing selects all.
    property bool selectsOnFocus: false
    property alias readOnly: input.readOnly
    property alias horizontalAlignment: input.horizontalAlignment
    signal edited(string text)
    signal accepted

    function selectAll() {
        input.selectAll()
    }

    height: 30
    activeFocusOnTab: false

    Rectangle {
        anchors.fill: parent
        radius: 9
        color: Theme.field
        border.color: box.isWrong ? Theme.overdue : input.activeFocus ? Theme.accent : Theme.outline
        border.width: input.activeFocus ? 2 : box.isWrong || Theme.contrast ? 1 : 0
    }
    TextInput {
        id: input
        anchors.fill: parent
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        focus: true
        activeFocusOnTab: true
        clip: true
        verticalAlignment: TextInput.AlignVCenter
        color: Theme.text
        selectByMouse: true
        selectionColor: Theme.accent
        font.pixelSize: box.pixelSize
        onTextEdited: box.edited(text)
        onAccepted: box.accepted()
        onActiveFocusChanged: if (activeFocus && box.selectsOnFocus) selectAll()

        Accessible.role: Accessible.EditableText
        Accessible.name: box.spokenName

        PlainText {
            anchors.fill: parent
            visible: input.text === "" && input.preeditText === ""
            verticalAlignment: Text.AlignVCenter
            horizontalAlignment: input.horizontalAlignment
            elide: Text.ElideRight
            text: box.placeholder
            color: Theme.secondaryText
            font: input.font
        }
    }
}
