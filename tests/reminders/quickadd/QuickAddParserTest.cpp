#include "reminders/quickadd/QuickAddParser.h"

#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <random>
#include <string>

namespace kestrant {
namespace {

using Kind = QuickAddPiece::Kind;
using testing::ElementsAre;

/// Friday 27 March 2026, noon, in Paris.
QuickAddContext context(Language language) {
    QuickAddContext result{.now = at("Europe/Paris", {2026, 3, 27}, {12, 0}),
                           .calendar = ZoneCalendar(*TimeZone::named("Europe/Paris")),
                           .language = language};
    for (const char* title : {"Groceries", "Home", "Home office", "Été à la plage", "C++"})
        result.lists.push_back({.id = QString::fromUtf8(title).toLower(), .title = QString::fromUtf8(title)});
    return result;
}

struct Case {
    const char* line;
    const char* title;
    /// "2026-03-28", or nothing.
    const char* day = "";
    const char* time = "";
};

template <std::size_t count>
void expectAll(const Case (&cases)[count], Language language) {
    static_assert(count >= 120);
    const QuickAddContext present = context(language);
    for (const Case& each : cases) {
        const QuickAddLine read = parseQuickAdd(QString::fromUtf8(each.line), present);
        const std::string understood =
            (read.title + QStringLiteral(" | ") + (read.day ? read.day->toString(Qt::ISODate) : QString()) +
             QStringLiteral(" | ") + (read.time ? read.time->toString(QStringLiteral("HH:mm")) : QString()))
                .toStdString();
        EXPECT_EQ(understood, std::string(each.title) + " | " + each.day + " | " + each.time) << each.line;
        if (*each.day == '\0') {
            EXPECT_TRUE(read.pieces.empty()) << each.line;
        }
    }
}

TEST(QuickAddParser, UnderstandsEnglishAndLeavesWhatMayBeMeantOtherwise) {
    const Case cases[] = {
        // Days by name
        {"Call mum today", "Call mum", "2026-03-27"},
        {"today call mum", "call mum", "2026-03-27"},
        {"Call mum tomorrow", "Call mum", "2026-03-28"},
        {"Call mum TOMORROW", "Call mum", "2026-03-28"},
        {"Tomorrow: call mum", "call mum", "2026-03-28"},
        {"Call mum, tomorrow", "Call mum", "2026-03-28"},
        {"Call mum (tomorrow)", "Call mum", "2026-03-28"},
        {"Call mum tomorrow.", "Call mum", "2026-03-28"},
        {"Call tomorrow the plumber", "Call the plumber", "2026-03-28"},
        {"tommorow buy oat milk", "buy oat milk", "2026-03-28"},
        {"pay rent tmrw", "pay rent", "2026-03-28"},
        {"visit Bob the day after tomorrow", "visit Bob", "2026-03-29"},
        {"pay rent by tomorrow", "pay rent", "2026-03-28"},
        {"pay rent due tomorrow", "pay rent", "2026-03-28"},
        {"bake a cake for tomorrow", "bake a cake", "2026-03-28"},
        // Weekdays
        {"Call mum monday", "Call mum", "2026-03-30"},
        {"Call mum on Monday", "Call mum", "2026-03-30"},
        {"Call mum friday", "Call mum", "2026-04-03"},
        {"Call mum this friday", "Call mum", "2026-03-27"},
        {"Call mum this sunday", "Call mum", "2026-03-29"},
        {"Call mum next friday", "Call mum", "2026-04-03"},
        {"Call mum next saturday", "Call mum", "2026-04-04"},
        {"next friday 18:00 drinks", "drinks", "2026-04-03", "18:00"},
        {"Friday dinner with Ann", "dinner with Ann", "2026-04-03"},
        {"dinner friday with Ann", "dinner with Ann", "2026-04-03"},
        {"send report by wednesday", "send report", "2026-04-01"},
        {"send report before thursday", "send report", "2026-04-02"},
        {"send report fri", "send report", "2026-04-03"},
        {"standup tue 9:30", "standup", "2026-03-31", "09:30"},
        {"standup mon 9am", "standup", "2026-03-30", "09:00"},
        {"gym on sat", "gym", "2026-03-28"},
        {"gym next sat", "gym", "2026-04-04"},
        {"thurs: dentist", "dentist", "2026-04-02"},
        {"friday - call Bob", "call Bob", "2026-04-03"},
        // Dates
        {"dentist march 30", "dentist", "2026-03-30"},
        {"dentist March 30th", "dentist", "2026-03-30"},
        {"dentist on the 30th of march", "dentist", "2026-03-30"},
        {"dentist 30 march", "dentist", "2026-03-30"},
        {"dentist march 5", "dentist", "2027-03-05"},
        {"dentist may 5", "dentist", "2026-05-05"},
        {"dentist 1 May with Ann", "dentist with Ann", "2026-05-01"},
        {"dentist on may 5th, 2027", "dentist", "2027-05-05"},
        {"april 3 2027 renew passport", "renew passport", "2027-04-03"},
        {"renew passport Apr 3", "renew passport", "2026-04-03"},
        {"renew passport sept 3", "renew passport", "2026-09-03"},
        {"monday march 30 dentist", "dentist", "2026-03-30"},
        {"dentist Monday, March 30th at 10am", "dentist", "2026-03-30", "10:00"},
        {"dentist monday the 30th", "dentist", "2026-03-30"},
        {"pay rent on the 5th", "pay rent", "2026-04-05"},
        {"pay rent by the 1st", "pay rent", "2026-04-01"},
        {"party feb 29", "party", "2028-02-29"},
        {"taxes 4/15", "taxes", "2026-04-15"},
        {"taxes 15/4", "taxes", "2026-04-15"},
        {"taxes on 3/4", "taxes", "2027-03-04"},
        {"taxes 4/15/2027", "taxes", "2027-04-15"},
        {"taxes 4/15/27", "taxes", "2027-04-15"},
        {"taxes 2026-04-15", "taxes", "2026-04-15"},
        {"taxes 15.04.2026", "taxes", "2026-04-15"},
        {"plant tomatoes in may", "plant tomatoes", "2026-05-01"},
        {"plant tomatoes in March 2027", "plant tomatoes", "2027-03-01"},
        // From now
        {"water plants in 3 days", "water plants", "2026-03-30"},
        {"water plants in a week", "water plants", "2026-04-03"},
        {"water plants in two weeks", "water plants", "2026-04-10"},
        {"water plants in a fortnight", "water plants", "2026-04-10"},
        {"in 2 months check the boiler", "check the boiler", "2026-05-27"},
        {"check the boiler in a year", "check the boiler", "2027-03-27"},
        {"3 weeks from now send invoice", "send invoice", "2026-04-17"},
        {"turn off oven in 20 minutes", "turn off oven", "2026-03-27", "12:20"},
        {"turn off oven in 45min", "turn off oven", "2026-03-27", "12:45"},
        {"turn off oven in an hour", "turn off oven", "2026-03-27", "13:00"},
        {"turn off oven in half an hour", "turn off oven", "2026-03-27", "12:30"},
        {"turn off oven in 2h", "turn off oven", "2026-03-27", "14:00"},
        {"call back in 13 hours", "call back", "2026-03-28", "01:00"},
        {"plan sprint next week", "plan sprint", "2026-03-30"},
        {"plan sprint next month", "plan sprint", "2026-04-01"},
        {"plan sprint next year", "plan sprint", "2027-01-01"},
        {"hike this weekend", "hike", "2026-03-28"},
        {"hike next weekend", "hike", "2026-04-04"},
        {"invoice by the end of the month", "invoice", "2026-03-31"},
        {"invoice eom", "invoice", "2026-03-31"},
        {"finish slides eod", "finish slides", "2026-03-27", "18:00"},
        // Times
        {"call Bob at 5", "call Bob", "2026-03-27", "17:00"},
        {"call Bob at 9", "call Bob", "2026-03-28", "09:00"},
        {"call Bob at 9am", "call Bob", "2026-03-28", "09:00"},
        {"call Bob 9 pm", "call Bob", "2026-03-27", "21:00"},
        {"call Bob @ 9 p.m.", "call Bob", "2026-03-27", "21:00"},
        {"call Bob @5pm", "call Bob", "2026-03-27", "17:00"},
        {"call Bob at 17:30", "call Bob", "2026-03-27", "17:30"},
        {"call Bob 5:30", "call Bob", "2026-03-27", "17:30"},
        {"call Bob at 12am", "call Bob", "2026-03-28", "00:00"},
        {"call Bob at noon tomorrow", "call Bob", "2026-03-28", "12:00"},
        {"call Bob tomorrow noon", "call Bob", "2026-03-28", "12:00"},
        {"call Bob at midnight", "call Bob", "2026-03-28", "00:00"},
        {"call Bob tonight", "call Bob", "2026-03-27", "19:00"},
        {"call Bob tonight at 9", "call Bob", "2026-03-27", "21:00"},
        {"call Bob tonight at 12", "call Bob", "2026-03-28", "00:00"},
        {"call Bob tomorrow morning", "call Bob", "2026-03-28", "09:00"},
        {"call Bob tomorrow morning at 7", "call Bob", "2026-03-28", "07:00"},
        {"call Bob monday evening", "call Bob", "2026-03-30", "19:00"},
        {"call Bob this afternoon", "call Bob", "2026-03-27", "15:00"},
        {"call Bob in the morning", "call Bob", "2026-03-28", "09:00"},
        {"call Bob at 8 in the evening", "call Bob", "2026-03-27", "20:00"},
        {"call Bob at half past five", "call Bob", "2026-03-27", "17:30"},
        {"call Bob at quarter to 9", "call Bob", "2026-03-28", "08:45"},
        {"call Bob at 5 o'clock", "call Bob", "2026-03-27", "17:00"},
        {"book a room from 2pm to 4pm", "book a room", "2026-03-27", "14:00"},
        {"book a table for 8pm", "book a table", "2026-03-27", "20:00"},
        {"workshop 2-4pm on monday", "workshop", "2026-03-30", "14:00"},
        {"book a 5pm slot", "book a slot", "2026-03-27", "17:00"},
        {"at 5pm on friday call Bob", "call Bob", "2026-04-03", "17:00"},
        {"send contract by EOD tomorrow", "send contract", "2026-03-28", "18:00"},
        {"lunch sun noon", "lunch", "2026-03-29", "12:00"},
        {"pick up kids at 3.15pm", "pick up kids", "2026-03-27", "15:15"},
        {"invoice by the end of april", "invoice", "2026-04-30"},
        {"tomorrow!", "", "2026-03-28"},
        // The other language
        {"appeler maman demain 9h", "appeler maman", "2026-03-28", "09:00"},
        {"dentiste mardi prochain à 18h30", "dentiste", "2026-03-31", "18:30"},
        {"payer le loyer 27 avril", "payer le loyer", "2026-04-27"},
        {"rapport dans 3 jours", "rapport", "2026-03-30"},
        {"ménage ce week-end", "ménage", "2026-03-28"},
        // The last of several
        {"prepare tomorrow, send friday", "prepare tomorrow, send", "2026-04-03"},
        // No dates
        {"may", "may"},
        {"ask if I may leave", "ask if I may leave"},
        {"May 5 people come", "May 5 people come"},
        {"march 5 miles", "march 5 miles"},
        {"second opinion", "second opinion"},
        {"read 1984", "read 1984"},
        {"mars bar", "mars bar"},
        {"buy 5 mars bars", "buy 5 mars bars"},
        {"sun cream", "sun cream"},
        {"protect from the sun", "protect from the sun"},
        {"12 eggs", "12 eggs"},
        {"buy 1/2 pound of butter", "buy 1/2 pound of butter"},
        {"buy 3/4 inch screws", "buy 3/4 inch screws"},
        {"24/7 support", "24/7 support"},
        {"arrange support 24/7", "arrange support 24/7"},
        {"feed the cat that sat", "feed the cat that sat"},
        {"plan to wed Ann", "plan to wed Ann"},
        {"Read Tomorrow's paper", "Read Tomorrow's paper"},
        {"read “Tomorrow”", "read “Tomorrow”"},
        {"watch \"The Day After Tomorrow\"", "watch \"The Day After Tomorrow\""},
        {"water plants every monday", "water plants every monday"},
        {"what happened last friday", "what happened last friday"},
        {"closed until monday", "closed until monday"},
        {"shop the black friday deals", "shop the black friday deals"},
        {"order black friday", "order black friday"},
        {"monday and tuesday off", "monday and tuesday off"},
        {"renew monday.com licence", "renew monday.com licence"},
        {"buy sunday papers", "buy sunday papers"},
        {"mondays are hard", "mondays are hard"},
        {"renew usa today", "renew usa today"},
        {"watch the tonight show", "watch the tonight show"},
        {"try the midnight snack", "try the midnight snack"},
        {"watch high noon", "watch high noon"},
        {"buy midi keyboard", "buy midi keyboard"},
        {"eat at 5 guys", "eat at 5 guys"},
        {"meet at 10 Downing Street", "meet at 10 Downing Street"},
        {"watch the 5th element", "watch the 5th element"},
        {"learn John 3:16", "learn John 3:16"},
        {"print 16:9 poster", "print 16:9 poster"},
        {"iPhone 17 case", "iPhone 17 case"},
        {"call 0800 123 456", "call 0800 123 456"},
        {"update to 2.0.1", "update to 2.0.1"},
        {"pay 10.50 to Ann", "pay 10.50 to Ann"},
        {"run 10k", "run 10k"},
        {"read https://example.org/2026-04-01/today", "read https://example.org/2026-04-01/today"},
        {"mail today@example.org", "mail today@example.org"},
        {"february 30", "february 30"},
        {"meet at 25:00", "meet at 25:00"},
        {"next steps", "next steps"},
        {"next to the week planner", "next to the week planner"},
        {"in 3 words", "in 3 words"},
        {"this night train", "this night train"},
        {"morning routine", "morning routine"},
        {"summer camp june 5 to june 12", "summer camp june 5 to june 12"},
        {"second tuesday", "second tuesday"},
        {"2nd tuesday", "2nd tuesday"},
        {"off monday and tuesday", "off monday and tuesday"},
        {"call after friday", "call after friday"},
        {"take pills at 8 and 20", "take pills at 8 and 20"},
        {"jan", "jan"},
        {"tell April about it", "tell April about it"},
        {"march in march", "march in march"},
        {"", ""},
        {"   ", ""},
    };
    expectAll(cases, Language::english);
}

TEST(QuickAddParser, UnderstandsFrenchAndLeavesWhatMayBeMeantOtherwise) {
    const Case cases[] = {
        // Days by name
        {"Appeler maman aujourd’hui", "Appeler maman", "2026-03-27"},
        {"Appeler maman aujourd'hui", "Appeler maman", "2026-03-27"},
        {"Appeler maman demain", "Appeler maman", "2026-03-28"},
        {"demain appeler maman", "appeler maman", "2026-03-28"},
        {"Demain : appeler maman", "appeler maman", "2026-03-28"},
        {"Appeler maman après-demain", "Appeler maman", "2026-03-29"},
        {"Appeler maman apres demain", "Appeler maman", "2026-03-29"},
        {"rendre le livre pour demain", "rendre le livre", "2026-03-28"},
        {"rendre le livre d’ici demain", "rendre le livre", "2026-03-28"},
        {"rendre le livre avant demain", "rendre le livre", "2026-03-28"},
        // Weekdays
        {"Appeler maman lundi", "Appeler maman", "2026-03-30"},
        {"lundi appeler maman", "appeler maman", "2026-03-30"},
        {"Appeler maman vendredi", "Appeler maman", "2026-04-03"},
        {"Appeler maman ce vendredi", "Appeler maman", "2026-03-27"},
        {"Appeler maman lundi prochain", "Appeler maman", "2026-03-30"},
        {"Appeler maman samedi prochain", "Appeler maman", "2026-03-28"},
        {"Appeler maman vendredi prochain", "Appeler maman", "2026-04-03"},
        {"Appeler maman lundi en huit", "Appeler maman", "2026-04-06"},
        {"Appeler maman lundi en quinze", "Appeler maman", "2026-04-13"},
        {"rendre le rapport pour mercredi", "rendre le rapport", "2026-04-01"},
        {"rendre le rapport avant jeudi", "rendre le rapport", "2026-04-02"},
        {"rendre le rapport dès mardi", "rendre le rapport", "2026-03-31"},
        {"sport à partir de dimanche", "sport", "2026-03-29"},
        {"dîner samedi avec Anne", "dîner avec Anne", "2026-03-28"},
        {"dîner samedi chez Paul", "dîner chez Paul", "2026-03-28"},
        {"piscine ven 18h", "piscine", "2026-04-03", "18:00"},
        // Dates
        {"dentiste 30 mars", "dentiste", "2026-03-30"},
        {"dentiste le 30 mars", "dentiste", "2026-03-30"},
        {"dentiste le 30 mars à 9h", "dentiste", "2026-03-30", "09:00"},
        {"dentiste lundi 30 mars", "dentiste", "2026-03-30"},
        {"dentiste lun. 30 mars", "dentiste", "2026-03-30"},
        {"dentiste lundi 30", "dentiste", "2026-03-30"},
        {"dentiste le 1er avril", "dentiste", "2026-04-01"},
        {"1er mai défilé", "défilé", "2026-05-01"},
        {"dentiste 5 mars", "dentiste", "2027-03-05"},
        {"dentiste 5 mai", "dentiste", "2026-05-05"},
        {"dentiste le 5 août 2027", "dentiste", "2027-08-05"},
        {"27 avril acheter du pain", "acheter du pain", "2026-04-27"},
        {"payer le 3 févr", "payer", "2027-02-03"},
        {"payer le loyer le 5", "payer le loyer", "2026-04-05"},
        {"payer le loyer avant le 5", "payer le loyer", "2026-04-05"},
        {"impôts 15/4", "impôts", "2026-04-15"},
        {"impôts 4/15", "impôts", "2026-04-15"},
        {"impôts le 3/4", "impôts", "2026-04-03"},
        {"impôts 15/04/2027", "impôts", "2027-04-15"},
        {"impôts 15/04/27", "impôts", "2027-04-15"},
        {"impôts 15.04.2026", "impôts", "2026-04-15"},
        {"impôts 2026-04-15", "impôts", "2026-04-15"},
        {"planter les tomates en mai", "planter les tomates", "2026-05-01"},
        {"planter les tomates en mars 2027", "planter les tomates", "2027-03-01"},
        // From now
        {"arroser dans 3 jours", "arroser", "2026-03-30"},
        {"arroser dans trois jours", "arroser", "2026-03-30"},
        {"arroser d'ici 3 jours", "arroser", "2026-03-30"},
        {"arroser dans une semaine", "arroser", "2026-04-03"},
        {"arroser dans deux semaines", "arroser", "2026-04-10"},
        {"arroser dans quinze jours", "arroser", "2026-04-11"},
        {"dans 2 mois vérifier la chaudière", "vérifier la chaudière", "2026-05-27"},
        {"vérifier la chaudière dans un an", "vérifier la chaudière", "2027-03-27"},
        {"couper le four dans 20 minutes", "couper le four", "2026-03-27", "12:20"},
        {"couper le four dans 20 mn", "couper le four", "2026-03-27", "12:20"},
        {"couper le four dans une heure", "couper le four", "2026-03-27", "13:00"},
        {"couper le four dans 1h30", "couper le four", "2026-03-27", "13:30"},
        {"couper le four dans une demi-heure", "couper le four", "2026-03-27", "12:30"},
        {"préparer la semaine prochaine", "préparer", "2026-03-30"},
        {"semaine prochaine ranger", "ranger", "2026-03-30"},
        {"ranger le mois prochain", "ranger", "2026-04-01"},
        {"ranger l’année prochaine", "ranger", "2027-01-01"},
        {"ranger l'an prochain", "ranger", "2027-01-01"},
        {"randonnée ce week-end", "randonnée", "2026-03-28"},
        {"randonnée le week-end prochain", "randonnée", "2026-04-04"},
        {"facture à la fin du mois", "facture", "2026-03-31"},
        {"facture fin de semaine", "facture", "2026-03-27"},
        {"facture fin d’année", "facture", "2026-12-31"},
        // Times
        {"appeler Bob à 17h", "appeler Bob", "2026-03-27", "17:00"},
        {"appeler Bob 17h", "appeler Bob", "2026-03-27", "17:00"},
        {"appeler Bob à 9h", "appeler Bob", "2026-03-28", "09:00"},
        {"appeler Bob a 9h", "appeler Bob", "2026-03-28", "09:00"},
        {"appeler Bob 18h30", "appeler Bob", "2026-03-27", "18:30"},
        {"appeler Bob à 18 h 30", "appeler Bob", "2026-03-27", "18:30"},
        {"appeler Bob à 18 heures", "appeler Bob", "2026-03-27", "18:00"},
        {"appeler Bob à 9 heures et demie", "appeler Bob", "2026-03-28", "09:30"},
        {"appeler Bob à 9 heures moins le quart", "appeler Bob", "2026-03-28", "08:45"},
        {"appeler Bob vers 17:30", "appeler Bob", "2026-03-27", "17:30"},
        {"appeler Bob à 5h", "appeler Bob", "2026-03-28", "05:00"},
        {"appeler Bob demain à midi", "appeler Bob", "2026-03-28", "12:00"},
        {"appeler Bob demain midi", "appeler Bob", "2026-03-28", "12:00"},
        {"appeler Bob à minuit", "appeler Bob", "2026-03-28", "00:00"},
        {"appeler Bob ce soir", "appeler Bob", "2026-03-27", "19:00"},
        {"appeler Bob ce soir à 8h", "appeler Bob", "2026-03-27", "20:00"},
        {"appeler Bob ce matin", "appeler Bob", "2026-03-27", "09:00"},
        {"appeler Bob cet après-midi", "appeler Bob", "2026-03-27", "15:00"},
        {"appeler Bob demain matin", "appeler Bob", "2026-03-28", "09:00"},
        {"appeler Bob demain matin 8h", "appeler Bob", "2026-03-28", "08:00"},
        {"appeler Bob lundi soir", "appeler Bob", "2026-03-30", "19:00"},
        {"appeler Bob à 8h du soir", "appeler Bob", "2026-03-27", "20:00"},
        {"appeler Bob à 3h de l'après-midi", "appeler Bob", "2026-03-27", "15:00"},
        {"réunion de 14h à 16h", "réunion", "2026-03-27", "14:00"},
        {"réunion lundi 14h-16h", "réunion", "2026-03-30", "14:00"},
        {"demain 9h dentiste", "dentiste", "2026-03-28", "09:00"},
        {"à 18h30 vendredi piscine", "piscine", "2026-04-03", "18:30"},
        {"facture d’ici la fin du mois", "facture", "2026-03-31"},
        {"facture d'ici fin avril", "facture", "2026-04-30"},
        {"facture en fin de journée", "facture", "2026-03-27", "18:00"},
        {"appeler Bob dans l'après-midi", "appeler Bob", "2026-03-27", "15:00"},
        // The other language
        {"call mum tomorrow 9am", "call mum", "2026-03-28", "09:00"},
        {"call mum next friday at 5pm", "call mum", "2026-04-03", "17:00"},
        {"call mum on monday", "call mum", "2026-03-30"},
        {"call mum in 3 days", "call mum", "2026-03-30"},
        {"call mum april 3", "call mum", "2026-04-03"},
        {"call mum tonight", "call mum", "2026-03-27", "19:00"},
        // No dates
        {"mars", "mars"},
        {"acheter un mars", "acheter un mars"},
        {"acheter 3 mars glacés", "acheter 3 mars glacés"},
        {"mission sur mars", "mission sur mars"},
        {"lire 1984", "lire 1984"},
        {"12 œufs", "12 œufs"},
        {"sept nains", "sept nains"},
        {"acheter sept pommes", "acheter sept pommes"},
        {"mon dossier", "mon dossier"},
        {"mer agitée", "mer agitée"},
        {"jeu de société", "jeu de société"},
        {"appeler Sam 18 fois", "appeler Sam 18 fois"},
        {"appeler Sam", "appeler Sam"},
        {"câble midi", "câble midi"},
        {"clavier midi pour Paul", "clavier midi pour Paul"},
        {"sieste après-midi", "sieste après-midi"},
        {"dormir pendant 8h", "dormir pendant 8h"},
        {"réunion de 2h", "réunion de 2h"},
        {"dormir 9 heures", "dormir 9 heures"},
        {"préparer la réunion de demain", "préparer la réunion de demain"},
        {"compte rendu de la réunion de lundi", "compte rendu de la réunion de lundi"},
        {"notes du mardi", "notes du mardi"},
        {"poubelles tous les lundis", "poubelles tous les lundis"},
        {"poubelles le lundi", "poubelles le lundi"},
        {"poubelles chaque lundi", "poubelles chaque lundi"},
        {"fermé jusqu’à lundi", "fermé jusqu’à lundi"},
        {"malade depuis lundi", "malade depuis lundi"},
        {"relire lundi dernier", "relire lundi dernier"},
        {"lire Vendredi ou la vie sauvage", "lire Vendredi ou la vie sauvage"},
        {"lire « Demain »", "lire « Demain »"},
        {"lundi et mardi repos", "lundi et mardi repos"},
        {"ouvert 24/7", "ouvert 24/7"},
        {"ouvert 7/7", "ouvert 7/7"},
        {"ouvert 24h/24", "ouvert 24h/24"},
        {"1/2 livre de beurre", "1/2 livre de beurre"},
        {"lire le 20 minutes", "lire le 20 minutes"},
        {"chapitre 5", "chapitre 5"},
        {"acheter 5 kg de farine", "acheter 5 kg de farine"},
        {"aller à Mai", "aller à Mai"},
        {"31 février", "31 février"},
        {"Appeler maman !", "Appeler maman !"},
        {"deux mains", "deux mains"},
        {"lendemain", "lendemain"},
        {"prochain rendez-vous", "prochain rendez-vous"},
        {"semaine du goût", "semaine du goût"},
        {"en 3 mots", "en 3 mots"},
        {"payer 10,50 à Paul", "payer 10,50 à Paul"},
        {"version 2.0.1", "version 2.0.1"},
        {"mémoire de fin d’études", "mémoire de fin d’études"},
        {"fin de partie", "fin de partie"},
        {"dîner à 8", "dîner à 8"},
        {"mardi ou mercredi", "mardi ou mercredi"},
        {"vacances du 3 mai au 12 mai", "vacances du 3 mai au 12 mai"},
        {"du 3 au 5 mai", "du 3 au 5 mai"},
        {"8 mai 1945", "8 mai 1945"},
        {"1h30 de piano", "1h30 de piano"},
        {"rappeler après le 15", "rappeler après le 15"},
    };
    expectAll(cases, Language::french);
}

/// Each piece as it stands in the line.
std::vector<std::string> pieces(const QString& line, const QuickAddLine& read) {
    std::vector<std::string> result;
    for (const QuickAddPiece& piece : read.pieces)
        result.push_back(std::to_string(static_cast<int>(piece.kind)) +
                         line.mid(piece.range.start, piece.range.length).toStdString());
    return result;
}

TEST(QuickAddParser, TellsWhereItUnderstoodWhat) {
    const QString line = QStringLiteral("Call Bob by friday at 5pm !!! #home office");
    const QuickAddLine read = parseQuickAdd(line, context(Language::english));
    EXPECT_THAT(pieces(line, read), ElementsAre("0by friday", "1at 5pm", "2!!!", "3#home office"));
    EXPECT_EQ(read.title, QStringLiteral("Call Bob"));
    EXPECT_EQ(read.priority, NewReminderPriority::high);
    EXPECT_EQ(read.listID, QStringLiteral("home office"));
}

TEST(QuickAddParser, LeavesInTheTitleWhatThePersonRefuses) {
    const QString line = QStringLiteral("Read tomorrow morning !! #Groceries");
    const auto readRefusing = [&](const char* words) {
        const QString refused = QString::fromUtf8(words);
        return parseQuickAdd(line, context(Language::english), {{line.indexOf(refused), refused.size()}});
    };
    QuickAddLine read = readRefusing("tomorrow");
    EXPECT_EQ(read.title, QStringLiteral("Read tomorrow"));
    EXPECT_EQ(read.day, QDate(2026, 3, 28)) << "the morning that comes";
    EXPECT_EQ(read.time, QTime(9, 0));
    read = readRefusing("morning");
    EXPECT_EQ(read.title, QStringLiteral("Read morning"));
    EXPECT_EQ(read.time, std::nullopt);
    read = readRefusing("!!");
    EXPECT_EQ(read.title, QStringLiteral("Read !!"));
    EXPECT_EQ(read.priority, std::nullopt);
    read = readRefusing("#Groceries");
    EXPECT_EQ(read.title, QStringLiteral("Read #Groceries"));
    EXPECT_EQ(read.listID, std::nullopt);
    const QString two = QStringLiteral("send tomorrow or next friday");
    read = parseQuickAdd(two, context(Language::english), {{two.indexOf(QStringLiteral("next")), 11}});
    EXPECT_EQ(read.title, QStringLiteral("send or next friday"));
    EXPECT_EQ(read.day, QDate(2026, 3, 28)) << "the other one counts then";
}

TEST(QuickAddParser, KnowsPriorityMarks) {
    struct Mark {
        const char* line;
        const char* title;
        std::optional<NewReminderPriority> english;
        std::optional<NewReminderPriority> french;
    };
    using Priority = NewReminderPriority;
    const Mark marks[] = {
        {"pay !!!", "pay", Priority::high, Priority::high},
        {"!! pay", "pay", Priority::normal, Priority::normal},
        {"pay !high", "pay", Priority::high, Priority::high},
        {"pay !Basse", "pay", Priority::low, Priority::low},
        {"pay !1 now", "pay now", Priority::high, Priority::high},
        {"pay!!!", "pay!!!", {}, {}},
        {"pay !!!!", "pay !!!!", {}, {}},
        {"pay !important", "pay !important", {}, {}},
    };
    for (const Mark& mark : marks) {
        for (const Language language : {Language::english, Language::french}) {
            const QuickAddLine read = parseQuickAdd(QString::fromUtf8(mark.line), context(language));
            EXPECT_EQ(read.priority, language == Language::english ? mark.english : mark.french) << mark.line;
            EXPECT_EQ(read.title, QString::fromUtf8(mark.title));
        }
    }
    EXPECT_EQ(parseQuickAdd(QStringLiteral("pay !"), context(Language::english)).priority, Priority::low);
    EXPECT_EQ(parseQuickAdd(QStringLiteral("payer !"), context(Language::french)).priority, std::nullopt);
}

TEST(QuickAddParser, KnowsListsByTheirNames) {
    struct Name {
        const char* line;
        const char* list;
        const char* title;
    };
    const Name names[] = {
        {"milk #groceries", "groceries", "milk"},
        {"#GROCERIES milk", "groceries", "milk"},
        {"sweep #home", "home", "sweep"},
        {"sweep #home office today", "home office", "sweep"},
        {"sweep #HomeOffice", "home office", "sweep"},
        {"sweep #home-office.", "home office", "sweep"},
        {"sweep #\"Home office\"", "home office", "sweep"},
        {"parasol #ete a la plage", "été à la plage", "parasol"},
        {"parasol #e\xCC\x81te\xCC\x81 à la plage", "été à la plage", "parasol"},
        {"learn #C++", "c++", "learn"},
        {"fix bug #123", "", "fix bug #123"},
        {"milk #grocer", "", "milk #grocer"},
        {"milk#groceries", "", "milk#groceries"},
        {"milk # groceries", "", "milk # groceries"},
        {"note #home #groceries", "groceries", "note #home"},
    };
    for (const Name& name : names) {
        const QuickAddLine read = parseQuickAdd(QString::fromUtf8(name.line), context(Language::english));
        EXPECT_EQ(read.listID.value_or(QString()), QString::fromUtf8(name.list)) << name.line;
        EXPECT_EQ(read.title, QString::fromUtf8(name.title));
    }
}

TEST(QuickAddParser, KeepsItsWordWhateverIsTyped) {
    const QStringList words =
        QStringLiteral(
            "call tomorrow demain friday lundi 27 mars march 3rd 1er at à 5 5pm 18h 9:30 in dans 3 days "
            "jours next prochain # #home ! !! !!! , . - ( ) \" ’ @ @5 27/3 2026-04-01 the le of du 🎉 é "
            "end fin eod noon midi morning soir sun may half past quarter to and et \x01")
            .split(QLatin1Char(' '));
    std::mt19937 random(1);
    for (int n = 0; n < 3000; ++n) {
        QString line;
        for (unsigned count = random() % 12; count > 0; --count) {
            line += words[static_cast<qsizetype>(random() % static_cast<unsigned>(words.size()))];
            line += QString(static_cast<qsizetype>(random() % 3), QLatin1Char(' '));
        }
        const QuickAddContext present = context(n % 2 == 0 ? Language::english : Language::french);
        std::vector<TextRange> refused;
        for (int round = 0;; ++round) {
            const QuickAddLine read = parseQuickAdd(line, present, refused);
            qsizetype end = 0;
            for (const QuickAddPiece& piece : read.pieces) {
                ASSERT_GE(piece.range.start, end) << line.toStdString();
                ASSERT_GT(piece.range.length, 0) << line.toStdString();
                end = piece.range.end();
                refused.push_back(piece.range);
            }
            ASSERT_LE(end, line.size()) << line.toStdString();
            EXPECT_EQ(read.time && !read.day, false) << line.toStdString();
            if (read.pieces.empty()) {
                EXPECT_EQ(read.title, line.trimmed());
                break;
            }
            ASSERT_LT(round, 20) << line.toStdString();
        }
    }
}

TEST(QuickAddParser, CountsHoursAcrossAChangeOfClocks) {
    QuickAddContext night = context(Language::english);
    night.now = at("Europe/Paris", {2026, 3, 29}, {1, 30}) + std::chrono::seconds(20);
    const QuickAddLine read = parseQuickAdd(QStringLiteral("x in 2 hours"), night);
    EXPECT_EQ(read.day, QDate(2026, 3, 29));
    EXPECT_EQ(read.time, QTime(4, 31));
}

}  // namespace
}  // namespace kestrant
