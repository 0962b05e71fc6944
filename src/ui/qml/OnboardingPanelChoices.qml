import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property SettingsViewModel settings
    readonly property bool both: settings.showReminders && settings.showCalendar

    title: Localizer.text("What the notch shows", "Ce que montre l’encoche")

    component Line: FormLine {
        width: (page.width - 40) / 2
        height: 38
    }

    Column {
        Line {
            label: Localizer.text("Reminders", "Rappels")
            Toggle {
                objectName: "onboarding.showReminders"
                spokenName: parent.parent.label
                checked: page.settings.showReminders
                onToggled: checked => page.settings.showReminders = checked
            }
        }
        Line {
            label: Localizer.text("Calendar", "Calendrier")
            Toggle {
                objectName: "onboarding.showCalendar"
                spokenName: parent.parent.label
                checked: page.settings.showCalendar
                onToggled: checked => page.settings.showCalendar = checked
            }
        }
        Line {
            label: Localizer.text("Reminders in the calendar", "Rappels dans le calendrier")
            enabled: page.settings.showCalendar
            opacity: enabled ? 1 : 0.45
            last: true
            Toggle {
                objectName: "onboarding.showRemindersInCalendar"
                spokenName: parent.parent.label
                checked: page.settings.showRemindersInCalendar
                onToggled: checked => page.settings.showRemindersInCalendar = checked
            }
        }
    }
    Column {
        x: (page.width + 40) / 2
        width: (page.width - 40) / 2
        Item {
            width: parent.width
            height: 38
            Segmented {
                objectName: "onboarding.order"
                anchors.verticalCenter: parent.verticalCenter
                minimumCellWidth: (parent.width - 4) / 2
                enabled: page.both
                opacity: enabled ? 1 : 0.45
                spokenName: Localizer.text("Order", "Ordre")
                choices: page.settings.moduleOrders
                value: page.settings.moduleOrder
                onChosen: rawValue => page.settings.moduleOrder = rawValue
            }
        }
        Item {
            width: parent.width
            height: 38
            Segmented {
                objectName: "onboarding.ratio"
                anchors.verticalCenter: parent.verticalCenter
                minimumCellWidth: (parent.width - 4) / 5
                enabled: page.both
                opacity: enabled ? 1 : 0.45
                spokenName: Localizer.text("Share", "Partage")
                choices: page.settings.layoutRatios
                value: page.settings.layoutRatio
                onChosen: rawValue => page.settings.layoutRatio = rawValue
            }
        }
        Item {
            width: parent.width
            height: 38
            Segmented {
                objectName: "onboarding.material"
                anchors.verticalCenter: parent.verticalCenter
                minimumCellWidth: (parent.width - 4) / 2
                spokenName: Localizer.text("Material", "Matière")
                choices: [{ rawValue: "glass", title: Localizer.text("Glass", "Verre") },
                          { rawValue: "black", title: Localizer.text("Black", "Noir") }]
                value: page.settings.material
                onChosen: rawValue => page.settings.material = rawValue
            }
        }
    }
}
