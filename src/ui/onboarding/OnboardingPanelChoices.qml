import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property SettingsViewModel settings
    readonly property bool both: settings.showReminders && settings.showCalendar

    title: Localizer.text("What the notch shows", "Ce que montre l’encoche")
    explanation: Localizer.text("The picture above follows each of your choices.",
                                "L’image ci\u2011dessus suit chacun de vos choix.")

    component SwitchedLine: ToggleLine {
        width: 308
        height: 42
    }
    component SplitLine: SegmentedLine {
        width: 308
        height: 42
    }
    component Line: FormLine {
        width: 308
        height: 42
    }

    Column {
        SwitchedLine {
            label: Localizer.text("Reminders", "Rappels")
            controlName: "onboarding.showReminders"
            checked: page.settings.showReminders
            onToggled: checked => page.settings.showReminders = checked
        }
        SwitchedLine {
            label: Localizer.text("Calendar", "Calendrier")
            controlName: "onboarding.showCalendar"
            checked: page.settings.showCalendar
            onToggled: checked => page.settings.showCalendar = checked
        }
        SwitchedLine {
            label: Localizer.text("Reminders in the calendar", "Rappels dans le calendrier")
            enabled: page.settings.showCalendar
            opacity: enabled ? 1 : 0.45
            last: true
            controlName: "onboarding.showRemindersInCalendar"
            checked: page.settings.showRemindersInCalendar
            onToggled: checked => page.settings.showRemindersInCalendar = checked
        }
    }
    Column {
        x: page.width - 308
        SplitLine {
            label: Localizer.text("First", "D’abord")
            enabled: page.both
            opacity: enabled ? 1 : 0.45
            controlName: "onboarding.order"
            minimumCellWidth: 92
            choices: [{ rawValue: "remindersFirst", title: Localizer.text("Reminders", "Rappels") },
                      { rawValue: "calendarFirst", title: Localizer.text("Calendar", "Calendrier") }]
            value: page.settings.moduleOrder
            onChosen: rawValue => page.settings.moduleOrder = rawValue
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
        SplitLine {
            label: Localizer.text("Material", "Matière")
            last: true
            controlName: "onboarding.material"
            minimumCellWidth: 92
            choices: [{ rawValue: "glass", title: Localizer.text("Glass", "Verre") },
                      { rawValue: "black", title: Localizer.text("Black", "Noir") }]
            value: page.settings.material
            onChosen: rawValue => page.settings.material = rawValue
        }
    }
}
