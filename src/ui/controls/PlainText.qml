import QtQuick

// The text of every view. What comes from a calendar or a server is shown as it is written, never as markup.
Text {
    textFormat: Text.PlainText
    maximumLineCount: wrapMode === Text.NoWrap ? 1 : 2147483647
}
