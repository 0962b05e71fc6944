import QtQuick
import Kestrant

// A month to pick a day from. Arrows move the day, PageUp and PageDown the month.
FocusScope {
    id: month

    required property DayPicker picker
    /// A day was chosen by the pointer.
    signal picked
    /// The day that the keyboard is on was chosen.
    signal accepted

    readonly property int cellWidth: Math.floor(width / 7)
    implicitWidth: 7 * 34
    implicitHeight: 28 + 20 + 6 * 28

    component Day: Item {
        id: day
        required property var modelData
        readonly property bool isSelected: modelData.iso === month.picker.day
        width: month.cellWidth
        height: 28

        Accessible.role: Accessible.Button
        Accessible.name: modelData.spoken
        Accessible.checkable: true
        Accessible.checked: isSelected
        Accessible.onPressAction: {
            month.picker.day = modelData.iso
            month.picked()
        }

        Rectangle {
            anchors.centerIn: parent
            width: 26
            height: 26
            radius: 13
            color: day.isSelected ? Theme.primaryFill : pointer.hovered ? Theme.controlHovered : "transparent"
        }
        Rectangle {
            anchors.centerIn: parent
            width: 30
            height: 30
            radius: 15
            color: "transparent"
            border.color: Theme.accent
            border.width: 2
            visible: day.isSelected && days.activeFocus && Appearance.showsFocus
        }
        PlainText {
            anchors.centerIn: parent
            text: day.modelData.day
            color: day.isSelected ? Theme.text : day.modelData.isToday ? Theme.accentText
                 : day.modelData.isInMonth ? Theme.text : Theme.secondaryText
            font.pixelSize: 12
            font.weight: day.isSelected || day.modelData.isToday ? Font.DemiBold : Font.Normal
        }
        HoverHandler { id: pointer }
        TapHandler {
            onTapped: {
                month.picker.day = day.modelData.iso
                days.forceActiveFocus(Qt.MouseFocusReason)
                month.picked()
            }
        }
    }

    PlainText {
        x: Math.round((month.cellWidth - 14) / 2)
        height: 28
        verticalAlignment: Text.AlignVCenter
        text: month.picker.monthTitle
        color: Theme.text
        font.pixelSize: 13
        font.weight: Font.DemiBold
    }
    Row {
        anchors.right: parent.right
        y: 2
        spacing: 2
        IconButton {
            iconName: "chevronLeft"
            spokenName: Localizer.text("Previous month", "Mois précédent")
            onClicked: month.picker.showMonth(-1)
        }
        IconButton {
            iconName: "chevronRight"
            spokenName: Localizer.text("Next month", "Mois suivant")
            onClicked: month.picker.showMonth(1)
        }
    }
    Row {
        y: 28
        Repeater {
            model: month.picker.weekdays
            delegate: PlainText {
                required property var modelData
                width: month.cellWidth
                height: 20
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                text: modelData.narrow
                color: Theme.secondaryText
                font.pixelSize: 11
                font.weight: Font.DemiBold
                Accessible.role: Accessible.StaticText
                Accessible.name: modelData.full
            }
        }
    }
    FocusScope {
        id: days
        y: 48
        width: parent.width
        height: 6 * 28
        focus: true
        activeFocusOnTab: true
        Accessible.role: Accessible.List
        Accessible.name: month.picker.monthTitle

        Keys.onLeftPressed: month.picker.moveDay(-1, 0)
        Keys.onRightPressed: month.picker.moveDay(1, 0)
        Keys.onUpPressed: month.picker.moveDay(-7, 0)
        Keys.onDownPressed: month.picker.moveDay(7, 0)
        Keys.onReturnPressed: month.accepted()
        Keys.onEnterPressed: month.accepted()
        Keys.onPressed: event => {
            if (event.key === Qt.Key_PageUp)
                month.picker.moveDay(0, -1)
            else if (event.key === Qt.Key_PageDown)
                month.picker.moveDay(0, 1)
            else
                return
            event.accepted = true
        }
        Grid {
            columns: 7
            Repeater {
                model: month.picker.days
                delegate: Day {}
            }
        }
    }
}
