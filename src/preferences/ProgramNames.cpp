#include "preferences/ProgramNames.h"

namespace kestrant {
namespace {

/// A sentence with a name in the place of "%1".
TextPair with(const char* english, const char* french, const TextPair& name) {
    return {QString::fromUtf8(english).arg(name.english), QString::fromUtf8(french).arg(name.french)};
}

}  // namespace

const ProgramNames& homePlatformNames() {
    static const ProgramNames names{
        .calendars = text("Apple Calendar", "Apple Calendrier"),
        .fromCalendar = text("Apple Calendar", "d’Apple Calendrier"),
        .reminders = text("Apple Reminders", "Apple Rappels"),
        .remindersSubject = text("The Reminders app", "L’app Rappels"),
        .remindersList = text("Reminders list", "liste Rappels"),
        .systemSettings = text("System Settings", "Réglages Système"),
    };
    return names;
}

const ProgramNames& linuxNames() {
    static const ProgramNames names{
        .calendars = text("your calendars", "vos calendriers"),
        .fromCalendar = {},
        .reminders = text("your reminders", "vos rappels"),
        .remindersSubject = text("The place where your reminders are kept", "L’emplacement de vos rappels"),
        .remindersList = text("list of reminders", "liste de rappels"),
        .systemSettings = {},
    };
    return names;
}

namespace programTexts {

TextPair connectingToCalendar(const ProgramNames& names) {
    return with("Connecting to %1…", "Connexion à %1…", names.calendars);
}

TextPair deletesEvent(const QString& calendarTitle, const ProgramNames& names) {
    TextPair place = names.fromCalendar;
    if (place == TextPair{}) {
        place = calendarTitle.isEmpty()
                    ? TextPair{names.calendars.english, QStringLiteral("de ") + names.calendars.french}
                    : TextPair{QStringLiteral("“%1”").arg(calendarTitle),
                               QStringLiteral("de « %1 »").arg(calendarTitle)};
    }
    return with("This will delete the event from %1.",
                "Cette action supprimera définitivement l’événement %1.", place);
}

TextPair clearsDueDate(const ProgramNames& names) {
    return with("This clears its due date in %1. The reminder stays in its list.",
                "L’échéance sera effacée dans %1. Le rappel restera dans sa liste.", names.reminders);
}

TextPair firstListFailed(const ProgramNames& names) {
    return with("Kestrant couldn’t create the first list in %1.",
                "Kestrant n’a pas pu créer la première liste dans %1.", names.reminders);
}

TextPair listUnavailable(const ProgramNames& names) {
    return with("This %1 is no longer available.", "Cette %1 n’est plus disponible.", names.remindersList);
}

TextPair changeRejected(const ProgramNames& names) {
    return with("%1 rejected the change.", "%1 a refusé la modification.", names.remindersSubject);
}

TextPair openSystemSettings(const ProgramNames& names) {
    if (names.systemSettings == TextPair{})
        return {};
    return with("Open %1", "Ouvrir %1", names.systemSettings);
}

}  // namespace programTexts

}  // namespace kestrant
