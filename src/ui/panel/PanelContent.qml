import QtQuick
import Kestrant

// Loads the content of the open panel. A file of its own, so that what that is made of is not read with the panel's.
Loader {
    id: loader

    /// The panel, with the models to show.
    required property Item host

    focus: true
    sourceComponent: ExpandedContent {
        panel: loader.host.panel
        reminders: loader.host.reminders
        calendar: loader.host.calendar
        quickAdd: loader.host.quickAdd
        settings: loader.host.settings
        newEvent: loader.host.newEvent
        calendarEdit: loader.host.calendarEdit
        eventDetails: loader.host.eventDetails
        reminderEdit: loader.host.reminderEdit
        history: loader.host.history
        recap: loader.host.recap
        celebration: loader.host.celebration
        announcement: loader.host.announcement
        overlays: loader.host.overlays
        isCovered: loader.host.yearReveal.isShowing
    }
}
