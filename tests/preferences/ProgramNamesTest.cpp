#include "preferences/ProgramNames.h"

#include <gtest/gtest.h>

#include <utility>

using namespace kestrant;

namespace {

TEST(ProgramNames, PutIntoTheSentencesGiveTheirFixedWordingAndTrueNamesHere) {
    const ProgramNames& home = homePlatformNames();
    const QString work = QStringLiteral("Agenda %1");
    const std::pair<TextPair, TextPair> cases[] = {
        {programTexts::connectingToCalendar(home),
         text("Connecting to Apple Calendar…", "Connexion à Apple Calendrier…")},
        {programTexts::deletesEvent(work, home),
         text("This will delete the event from Apple Calendar.",
              "Cette action supprimera définitivement l’événement d’Apple Calendrier.")},
        {programTexts::clearsDueDate(home),
         text("This clears its due date in Apple Reminders. The reminder stays in its list.",
              "L’échéance sera effacée dans Apple Rappels. Le rappel restera dans sa liste.")},
        {programTexts::firstListFailed(home),
         text("Kestrant couldn’t create the first list in Apple Reminders.",
              "Kestrant n’a pas pu créer la première liste dans Apple Rappels.")},
        {programTexts::listUnavailable(home),
         text("This Reminders list is no longer available.", "Cette liste Rappels n’est plus disponible.")},
        {programTexts::changeRejected(home),
         text("The Reminders app rejected the change.", "L’app Rappels a refusé la modification.")},
        {programTexts::openSystemSettings(home), text("Open System Settings", "Ouvrir Réglages Système")},

        {programTexts::connectingToCalendar(),
         text("Connecting to your calendars…", "Connexion à vos calendriers…")},
        {programTexts::deletesEvent(work),
         text("This will delete the event from “Agenda %1”.",
              "Cette action supprimera définitivement l’événement de « Agenda %1 ».")},
        {programTexts::deletesEvent({}),
         text("This will delete the event from your calendars.",
              "Cette action supprimera définitivement l’événement de vos calendriers.")},
        {programTexts::clearsDueDate(),
         text("This clears its due date in your reminders. The reminder stays in its list.",
              "L’échéance sera effacée dans vos rappels. Le rappel restera dans sa liste.")},
        {programTexts::openSystemSettings(), {}},
    };
    for (const auto& [actual, expected] : cases)
        EXPECT_EQ(actual, expected) << qPrintable(actual.english);
}

}  // namespace
