import QtQuick
import Kestrant

// What can be done with a card, as a menu.
QtObject {
    id: root

    required property RemindersViewModel reminders
    required property OverlayHost overlays
    required property EditActions actions
    property string card
    /// The card whose menu is open; empty for none.
    readonly property string shownFor: ["card", "card.list"].includes(overlays.topmost) ? card : ""

    /// Opens the menu of a card's item at a place in it.
    function open(item, place) {
        const id = item.card.id
        const isWritable = item.card.isWritable
        const hasDate = item.card.dueText !== ""
        const entries = [
            { title: item.card.isPending ? Localizer.text("Do not complete", "Ne pas terminer")
                                         : Localizer.text("Complete", "Terminer"),
              iconName: "circle", shortcut: Localizer.text("Space", "Espace"), enabled: isWritable,
              act: () => reminders.toggleCompletion(id) },
            { title: isWritable ? Localizer.text("Edit…", "Modifier…")
                                : Localizer.text("Show details", "Afficher les détails"), iconName: "edit",
              shortcut: Localizer.text("Enter", "Entrée"), act: () => actions.editReminder(id, item) },
            { title: item.card.isFlagged ? Localizer.text("Remove flag", "Retirer le drapeau")
                                         : Localizer.text("Flag", "Signaler"),
              iconName: "flag", act: () => reminders.toggleFlag(id) },
            { title: Localizer.text("Move to list…", "Déplacer vers la liste…"), iconName: "list",
              enabled: isWritable, act: () => chooseList(id, item, place) },
            { title: hasDate ? Localizer.text("Change date…", "Modifier la date…")
                             : Localizer.text("Add date…", "Ajouter une date…"),
              iconName: "calendar", shortcut: "D", enabled: isWritable, begins: true,
              act: () => actions.editDueDate(id, item, item.belowDueDate) },
            { title: Localizer.text("Move to today", "Reporter à aujourd’hui"), iconName: "today", enabled: isWritable,
              act: () => reminders.moveToDay(id, reminders.dayNamed("today")) },
            { title: Localizer.text("Move to tomorrow", "Reporter à demain"), iconName: "arrowRight",
              enabled: isWritable, act: () => reminders.moveToDay(id, reminders.dayNamed("tomorrow")) },
            { title: Localizer.text("Move to next week", "Reporter à la semaine prochaine"), iconName: "arrowsRight",
              enabled: isWritable, act: () => reminders.moveToDay(id, reminders.dayNamed("nextWeek")) },
            { title: Localizer.text("Clear due date", "Effacer l’échéance"), iconName: "close",
              enabled: isWritable && hasDate, act: () => reminders.clearDueDate(id) },
            { title: Localizer.text("Delete", "Supprimer"), iconName: "trash",
              shortcut: Localizer.text("Del", "Suppr"), destructive: true, begins: true, enabled: isWritable,
              act: () => reminders.remove(id) }
        ]
        card = id
        overlays.present("card", "MenuPopover.qml", item, {
            at: place, alignment: "left", spokenName: item.card.title,
            entries: entries, choose: index => entries[index].act()
        })
    }
    function chooseList(id, anchor, place) {
        const lists = reminders.lists.filter(list => list.isWritable)
        const present = reminders.cards.listIdOf(id)
        overlays.present("card.list", "MenuPopover.qml", anchor, {
            at: place, alignment: "left", title: Localizer.text("Move to list", "Déplacer vers la liste"),
            entries: lists.map(list => ({ title: list.title, color: list.color, checked: list.id === present })),
            choose: index => reminders.moveToList(id, lists[index].id)
        })
    }
}
