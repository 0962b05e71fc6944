import QtQuick
import Kestrant

// A card in the hand: it floats under the pointer until it is let go on a day, or flies back where it came from.
Item {
    id: drag

    required property PanelViewModel panel
    required property RemindersViewModel reminders
    /// Where the days are. Must have `dropDay`, the day that a card would be let go on, and `carriedAt`, the point
    /// in it that the card is held over.
    required property CalendarModule calendar

    /// The cards. Must have `dropIndex`, the place where a card would be let go, `carriedAt` as above, `moves` and `place`.
    required property var grid

    /// Identifier of the carried reminder; empty when there is none.
    property string carried
    readonly property bool active: carried !== ""
    /// The carried card may get another day.
    readonly property bool canReschedule: image.card !== null && image.card.isWritable
    readonly property string day: active && canReschedule ? calendar.dropDay : ""

    /// The place among the cards where the card would be let go; -1 where it would stay as it is.
    readonly property int slot: active && day === "" && grid.moves(carried, grid.dropIndex) ? grid.dropIndex : -1

    property point origin
    property point grip
    property point hand

    /// Takes up the card that `item` shows, held at a point of the scene.
    function begin(item, scenePoint) {
        if (active)
            return
        home.stop()
        image.card = item.card
        image.width = item.width
        origin = item.mapToItem(drag, 0, 0)
        hand = mapFromItem(null, scenePoint.x, scenePoint.y)
        grip = Qt.point(hand.x - origin.x, hand.y - origin.y)
        image.opacity = 1
        carried = item.card.id
        calendar.carriedTime = item.card.timeText
        const frame = calendar.visible ? mapFromItem(calendar, 0, 0, calendar.width, calendar.height)
                                       : Qt.rect(0, 0, 0, 0)
        panel.beginReminderDrag(carried, frame)
        follow()
    }
    function follow() {
        calendar.carriedAt = mapToItem(calendar, hand.x, hand.y)
        grid.carriedAt = mapToItem(grid, hand.x, hand.y)
    }
    function moveTo(scenePoint) {
        if (!active)
            return
        hand = mapFromItem(null, scenePoint.x, scenePoint.y)
        follow()
    }
    /// Lets the card go where it is.
    function drop() {
        if (!active)
            return
        const id = carried
        const day = drag.day
        const asks = day === calendar.anotherDay
        const stays = asks || (day !== "" ? reminders.moveToDay(id, day) : slot >= 0 && grid.place(id, slot))
        putDown(stays)
        if (stays)
            fade.start()
        else
            home.start()
        if (asks)
            grid.editDueDateOf(id)
    }
    /// Hides the carried card, unless another one has been taken up meanwhile.
    function clear() {
        if (!active)
            image.card = null
    }
    function cancel() {
        if (!active)
            return
        putDown(false)
        home.start()
    }
    function putDown(onDay) {
        const id = carried
        carried = ""
        panel.endReminderDrag(id, onDay)
    }
    onDayChanged: if (day !== "") panel.snapReminderDrag()
    onSlotChanged: if (slot >= 0) panel.snapReminderDrag()
    onVisibleChanged: if (!visible) cancel()

    Item {
        id: image
        property var card: null
        visible: card !== null
        x: drag.hand.x - drag.grip.x
        y: drag.hand.y - drag.grip.y
        height: Theme.cardHeight
        opacity: 0

        // Over a day the card is only its circle beside the pointer, so that the tile is seen, which tells what will be.
        Item {
            id: whole
            anchors.fill: parent
            visible: opacity > 0
            opacity: drag.day === "" ? 1 : 0
            Behavior on opacity { enabled: !Theme.still; NumberAnimation { duration: Theme.hoverDuration } }

            DropShadow {
                visible: drag.active
                anchors.fill: parent
                radius: Theme.cardRadius
                kind: DropShadow.Card
            }
            Rectangle {
                anchors.fill: parent
                radius: Theme.cardRadius
                color: "#2a2b31"
                border.color: Theme.border
                border.width: 1
            }
            Loader {
                active: image.card !== null
                anchors.fill: parent
                sourceComponent: ReminderCardItem {
                    card: image.card
                    isCurrent: false
                    enabled: false
                    Accessible.ignored: true
                }
            }
        }
        Rectangle {
            visible: whole.opacity < 1
            opacity: 1 - whole.opacity
            x: drag.grip.x + 8
            y: drag.grip.y + 8
            width: 30
            height: 30
            radius: 15
            color: "#2a2b31"
            border.color: Theme.border
            CompletionCircle {
                anchors.fill: parent
                color: image.card ? image.card.listColor : "transparent"
            }
        }
    }

    SequentialAnimation {
        id: fade
        NumberAnimation { target: image; property: "opacity"; to: 0; duration: Theme.popoverDuration }
        ScriptAction { script: drag.clear() }
    }
    SequentialAnimation {
        id: home
        PropertyAnimation {
            target: drag
            property: "hand"
            to: Qt.point(drag.origin.x + drag.grip.x, drag.origin.y + drag.grip.y)
            duration: Theme.leaveDuration
            easing.type: Easing.OutCubic
        }
        ScriptAction { script: drag.clear() }
    }
}
