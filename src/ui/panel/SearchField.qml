import QtQuick
import Kestrant

// The magnifier that unfolds into a field. Escape empties it, then folds it.
FocusScope {
    id: search

    property real openWidth: 160
    /// Whether there is room for the field itself, rather than its button.
    property bool alwaysOpen: false
    property string query
    readonly property bool isOpen: alwaysOpen || input.activeFocus || query !== "" || opening
    property bool opening: false
    property string tip: isOpen ? "" : button.tip
    readonly property bool hovered: button.hovered
    signal queryEdited(string query)
    signal dismissed

    function open() {
        opening = true
        input.forceActiveFocus(Qt.ShortcutFocusReason)
        input.selectAll()
        opening = false
    }

    function fold() {
        queryEdited("")
        dismissed()
    }

    width: isOpen ? openWidth : 26
    height: 24
    Behavior on width { enabled: !Theme.still; NumberAnimation { duration: Theme.popoverDuration; easing.type: Easing.OutCubic } }

    IconButton {
        id: button
        visible: !search.isOpen
        iconName: "search"
        spokenName: Localizer.text("Search", "Rechercher")
        tip: Localizer.text("Search  Ctrl F", "Rechercher  Ctrl F")
        onClicked: search.open()
    }

    Rectangle {
        anchors.fill: parent
        visible: search.isOpen
        radius: search.alwaysOpen ? height / 2 : 8
        color: Theme.control
        border.width: input.activeFocus ? 1.5 : Theme.contrast ? 1 : 0
        border.color: input.activeFocus ? Theme.accent : Theme.outline

        Icon {
            x: search.alwaysOpen ? 10 : 6
            width: 13
            height: 13
            anchors.verticalCenter: parent.verticalCenter
            name: "search"
            color: Theme.secondaryText
        }
        TextInput {
            id: input
            x: search.alwaysOpen ? 28 : 24
            width: parent.width - x - (clear.visible ? 24 : 8)
            height: parent.height
            clip: true
            verticalAlignment: TextInput.AlignVCenter
            text: search.query
            color: Theme.text
            font.pixelSize: Theme.panelText(search.alwaysOpen ? 12 : 13)
            selectByMouse: true
            selectionColor: Theme.accent
            activeFocusOnTab: search.isOpen
            onTextEdited: search.queryEdited(text)

            readonly property string spokenName: button.spokenName
            Accessible.role: Accessible.EditableText
            Accessible.name: Localizer.text("Search reminders", "Rechercher dans les rappels")

            Keys.onEscapePressed: text === "" ? search.dismissed() : search.queryEdited("")
            Keys.onReturnPressed: search.dismissed()
            Keys.onEnterPressed: search.dismissed()
            Keys.onDownPressed: search.dismissed()

            PlainText {
                anchors.fill: parent
                visible: input.text === "" && input.preeditText === ""
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                text: Localizer.text("Search", "Rechercher")
                color: Theme.secondaryText
                font: input.font
            }
        }
        Icon {
            id: clear
            visible: search.query !== ""
            anchors.right: parent.right
            anchors.rightMargin: 7
            anchors.verticalCenter: parent.verticalCenter
            width: 11
            height: 11
            name: "close"
            color: clearPointer.hovered ? Theme.text : Theme.secondaryText
            Accessible.role: Accessible.Button
            Accessible.name: Localizer.text("Clear the search", "Effacer la recherche")
            Accessible.onPressAction: search.queryEdited("")
            HoverHandler { id: clearPointer; margin: 6 }
            TapHandler { margin: 6; onTapped: search.queryEdited("") }
        }
    }

    readonly property bool inputHasFocus: input.activeFocus
}
