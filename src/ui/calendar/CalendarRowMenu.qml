import QtQuick
import Kestrant

// What can be done with a row of the calendar, as a menu.
QtObject {
    required property OverlayHost overlays
    required property EditActions actions

    /// Opens the menu of a row's item at a place in it. The rows may have changed by the time an entry is chosen.
    function open(item, row, place) {
        const isReminder = item.row.isReminder
        const isWritable = actions.canChangeRow(row)
        const entries = [
            { title: isWritable || !isReminder ? Localizer.text("Edit details", "Modifier les détails")
                                               : Localizer.text("Show details", "Afficher les détails"), iconName: "edit",
              shortcut: Localizer.text("Enter", "Entrée"), enabled: isWritable || isReminder, act: () => actions.editRow(row, item) },
            { title: isReminder ? Localizer.text("Remove reminder from calendar", "Retirer le rappel du calendrier")
                                : Localizer.text("Delete event", "Supprimer l’événement"),
              iconName: isReminder ? "calendarMinus" : "trash",
              shortcut: Localizer.text("Del", "Suppr"), destructive: !isReminder, enabled: isWritable,
              act: () => actions.removeRow(row, item) }
        ]
        if (!isReminder)
            entries.splice(1, 0, { title: Localizer.text("Show details", "Afficher les détails"), iconName: "eye",
                                   shortcut: Localizer.text("Space", "Espace"),
                                   act: () => actions.showDetails(row, item) })
        if (item.row.canBeJoined)
            entries.push({ title: Localizer.text("Join", "Rejoindre"), iconName: "video", begins: true,
                           act: () => actions.join(row) })
        if (isReminder)
            entries.unshift({ title: item.isCompleting ? Localizer.text("Do not complete", "Ne pas terminer")
                                                       : Localizer.text("Complete", "Terminer"),
                              iconName: "circle", shortcut: Localizer.text("Space", "Espace"), enabled: isWritable,
                              act: () => actions.toggleRow(row) })
        overlays.present("calendarRow", "MenuPopover.qml", item, {
            at: place, alignment: "left", spokenName: item.row.title,
            entries: entries, choose: index => entries[index].act()
        })
    }
}
