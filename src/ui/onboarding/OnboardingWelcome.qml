import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property SettingsViewModel settings

    title: Localizer.text("Welcome to Kestrant", "Bienvenue dans Kestrant")
    explanation: Localizer.text("Reminders and calendar at the top edge of the screen.",
                                "Rappels et calendrier au bord supérieur de l’écran.")

    Segmented {
        objectName: "onboarding.language"
        x: page.width - width
        y: -parent.y
        height: 32
        minimumCellWidth: 90
        spokenName: Localizer.text("Language", "Langue")
        choices: [{ rawValue: "en", title: "English" }, { rawValue: "fr", title: "Français" }]
        value: page.settings.language
        onChosen: rawValue => page.settings.language = rawValue
    }
    Row {
        y: 6
        spacing: 8
        OnboardingPoint {
            iconName: "mouse"
            title: page.settings.requiresClick ? Localizer.text("Click and it is there", "Cliquez, elle est là")
                                               : Localizer.text("Point and it is there", "Pointez, elle est là")
            explanation: Localizer.text("Move away and it is gone.", "Éloignez-vous, elle disparaît.")
        }
        OnboardingPoint {
            iconName: "calendar"
            title: Localizer.text("Your own calendars", "Vos propres calendriers")
            explanation: Localizer.text("It writes where you keep them.", "Elle écrit là où vous les gardez.")
        }
        OnboardingPoint {
            iconName: "eye"
            title: Localizer.text("Yours alone", "Rien qu’à vous")
            explanation: page.settings.canCount
                ? Localizer.text("No account. Only an anonymous count is sent; the settings turn it off.",
                                 "Sans compte. Seul un décompte anonyme est envoyé\u00a0; les réglages le coupent.")
                : Localizer.text("No account; nothing leaves unasked.", "Sans compte\u00a0; rien ne part sans vous.")
        }
    }
}
