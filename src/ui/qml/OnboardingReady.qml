import QtQuick
import Kestrant

OnboardingPage {
    id: page

    required property SettingsViewModel settings

    centered: true
    title: Localizer.text("All set", "Tout est prêt")
    explanation: Localizer.text(
        "Kestrant rests in the middle of your screen’s top edge, as above. Whatever you chose can be changed in its settings.",
        "Kestrant se tient au milieu du bord supérieur de l’écran, comme ci-dessus. Tous ces choix se changent dans ses réglages.")

    Text {
        visible: page.settings.dataStore.needsRestart
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: Localizer.text("It starts once more to open what you chose for reminders and events.",
                             "Il redémarre pour ouvrir ce que vous avez choisi pour les rappels et les événements.")
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: 12
    }
}
