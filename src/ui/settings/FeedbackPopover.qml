import QtQuick
import Kestrant

// A message to the makers: what it is about, the words, and where an answer may go.
Popover {
    id: feedback

    required property FeedbackViewModel form
    readonly property var texts: form.texts

    contentWidth: 372
    contentHeight: form.didSend ? thanks.height : column.height
    isPage: true
    spokenName: texts.title
    focus: true

    Component.onCompleted: {
        form.clear()
        message.forceActiveFocus(Qt.PopupFocusReason)
    }
    Component.onDestruction: form.clear()
    Connections {
        target: feedback.form
        function onChanged() {
            if (feedback.form.didSend && !done.activeFocus)
                done.forceActiveFocus(Qt.OtherFocusReason)
        }
    }

    component Section: PlainText {
        color: Theme.secondaryText
        font.pixelSize: 11
        font.weight: Font.DemiBold
        font.letterSpacing: 0.6
        Accessible.ignored: true
    }

    Column {
        id: column
        visible: !feedback.form.didSend
        width: parent.width
        spacing: 6

        PageHeading {
            page: feedback
            text: feedback.texts.title
        }
        PlainText {
            width: parent.width
            bottomPadding: 8
            text: feedback.texts.subtitle
            color: Theme.secondaryText
            font.pixelSize: 12
            wrapMode: Text.Wrap
        }
        Segmented {
            width: parent.width
            minimumCellWidth: (feedback.contentWidth - 4) / 4
            enabled: !feedback.form.isSending
            spokenName: feedback.texts.categoryLabel
            choices: feedback.form.categories
            value: feedback.form.category
            onChosen: rawValue => feedback.form.category = rawValue
        }
        Item {
            width: parent.width
            height: 24
            Section {
                anchors.bottom: parent.bottom
                text: feedback.texts.messageSection
            }
            Section {
                anchors.bottom: parent.bottom
                anchors.right: parent.right
                text: feedback.form.messageCounter
                color: feedback.form.isMessageTooLong ? Theme.overdue : Theme.secondaryText
            }
        }
        NotesBox {
            id: message
            width: parent.width
            height: 116
            focus: true
            readOnly: feedback.form.isSending
            text: feedback.form.message
            placeholder: feedback.texts.messagePlaceholder
            onEdited: text => feedback.form.message = text
            onAccepted: feedback.form.send()
        }
        Section {
            topPadding: 8
            text: feedback.texts.emailSection
        }
        TextBox {
            width: parent.width
            enabled: !feedback.form.isSending
            isWrong: problem.visible
            placeholder: feedback.texts.emailPlaceholder
            spokenName: feedback.texts.emailSection
            onEdited: text => feedback.form.replyEmail = text
            onAccepted: feedback.form.send()
        }
        PlainText {
            id: problem
            visible: text !== ""
            text: feedback.form.emailProblem
            color: Theme.overdue
            font.pixelSize: 12
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        PlainText {
            width: parent.width
            topPadding: 4
            text: feedback.texts.privacy
            color: Theme.secondaryText
            font.pixelSize: 11
            wrapMode: Text.Wrap
        }
        FormFooter {
            width: parent.width
            topPadding: 2
            errorText: feedback.form.errorText
            acceptText: feedback.texts.send
            canAccept: feedback.form.canSend
            onAccepted: feedback.form.send()
            onCancelled: feedback.close()
        }
    }

    Column {
        id: thanks
        visible: feedback.form.didSend
        width: parent.width
        spacing: 6
        topPadding: 14

        Icon {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "check"
            color: Theme.done
            width: 28
            height: 28
        }
        PlainText {
            width: parent.width
            topPadding: 6
            horizontalAlignment: Text.AlignHCenter
            text: feedback.texts.sent
            color: Theme.text
            font.pixelSize: 14
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        PlainText {
            width: parent.width
            bottomPadding: 10
            horizontalAlignment: Text.AlignHCenter
            text: feedback.texts.thanks
            color: Theme.secondaryText
            font.pixelSize: 12
            wrapMode: Text.Wrap
        }
        PushButton {
            id: done
            anchors.horizontalCenter: parent.horizontalCenter
            text: feedback.texts.done
            primary: true
            onClicked: feedback.close()
        }
    }
}
