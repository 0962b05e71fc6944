import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property SettingsViewModel settings
    readonly property bool both: settings.showReminders && settings.showCalendar

    title: Localizer.text("What the notch shows", "Ce que montre l’encoche")
    explanation: Localizer.text("The picture above follows each of your choices.",
                                "L’image ci\u2011dessus suit chacun de vos choix.")

    component Line: FormLine {
        width: 308
        height: 42
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
        x: page.width - 308
        Line {
            label: Localizer.text("First", "D’abord")
            enabled: page.both
            opacity: enabled ? 1 : 0.45
            Segmented {
                objectName: "onboarding.order"
                minimumCellWidth: 92
                spokenName: parent.parent.label
                choices: [{ rawValue: "remindersFirst", title: Localizer.text("Reminders", "Rappels") },
                          { rawValue: "calendarFirst", title: Localizer.text("Calendar", "Calendrier") }]
                value: page.settings.moduleOrder
                onChosen: rawValue => page.settings.moduleOrder = rawValue
            }
        }
        Line {
            label: Localizer.text("Share", "Partage")
            enabled: page.both
            opacity: enabled ? 1 : 0.45
            RatioChoice {
                objectName: "onboarding.ratio"
                spokenName: parent.parent.label
                choices: page.settings.layoutRatios
                value: page.settings.layoutRatio
                onChosen: rawValue => page.settings.layoutRatio = rawValue
            }
        }
        Line {
            label: Localizer.text("Material", "Matière")
            last: true
            Segmented {
                objectName: "onboarding.material"
                minimumCellWidth: 92
                spokenName: parent.parent.label
                choices: [{ rawValue: "glass", title: Localizer.text("Glass", "Verre") },
                          { rawValue: "black", title: Localizer.text("Black", "Noir") }]
                value: page.settings.material
                onChosen: rawValue => page.settings.material = rawValue
            }
        }
    }
}
