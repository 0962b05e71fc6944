import QtQuick
import Kestrant

// A round button with any of: a colour dot, an icon, a word, a count, a chevron, a cross that takes it back.
Pressable {
    id: chip

    property string text
    /// A shorter text for where there is less room.
    property string shownText: text
    property string iconName
    /// The icon stands for the word.
    property bool compact: false
    property color dotColor: "transparent"
    property int count: -1
    property color countColor: Theme.secondaryText
    /// The icon stands beside the word.
    property bool showsIcon: false
    property bool showsChevron: false
    property bool showsCross: false
    property bool checkable: false
    property bool checked: false
    property int maximumWidth: 1000
    property color color: Theme.control
    property color textColor: Theme.chipText
    property string tip
    property int pixelSize: 12
    /// Offers something that is not there yet.
    property bool outlined: false
    /// Drawn as a warning.
    property bool warns: false
    signal crossClicked

    readonly property int sidePadding: 10
    /// The chip's width with its full word, and with its icon instead.
    readonly property real fullWidth: Math.ceil(2 * sidePadding + measure.advanceWidth + label.besides)
    readonly property real compactWidth: 2 * sidePadding + 14 + label.besides

    function tap(place) {
        const x = cross.mapFromItem(chip, place).x
        if (cross.visible && x >= -5 && x <= cross.width + 5)
            crossClicked()
        else
            clicked()
    }

    spokenName: text
    height: 24
    implicitWidth: Math.min(maximumWidth, Math.ceil(row.implicitWidth) + 2 * sidePadding)
    width: implicitWidth

    Accessible.role: checkable ? Accessible.CheckBox : Accessible.Button
    Accessible.name: count >= 0 ? spokenName + ", " + count : spokenName
    Accessible.checkable: checkable
    Accessible.checked: checked
    Accessible.onToggleAction: if (enabled) clicked()

    Keys.onPressed: event => {
        if (showsCross && (event.key === Qt.Key_Delete || event.key === Qt.Key_Backspace)) {
            crossClicked()
            event.accepted = true
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: chip.checked ? Theme.controlOn : chip.hovered ? Theme.controlHovered
             : chip.outlined ? Theme.white(0) : chip.color
        border.color: Theme.contrast ? Theme.outline : Theme.white(0.14)
        border.width: Theme.contrast || chip.outlined ? 1 : 0
        Behavior on color { enabled: !Theme.still; ColorAnimation { duration: Theme.hoverDuration } }
    }

    Row {
        id: row
        x: chip.sidePadding
        height: parent.height
        spacing: 5

        Rectangle {
            id: dot
            visible: chip.dotColor.a > 0
            width: 8
            height: 8
            radius: 4
            anchors.verticalCenter: parent.verticalCenter
            color: chip.dotColor
        }
        Icon {
            id: icon
            visible: name !== ""
            name: chip.compact || chip.text === "" || chip.showsIcon ? chip.iconName : ""
            width: 14
            height: 14
            strokeWidth: 1.4
            anchors.verticalCenter: parent.verticalCenter
            color: chip.checked ? Theme.text : chip.textColor
        }
        PlainText {
            id: label
            readonly property real room: chip.maximumWidth - 2 * chip.sidePadding - besides
            // A word of which nothing could be read is left out.
            visible: text !== "" && !chip.compact && (implicitWidth <= room || room >= 34)
            // The word alone is shortened, never what stands beside it.
            width: Math.min(implicitWidth, Math.max(0, room))
            readonly property real besides: (dot.visible ? 13 : 0) + (chip.showsIcon ? 19 : 0)
                                            + (number.visible ? number.implicitWidth + 5 : 0)
                                            + (warning.visible ? 17 : 0)
                                            + (chevron.visible ? 15 : 0) + (cross.visible ? 15 : 0)
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            text: chip.shownText
            elide: Text.ElideRight
            color: chip.checked ? Theme.text : chip.textColor
            font.pixelSize: chip.pixelSize
            font.weight: Font.Medium
        }
        PlainText {
            id: number
            visible: chip.count > 0
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            text: chip.count
            color: chip.checked ? Theme.text : chip.countColor
            font.pixelSize: chip.pixelSize
            font.weight: Font.Medium
        }
        Icon {
            id: warning
            visible: chip.warns
            name: "warning"
            width: 12
            height: 12
            strokeWidth: 1.3
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.flag
        }
        Icon {
            id: chevron
            visible: chip.showsChevron
            name: "chevronDown"
            width: 10
            height: 10
            strokeWidth: 1.3
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondaryText
        }
        Icon {
            id: cross
            visible: chip.showsCross
            name: "close"
            width: 10
            height: 10
            strokeWidth: 1.3
            anchors.verticalCenter: parent.verticalCenter
            color: crossPointer.hovered ? Theme.text : chip.textColor
            HoverHandler { id: crossPointer; margin: 5 }
        }
    }

    TextMetrics {
        id: measure
        font: label.font
        text: chip.text
    }
}
