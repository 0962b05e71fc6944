import QtQuick
import Kestrant

// One choice of a group.
Item {
    id: item

    /// Gone before its choices are.
    required property ChoiceGroup group
    required property var modelData
    required property int index
    readonly property bool isChosen: group?.currentIndex === index
    readonly property bool hovered: pointer.hovered

    Accessible.role: Accessible.RadioButton
    Accessible.name: modelData.title
    Accessible.checkable: true
    Accessible.checked: isChosen
    Accessible.focusable: group?.enabled ?? false
    Accessible.focused: isChosen && (group?.hasKeyboard ?? false)
    Accessible.onPressAction: if (group.enabled) group.chosen(modelData.rawValue)

    HoverHandler { id: pointer }
    TapHandler { onTapped: item.group.chosen(item.modelData.rawValue) }
}
