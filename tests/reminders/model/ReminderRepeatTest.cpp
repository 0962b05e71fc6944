#include "reminders/model/ReminderRepeat.h"

#include <gmock/gmock.h>

#include <string>

namespace kestrant {
namespace {

std::vector<EKRecurrenceRule> rules(const std::vector<const char*>& texts) {
    std::vector<EKRecurrenceRule> result;
    for (const char* text : texts)
        result.push_back(EKRecurrenceRule::parse(QString::fromUtf8(text)));
    return result;
}

TEST(ReminderRepeat, EveryChoiceIsFoundAgainInItsRules) {
    for (const auto& choice : choicesOf<ReminderRepeat>)
        EXPECT_EQ(reminderRepeat(recurrenceRules(choice.value)), choice.value);
}

TEST(ReminderRepeat, RulesThatSayMoreAreNoneOfTheChoices) {
    for (const char* rule : {"FREQ=DAILY;INTERVAL=2", "FREQ=WEEKLY;BYDAY=MO", "FREQ=MONTHLY;COUNT=3",
                             "FREQ=YEARLY;UNTIL=20270101", "FREQ=HOURLY", "FREQ=SOMETIMES", ""})
        EXPECT_EQ(reminderRepeat(rules({rule})), std::nullopt) << rule;
    EXPECT_EQ(reminderRepeat(rules({"FREQ=DAILY", "FREQ=WEEKLY"})), std::nullopt);
}

TEST(ReminderRepeat, AnyRulesAreToldInWords) {
    struct Case {
        std::vector<const char*> rules;
        std::string english;
        std::string french;
        std::string briefly;
    };
    const std::vector<Case> cases{
        {{}, "never", "jamais", ""},
        {{"FREQ=DAILY"}, "daily", "tous les jours", "daily"},
        {{"FREQ=YEARLY"}, "yearly", "tous les ans", "yearly"},
        {{"FREQ=WEEKLY;INTERVAL=2"}, "every 2 weeks", "toutes les 2 semaines", "every 2 weeks"},
        {{"FREQ=WEEKLY;BYDAY=MO,TH"}, "every Mon, Thu", "tous les lun., jeu.", "weekly"},
        {{"FREQ=WEEKLY;INTERVAL=2;BYDAY=SU"},
         "every 2 weeks on Sun",
         "toutes les 2 semaines : dim.",
         "every 2 weeks"},
        {{"FREQ=WEEKLY;BYDAY=1MO"}, "custom", "personnalisée", "weekly"},
        {{"FREQ=MONTHLY;BYMONTHDAY=15"}, "monthly on day 15", "tous les mois, le 15", "monthly"},
        {{"FREQ=MONTHLY;BYMONTHDAY=-1"},
         "monthly on the last day",
         "tous les mois, le dernier jour",
         "monthly"},
        {{"FREQ=MONTHLY;INTERVAL=3;BYDAY=-1FR;COUNT=4"},
         "every 3 months on the last Friday, 4 times",
         "tous les 3 mois, le dernier vendredi, 4 fois",
         "every 3 months"},
        {{"FREQ=DAILY;UNTIL=20270503T220000Z"},
         "daily, until 3 May 2027",
         "tous les jours, jusqu’au 3 mai 2027",
         "daily"},
        {{"FREQ=MONTHLY;BYDAY=FR;BYMONTHDAY=13"}, "custom", "personnalisée", "monthly"},
        {{"FREQ=MONTHLY;BYDAY=MO,TU;BYSETPOS=1"}, "custom", "personnalisée", "monthly"},
        {{"FREQ=YEARLY;BYMONTH=3"}, "custom", "personnalisée", "yearly"},
        {{"FREQ=MONTHLY;BYMONTHDAY=1,15"},
         "monthly on days 1 and 15",
         "tous les mois, les 1 et 15",
         "monthly"},
        {{"FREQ=MONTHLY;BYDAY=2TU,4TU"},
         "monthly on the second and fourth Tuesday",
         "tous les mois, le deuxième et quatrième mardi",
         "monthly"},
        {{"FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1"},
         "monthly on the last working day",
         "tous les mois, le dernier jour ouvré",
         "monthly"},
        {{"FREQ=YEARLY;BYMONTH=6;BYMONTHDAY=5"}, "yearly on 5 June", "tous les ans, le 5 juin", "yearly"},
        {{"FREQ=YEARLY;BYMONTH=5;BYDAY=-1MO"},
         "yearly on the last Monday of May",
         "tous les ans, le dernier lundi de mai",
         "yearly"},
        {{"FREQ=DAILY;BYHOUR=9,19"}, "twice a day", "deux fois par jour", "daily"},
        {{"FREQ=WEEKLY;BYDAY=MO;BYHOUR=8,12,20"},
         "every Mon, 3 times a day",
         "tous les lun., 3 fois par jour",
         "weekly"},
        {{"FREQ=DAILY;BYHOUR=9;BYMINUTE=0,30"}, "custom", "personnalisée", "daily"},
        {{"FREQ=HOURLY;INTERVAL=8"}, "every 8 hours", "toutes les 8 heures", ""},
        {{"FREQ=SOMETIMES"}, "custom", "personnalisée", ""},
        {{"FREQ=DAILY", "FREQ=WEEKLY"}, "custom", "personnalisée", ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(repeatInWords(rules(c.rules), Language::english).toStdString(), c.english);
        EXPECT_EQ(repeatInWords(rules(c.rules), Language::french).toStdString(), c.french);
        EXPECT_EQ(shortRepeatText(rules(c.rules), Language::english).toStdString(), c.briefly) << c.english;
    }
}

TEST(ReminderRepeat, FrenchIsBriefWhereThereIsLittleRoom) {
    const auto briefly = [](const char* rule) {
        return shortRepeatText(rules({rule}), Language::french).toStdString();
    };
    EXPECT_THAT(
        (std::vector{briefly("FREQ=DAILY"), briefly("FREQ=WEEKLY;BYDAY=MO"), briefly("FREQ=MONTHLY"),
                     briefly("FREQ=YEARLY"), briefly("FREQ=YEARLY;INTERVAL=2"), briefly("FREQ=HOURLY")}),
        testing::ElementsAre("quotidien", "hebdo", "mensuel", "annuel", "tous les 2 ans", ""));
}

}  // namespace
}  // namespace kestrant
