import QtQuick
import Kestrant

OnboardingPage {
    centered: true
    title: Localizer.text("All set", "Tout est prêt")
    explanation: Localizer.text(
        "Kestrant rests in the middle of your screen’s top edge, as above. Whatever you chose can be changed in its settings.",
        "Kestrant se tient au milieu du bord supérieur de l’écran, comme ci-dessus. Tous ces choix se changent dans ses réglages.")
}
