#pragma once

#include "foundation/Text.h"

#include <QString>

namespace kestrant {

/// What the places and programs that sentences speak of are called where the program runs, in the forms that
/// grammar asks for. Names of one's own things ("your calendars") are lower case, names of programs are
/// proper names.
struct ProgramNames {
    /// After "to", "à": where events are read.
    TextPair calendars;
    /// After "from": where an event is deleted, the French form with its "de" ("d’" before a vowel).
    TextPair fromCalendar;
    /// After "in", "dans": where reminders are.
    TextPair reminders;
    /// At the beginning of a sentence: who refuses a change of a reminder.
    TextPair remindersSubject;
    /// After "This", "Cette": one list of reminders.
    TextPair remindersList;
    /// The program in which access is allowed; empty where there is none.
    TextPair systemSettings;
};

/// Of the platform whose database of reminders and calendars the program was made after.
[[nodiscard]] const ProgramNames& homePlatformNames();

/// Of a Linux desktop, where reminders and events lie in a folder or in the desktop's own database. The
/// settings program differs from desktop to desktop and is left empty.
[[nodiscard]] const ProgramNames& linuxNames();

/// Sentences in which names stand; each takes the names to put in.
namespace programTexts {

[[nodiscard]] TextPair connectingToCalendar(const ProgramNames& names = linuxNames());
/// `calendarTitle`: the calendar that holds the event, quoted in place of the names' general word where those
/// name no program; may be empty.
[[nodiscard]] TextPair deletesEvent(const QString& calendarTitle, const ProgramNames& names = linuxNames());
[[nodiscard]] TextPair clearsDueDate(const ProgramNames& names = linuxNames());
[[nodiscard]] TextPair firstListFailed(const ProgramNames& names = linuxNames());
[[nodiscard]] TextPair listUnavailable(const ProgramNames& names = linuxNames());
[[nodiscard]] TextPair changeRejected(const ProgramNames& names = linuxNames());
/// Of the button that opens the settings program; empty where there is none.
[[nodiscard]] TextPair openSystemSettings(const ProgramNames& names = linuxNames());

}  // namespace programTexts

}  // namespace kestrant
