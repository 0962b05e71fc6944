import QtQuick
import Kestrant

OnboardingPage {
    title: Localizer.text("All set", "Tout est prêt")
    explanation: Localizer.text("Kestrant rests in the middle of the top edge. Four shortcuts to remember:",
                                "Kestrant se tient au milieu du bord supérieur. Quatre raccourcis à retenir\u00a0:")

    Row {
        y: 6
        spacing: 8
        OnboardingPoint {
            width: 154
            keys: ["Ctrl", "N"]
            title: Localizer.text("New reminder", "Nouveau rappel")
            explanation: Localizer.text("while it is open", "quand elle est ouverte")
        }
        OnboardingPoint {
            width: 154
            keys: ["Ctrl", "F"]
            title: Localizer.text("Search", "Rechercher")
            explanation: Localizer.text("in the titles of reminders", "dans les titres des rappels")
        }
        OnboardingPoint {
            width: 154
            keys: ["Ctrl", "Z"]
            title: Localizer.text("Undo", "Annuler")
            explanation: Localizer.text("the last change", "le dernier changement")
        }
        OnboardingPoint {
            width: 154
            keys: ["Ctrl", "R"]
            title: Localizer.text("Recap", "Bilan")
            explanation: Localizer.text("what you completed", "ce que vous avez terminé")
        }
    }
}
