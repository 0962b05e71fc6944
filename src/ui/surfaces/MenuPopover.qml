import QtQuick
import Kestrant

// A list to choose one entry of: {title, checked, color, iconName, shortcut, destructive, enabled, begins} each; one
// that begins a group has a line above it. As a page it has a way back and the width it is given.
Popover {
    id: menu

    property var entries: []
    property string title
    property var choose: null
    property int current: -1
    /// Where the pointer was when the menu appeared below it: until it moves it has chosen nothing.
    property var restingPoint: null

    padding: isPage ? 16 : 6
    contentWidth: Math.min(360, Math.max(148, widest))
    contentHeight: scroll.y + Math.min(rows.height, 428, Math.max(180, overlays.roomHeight() / zoom - 120))
    spokenName: title
    property real widest: 0

    /// Hangs below what it opened from, also where that is a popover.
    readonly property bool dropsDown: true
    readonly property bool hasChecks: entries.some(entry => entry.checked !== undefined)
    readonly property real leading: hasChecks ? 30 : entries.some(entry => entry.iconName) ? 34 : 12

    function pointAt(index, place) {
        if (restingPoint === null)
            restingPoint = Qt.point(place.x, place.y)
        else if (restingPoint.x !== place.x || restingPoint.y !== place.y)
            current = index
    }
    function pick(index) {
        if (entries[index].enabled === false)
            return
        const action = choose
        close()
        action(index)
    }
    // From the entry in force, else from the first or the last.
    function begin(distance) {
        makeCurrent(entries.findIndex(entry => entry.checked === true))
        if (current < 0) {
            current = distance > 0 ? -1 : 0
            step(distance)
        }
    }
    function step(distance) {
        let next = current
        for (let tries = 0; tries < entries.length; ++tries) {
            next = (next + distance + entries.length) % entries.length
            if (entries[next].enabled !== false)
                break
        }
        makeCurrent(next)
    }
    function makeCurrent(index) {
        current = index
        const item = entryItems.itemAt(index)
        if (item)
            scroll.showItem(item)
    }

    focus: true
    Component.onCompleted: {
        if (Appearance.showsFocus)
            begin(1)
    }
    Keys.onDownPressed: current < 0 ? begin(1) : step(1)
    Keys.onUpPressed: current < 0 ? begin(-1) : step(-1)
    Keys.onPressed: event => {
        event.accepted = true
        if (event.key === Qt.Key_Home) {
            current = -1
            step(1)
        } else if (event.key === Qt.Key_End) {
            current = 0
            step(-1)
        } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter || event.key === Qt.Key_Space) {
            if (current >= 0)
                pick(current)
        } else if (event.text !== "" && event.text.trim() !== "") {
            const wanted = event.text.toLowerCase()
            for (let offset = 1; offset <= entries.length; ++offset) {
                const index = (current + offset) % entries.length
                if (entries[index].title.toLowerCase().startsWith(wanted)) {
                    makeCurrent(index)
                    break
                }
            }
        } else {
            event.accepted = false
        }
    }

    Loader {
        id: back
        active: menu.isPage
        width: parent.width
        sourceComponent: PageHeading { page: menu; text: menu.spokenName }
    }
    ScrollArea {
        id: scroll
        anchors.fill: parent
        anchors.topMargin: menu.isPage ? back.height + 8 : 0
        contentHeight: rows.height
        Column {
            id: rows
            width: menu.contentWidth

            PlainText {
                visible: menu.title !== ""
                height: visible ? 26 : 0
                leftPadding: 10
                verticalAlignment: Text.AlignVCenter
                text: menu.title
                color: Theme.secondaryText
                font.pixelSize: 11
                font.weight: Font.DemiBold
            }
            Repeater {
                id: entryItems
                model: menu.entries
                delegate: Item {
                    id: row
                    required property var modelData
                    required property int index
                    readonly property bool usable: modelData.enabled !== false
                    readonly property bool isCurrent: menu.current === index && usable
                    readonly property color ink: !usable ? Theme.white(0.35)
                                               : modelData.destructive && !isCurrent ? Theme.destructiveText : Theme.text

                    readonly property int above: modelData.begins ? 9 : 0

                    width: menu.contentWidth
                    height: 28 + above
                    Component.onCompleted: menu.widest = Math.max(menu.widest, Math.ceil(
                        menu.leading + words.implicitWidth + (shortcut.visible ? shortcut.implicitWidth + 28 : 0)
                        + (dot.visible ? 16 : 0) + 14))

                    Accessible.role: menu.hasChecks ? Accessible.RadioButton : Accessible.MenuItem
                    Accessible.name: modelData.title
                    Accessible.checkable: menu.hasChecks
                    Accessible.checked: modelData.checked === true
                    Accessible.focusable: usable
                    Accessible.focused: isCurrent
                    Accessible.onPressAction: menu.pick(index)

                    Rectangle {
                        visible: row.above > 0
                        x: 10
                        y: 4
                        width: parent.width - 20
                        height: 1
                        color: Theme.separator
                    }
                    Rectangle {
                        anchors.fill: parent
                        anchors.topMargin: row.above
                        radius: 10
                        color: !row.isCurrent ? "transparent"
                             : row.modelData.destructive ? Theme.destructiveFill : Theme.primaryFill
                    }
                    Icon {
                        visible: row.modelData.checked === true
                        x: 9
                        width: 14
                        height: 14
                        anchors.verticalCenter: parent.verticalCenter
                        anchors.verticalCenterOffset: row.above / 2
                        name: "check"
                        strokeWidth: 1.75
                        color: row.ink
                    }
                    Icon {
                        visible: name !== ""
                        x: 10
                        width: 16
                        height: 16
                        anchors.verticalCenter: parent.verticalCenter
                        anchors.verticalCenterOffset: row.above / 2
                        name: row.modelData.iconName ?? ""
                        strokeWidth: 1.4
                        color: row.ink
                    }
                    Rectangle {
                        id: dot
                        visible: row.modelData.color !== undefined
                        x: menu.leading
                        width: 9
                        height: 9
                        radius: 4.5
                        anchors.verticalCenter: parent.verticalCenter
                        anchors.verticalCenterOffset: row.above / 2
                        color: row.modelData.color ?? "transparent"
                        border.color: row.isCurrent ? Theme.white(0.7) : "transparent"
                        border.width: row.isCurrent ? 1 : 0
                    }
                    PlainText {
                        id: words
                        x: menu.leading + (row.modelData.color !== undefined ? 16 : 0)
                        width: Math.min(implicitWidth, parent.width - x - 12 - (row.modelData.shortcut ? shortcut.width + 16 : 0))
                        y: row.above
                        height: parent.height - y
                        verticalAlignment: Text.AlignVCenter
                        text: row.modelData.title
                        elide: Text.ElideRight
                        color: row.ink
                        font.pixelSize: 13
                    }
                    PlainText {
                        id: shortcut
                        visible: text !== ""
                        anchors.right: parent.right
                        anchors.rightMargin: 12
                        y: row.above
                        height: parent.height - y
                        verticalAlignment: Text.AlignVCenter
                        text: row.modelData.shortcut ?? ""
                        color: row.isCurrent ? Theme.white(0.85) : Theme.secondaryText
                        font.pixelSize: 11
                    }
                    HoverHandler {
                        onPointChanged: if (hovered) menu.pointAt(row.index, point.scenePosition)
                    }
                    TapHandler { onTapped: menu.pick(row.index) }
                }
            }
        }
    }
}
