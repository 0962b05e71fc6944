import QtQuick
import QtQuick.Window
import Kestrant

// A scrolling area (`contentHeight`) that follows the keyboard focus and fades where there is more.
Flickable {
    id: area

    property color ground: Theme.popover

    contentWidth: width
    clip: true
    interactive: contentHeight > height
    boundsBehavior: Flickable.StopAtBounds

    readonly property Item focusedItem: Window.activeFocusItem
    onFocusedItemChanged: if (Appearance.showsFocus) showItem(focusedItem)

    /// Scrolls no further than it takes to see an item, with room for the line around it.
    function showItem(item) {
        for (let above = item; above !== area.contentItem; above = above.parent) {
            if (!above)
                return
        }
        const top = item.mapToItem(contentItem, 0, 0).y - 12
        // The end includes the last words below the last control.
        const bottom = top + item.height + (contentHeight - top - item.height < 64 ? 64 : 24)
        if (top < contentY)
            contentY = Math.max(0, top)
        else if (bottom > contentY + height)
            contentY = Math.min(contentHeight - height, bottom - height)
    }

    Behavior on contentY {
        enabled: !Theme.still && !area.moving
        NumberAnimation { duration: Theme.popoverDuration; easing.type: Easing.OutCubic }
    }

    component Fade: Rectangle {
        property bool upper: false
        parent: area
        z: 1
        width: area.width
        height: 20
        gradient: Gradient {
            GradientStop { position: 0; color: upper ? area.ground : Qt.alpha(area.ground, 0) }
            GradientStop { position: 1; color: upper ? Qt.alpha(area.ground, 0) : area.ground }
        }
    }
    Fade {
        upper: true
        visible: !area.atYBeginning
    }
    Fade {
        visible: !area.atYEnd
        y: area.height - height
    }
    Rectangle {
        parent: area
        z: 2
        visible: area.interactive
        x: area.width - width
        y: area.visibleArea.yPosition * area.height
        width: 3
        height: Math.max(24, area.visibleArea.heightRatio * area.height)
        radius: 1.5
        color: Theme.white(Theme.contrast ? 0.5 : 0.18)
    }
}
