import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property SettingsViewModel settings

    centered: true
    title: Localizer.text("Welcome to Kestrant", "Bienvenue dans Kestrant")
    explanation: Localizer.text(
        "Your reminders and your calendar at the top edge of the screen. Point at the notch and they are there; move away and they are gone.",
        "Vos rappels et votre calendrier, au bord supérieur de l’écran. Pointez l’encoche : ils sont là ; éloignez-vous : ils disparaissent.")

    Segmented {
        objectName: "onboarding.language"
        anchors.horizontalCenter: parent.horizontalCenter
        y: 8
        height: 30
        minimumCellWidth: 112
        spokenName: Localizer.text("Language", "Langue")
        choices: [{ rawValue: "en", title: "English" }, { rawValue: "fr", title: "Français" }]
        value: page.settings.language
        onChosen: rawValue => page.settings.language = rawValue
    }
}
