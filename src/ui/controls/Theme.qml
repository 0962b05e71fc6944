pragma Singleton
import QtQuick
import Kestrant

// Sizes in points. Text colours keep 4.5 : 1 on every background they are used on.
QtObject {
    readonly property bool contrast: Appearance.highContrast
    readonly property bool still: Appearance.reducedMotion

    readonly property color text: "#f4f4f6"
    readonly property color secondaryText: contrast ? "#d0d2da" : "#b2b4be"
    /// On what is pointed at or chosen.
    readonly property color secondaryTextActive: contrast ? "#f4f4f6" : "#d0d2da"
    readonly property color chipText: contrast ? "#f4f4f6" : "#c9cbd4"
    readonly property color accent: "#0a84ff"
    readonly property color accentText: "#5ac8fa"
    readonly property color primaryFill: "#0869d6"
    readonly property color nowText: "#a2e2fd"
    readonly property color link: "#7cbcff"
    readonly property color destructiveFill: "#d0332b"
    readonly property color destructiveText: "#ff9d95"
    readonly property color overdue: "#ff9087"
    readonly property color overdueActive: "#ffb8b2"
    readonly property color flag: "#ffb03a"
    readonly property color done: "#35d15c"

    readonly property color card: white(contrast ? 0.14 : 0.06)
    readonly property color cardActive: white(contrast ? 0.20 : 0.115)
    readonly property color control: white(contrast ? 0.16 : 0.085)
    readonly property color controlHovered: white(contrast ? 0.24 : 0.14)
    readonly property color controlOn: Qt.rgba(0.04, 0.52, 1, contrast ? 0.5 : 0.32)
    readonly property color field: white(contrast ? 0.12 : 0.07)
    readonly property color border: white(contrast ? 0.30 : 0.10)
    readonly property color outline: contrast ? white(0.30) : "transparent"
    readonly property color nowFill: Qt.rgba(0.35, 0.78, 0.98, contrast ? 0.22 : 0.10)
    /// The elapsed part, drawn over the fill.
    readonly property color nowElapsed: Qt.rgba(0.35, 0.78, 0.98, contrast ? 0.22 : 0.13)
    readonly property color targetFill: Qt.rgba(0.04, 0.52, 1, contrast ? 0.45 : 0.28)
    /// The same over the rows of a whole day, which are read on it.
    readonly property color targetWash: Qt.rgba(0.04, 0.52, 1, contrast ? 0.3 : 0.12)
    readonly property color separator: white(contrast ? 0.30 : 0.08)
    readonly property color popover: "#1a1b21"
    /// A group of rows on a popover.
    readonly property color group: "#202128"
    /// A line to write on, sunk into a popover.
    readonly property color well: "#121318"
    readonly property color panel: "#101116"

    readonly property int gap: 8
    readonly property int margin: 16
    readonly property int cardHeight: 72
    readonly property int cardRadius: 14
    readonly property int popoverRadius: 18
    readonly property int toolbarHeight: 44
    /// The heading of a day, one of its rows, and the line of the present between two of them.
    readonly property int headingHeight: 24
    readonly property int rowHeight: 28
    readonly property int nowLineHeight: 16

    readonly property int panelDuration: still ? 0 : 280
    readonly property int popoverDuration: still ? 0 : 160
    readonly property int leaveDuration: still ? 0 : 200
    readonly property int hoverDuration: still ? 0 : 120

    /// A size of text on the panel, which has as much room as it has.
    function panelText(size) {
        return Math.round(size * Math.min(1.2, Appearance.textScale))
    }
    /// The colour of words that say this about a reminder.
    function understood(kind) {
        return ({ repeat: "#7fe0d6", list: "#6fe08c", priority: "#ffbe5c" })[kind] ?? "#7cd4fb"
    }
    /// An opacity in the steps that can be seen. The renderer takes what differs by less than a hundred thousandth for the
    /// same: a fade that slows down would end a little below 1, with letters drawn otherwise than without a fade.
    function opacity(value) {
        return Math.round(256 * value) / 256
    }
    function white(alpha) {
        return Qt.rgba(1, 1, 1, alpha)
    }
}
