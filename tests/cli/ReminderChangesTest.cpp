#include "CommandLineFixture.h"

#include <QDir>
#include <QFile>

namespace kestrant {
namespace {

/// The list "home", called "Maison", the list "work", and in them reminders with lines of other programs.
class ReminderChangesTest : public CommandLineFixture {
  protected:
    ReminderChangesTest() {
        put("store/home/displayname", "Maison");
        putTodo("home", "milk",
                "SUMMARY:Buy milk\r\nDUE;TZID=Europe/Paris:20260327T143000\r\nPRIORITY:3\r\n"
                "X-SOMEBODY;X-P=1:keep\r\nCATEGORIES:a,b\r\n" +
                    alarm("20260327T131500Z"));
        putTodo("home", "taxes", "SUMMARY:Taxes\r\nDUE;VALUE=DATE:20260326\r\nDESCRIPTION:Two forms\r\n");
        putTodo("work", "report", "SUMMARY:Report\r\n");
        putTodo("work", "done", "SUMMARY:Done\r\nSTATUS:COMPLETED\r\nCOMPLETED:20260301T080000Z\r\n");
    }

    static QByteArray alarm(const QByteArray& instant) {
        return "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:x\r\nTRIGGER;VALUE=DATE-TIME:" + instant +
               "\r\nEND:VALARM\r\n";
    }
    /// A file without the lines that every change brings up to date.
    QStringList lines(const QString& name) const {
        QStringList result;
        for (const QString& line : file(name).split("\r\n")) {
            const QString property = line.section(':', 0, 0);
            if (!QStringList{"DTSTAMP", "CREATED", "LAST-MODIFIED", "SEQUENCE"}.contains(property))
                result.append(line);
        }
        return result;
    }
    QJsonObject shown(const QString& id) const { return run({"show", id, "--json"}).json().object(); }
    /// What a command changes in what is shown of a reminder.
    QJsonObject changes(const QString& id, const QStringList& arguments) const {
        const QJsonObject before = shown(id);
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 0) << result.err.toStdString();
        EXPECT_EQ(result.out + result.err, "");
        QJsonObject after = shown(id);
        for (const QString& key : before.keys()) {
            if (after[key] == before[key])
                after.remove(key);
        }
        return after;
    }
};

struct AddCase {
    QStringList arguments;
    const char* title;
    const char* due;
    int priority;
    const char* list;
};

TEST_F(ReminderChangesTest, AddUnderstandsTheLineAsFarAsNoOptionSaysOtherwise) {
    const AddCase cases[] = {
        {{"Call Ilse tomorrow 9am !! #Maison"}, "Call Ilse", "2026-03-28T08:00:00Z", 5, "home"},
        {{"Call Ilse demain 9h !!!"}, "Call Ilse", "2026-03-28T08:00:00Z", 1, "home"},
        {{"Call Ilse monday"}, "Call Ilse", "2026-03-30", 5, "home"},
        {{"Call Ilse tomorrow !high", "--due", "2026-04-01"}, "Call Ilse tomorrow", "2026-04-01", 1, "home"},
        {{"Call Ilse monday or tuesday", "--due", "none"}, "Call Ilse monday or tuesday", nullptr, 5, "home"},
        {{"Call Ilse !! friday", "--priority", "low"}, "Call Ilse !!", "2026-04-03", 9, "home"},
        {{"Call Ilse #Maison", "--list", "work"}, "Call Ilse #Maison", nullptr, 5, "work"},
        {{"Call Ilse #work tomorrow !", "--literal"}, "Call Ilse #work tomorrow !", nullptr, 5, "home"},
        {{"Tomorrow"}, "Tomorrow", nullptr, 5, "home"},
    };
    for (const AddCase& testCase : cases) {
        const Result added = run(QStringList{"add", "--json"} + testCase.arguments);
        EXPECT_EQ(added.status, 0) << added.err.toStdString();
        EXPECT_EQ(added.err, "");
        const QJsonObject reminder = added.json().object();
        EXPECT_EQ(reminder, shown(reminder["id"].toString()));
        EXPECT_EQ(reminder["title"].toString(), testCase.title);
        EXPECT_EQ(reminder["dueDate"], testCase.due ? QJsonValue(testCase.due) : QJsonValue::Null)
            << testCase.title;
        EXPECT_EQ(reminder["priority"], testCase.priority) << testCase.title;
        EXPECT_EQ(reminder["listID"].toString(), testCase.list) << testCase.title;
    }
}

TEST_F(ReminderChangesTest, AddTellsWhatItUnderstoodBesideTheIdentifier) {
    const Result added = run({"add", "Call Ilse tomorrow 9am !!! #Maison"});
    EXPECT_EQ(added.err, "Title     Call Ilse\n"
                         "Due       Tomorrow 09:00\n"
                         "Priority  high\n"
                         "List      Maison\n");
    EXPECT_EQ(shown(added.out.trimmed())["title"], "Call Ilse");
    put("preferences.json", R"({"kestrantLanguage": "fr"})");
    EXPECT_EQ(run({"add", "Fête le 3/4 !!!"}).err, "Titre     Fête\n"
                                                   "Échéance  Ven. 3 avr.\n"
                                                   "Priorité  haute\n");
    EXPECT_EQ(run({"add", "Nothing to understand"}).err, "");
}

TEST_F(ReminderChangesTest, AddWritesEverythingThatTheLineSays) {
    const Result added =
        run({"add", "Water every monday at 8am, 10 min before #Garden !flag https://example.org // two cans",
             "--make-list"});
    EXPECT_EQ(added.err, "Title     Water\n"
                         "Due       Mon 30 Mar 08:00\n"
                         "Repeats   every Mon\n"
                         "Alert     10 min before\n"
                         "Flag      ⚑\n"
                         "New list  Garden\n"
                         "Link      https://example.org\n"
                         "Notes     two cans\n");
    const QJsonObject reminder = shown(added.out.trimmed());
    EXPECT_EQ(reminder["recurrenceRules"].toArray().first(), "FREQ=WEEKLY;BYDAY=MO");
    EXPECT_EQ(reminder["url"], "https://example.org");
    EXPECT_EQ(reminder["notes"], "two cans");
    EXPECT_EQ(reminder["isFlagged"], true);
    EXPECT_EQ(run({"add", "sweep #Garden tomorrow", "--json"}).json().object()["listID"], reminder["listID"]);

    const Result unknown = run({"add", "sweep #Cellar tomorrow"});
    EXPECT_EQ(shown(unknown.out.trimmed())["title"], "sweep #Cellar");
    EXPECT_EQ(unknown.err.section(u'\n', 0, 0),
              "There is no list “Cellar” that could be written to; its name stays in the title.");
}

TEST_F(ReminderChangesTest, AddTakesALineEachFromTheStandardInput) {
    input = {QStringLiteral("milk tomorrow"), QString(), QStringLiteral("bread x"),
             QStringLiteral("tea at 4")};
    const Result added = run({"add", "-"});
    EXPECT_EQ(added.status, 0);
    const QStringList identifiers = added.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(identifiers.size(), 3);
    EXPECT_EQ(shown(identifiers[0])["title"], "milk");
    EXPECT_EQ(shown(identifiers[1])["title"], "bread x");
    EXPECT_EQ(shown(identifiers[2])["title"], "tea");
}

TEST_F(ReminderChangesTest, AddTakesAnAlertAndAFlag) {
    const QJsonObject added =
        run({"add", "Call at 15:00", "--alert", "15m", "--flagged", "--json"}).json().object();
    EXPECT_EQ(added["dueAlertSchedule"], (QJsonObject{{"relativeToDueTime", -900}}));
    EXPECT_EQ(added["isFlagged"], true);
    EXPECT_TRUE(file("store/home/" + added["id"].toString() + ".ics").contains("\r\nX-PINNED:true\r\n"));
}

TEST_F(ReminderChangesTest, EditChangesWhatIsNamedAndNothingElse) {
    EXPECT_EQ(changes("milk", {"edit", "milk", "--title", " Buy oat milk "}),
              (QJsonObject{{"title", "Buy oat milk"}}));
    EXPECT_EQ(changes("milk", {"edit", "milk", "--notes", "Two\nbottles", "--priority", "low"}),
              (QJsonObject{{"notes", "Two\nbottles"}, {"priority", 9}}));
    EXPECT_EQ(changes("milk", {"edit", "milk", "--due", "tomorrow 9am"}),
              (QJsonObject{{"dueDate", "2026-03-28T08:00:00Z"}}))
        << "the alert keeps its distance";
    EXPECT_EQ(changes("milk", {"edit", "milk", "--alert", "1h"}),
              (QJsonObject{{"dueAlertSchedule", QJsonObject{{"relativeToDueTime", -3600}}}}));
    EXPECT_EQ(changes("milk", {"edit", "milk", "--list", "work"}), (QJsonObject{{"listID", "work"}}));
    EXPECT_FALSE(QFile::exists(path("store/home/milk.ics")));
    const QString written = file("store/work/milk.ics");
    EXPECT_TRUE(written.contains("\r\nX-SOMEBODY;X-P=1:keep\r\nCATEGORIES:a,b\r\n")) << written.toStdString();

    EXPECT_EQ(
        changes("taxes", {"edit", "taxes", "--alert", "1d 18:00"}),
        (QJsonObject{{"dueAlertSchedule", QJsonObject{{"dayRelativeToDueDate", QJsonArray{-1, 18, 0}}}}}));
    EXPECT_EQ(changes("taxes", {"edit", "taxes", "--notes", "", "--due", "none"}),
              (QJsonObject{{"notes", QJsonValue::Null},
                           {"dueDate", QJsonValue::Null},
                           {"dueAlertSchedule", QJsonValue::Null}}));
    EXPECT_EQ(changes("milk", {"edit", "milk", "--priority", "none", "--alert", "none"}),
              (QJsonObject{{"priority", 0}, {"dueAlertSchedule", QJsonValue::Null}}));
}

TEST_F(ReminderChangesTest, RemindersRepeatAsTheOptionSays) {
    const QJsonObject added =
        run({"add", "Water the plants today", "--repeat", "weekly", "--json"}).json().object();
    const QString id = added["id"].toString();
    EXPECT_EQ(added["recurrenceRules"], QJsonArray{"FREQ=WEEKLY"});
    EXPECT_EQ(run({"complete", id}).status, 0);
    EXPECT_EQ(shown(id)["dueDate"], "2026-04-03");
    EXPECT_EQ(changes(id, {"edit", id, "--repeat", "monthly"}),
              (QJsonObject{{"recurrenceRules", QJsonArray{"FREQ=MONTHLY"}}}));
    EXPECT_TRUE(run({"show", id}).out.contains("\nRepeats     monthly\n"));
    EXPECT_EQ(changes(id, {"edit", id, "--title", "Water"}), (QJsonObject{{"title", "Water"}}));
    EXPECT_EQ(changes(id, {"edit", id, "--repeat", "none"}),
              (QJsonObject{{"recurrenceRules", QJsonArray()}}));
}

TEST_F(ReminderChangesTest, RescheduleKeepsTheAlertAndNoneClearsBoth) {
    EXPECT_EQ(changes("milk", {"reschedule", "milk", "2026-04-02T10:00"}),
              (QJsonObject{{"dueDate", "2026-04-02T08:00:00Z"}}));
    EXPECT_EQ(changes("milk", {"reschedule", "milk", "none"}),
              (QJsonObject{{"dueDate", QJsonValue::Null},
                           {"dueDateIncludesTime", false},
                           {"dueAlertSchedule", QJsonValue::Null}}));
    EXPECT_EQ(changes("milk", {"reschedule", "milk", "next monday"}),
              (QJsonObject{{"dueDate", "2026-03-30"}}));
}

TEST_F(ReminderChangesTest, MoveTakesTheFileAlongWithAllItsLines) {
    const QStringList before = lines("store/home/milk.ics");
    EXPECT_EQ(run({"move", "milk", "work"}).status, 0);
    EXPECT_EQ(lines("store/work/milk.ics"), before);
    EXPECT_FALSE(QFile::exists(path("store/home/milk.ics")));
    EXPECT_EQ(run({"move", "milk", "maison"}).status, 0) << "by its title";
    EXPECT_EQ(lines("store/home/milk.ics"), before);
}

TEST_F(ReminderChangesTest, FlagWritesTheMarkOfOtherProgramsAndNothingElse) {
    const QStringList before = lines("store/home/milk.ics");
    EXPECT_EQ(run({"flag", "milk"}).status, 0);
    EXPECT_EQ(run({"list", "--flagged", "--json"}).ids(), QStringList{"milk"});
    QStringList flagged = lines("store/home/milk.ics");
    EXPECT_EQ(flagged.removeAll("X-PINNED:true"), 1);
    EXPECT_EQ(flagged, before);
    const QString written = file("store/home/milk.ics");
    EXPECT_EQ(run({"flag", "milk", "--json"}).json().object(), (QJsonObject{{"id", "milk"}}));
    EXPECT_EQ(file("store/home/milk.ics"), written) << "it was flagged already";
    EXPECT_EQ(run({"unflag", "milk"}).status, 0);
    EXPECT_EQ(lines("store/home/milk.ics"), before);
    EXPECT_EQ(run({"flag", "done"}).status, 0) << "a completed one";
    EXPECT_EQ(shown("done")["isFlagged"], true);
    EXPECT_FALSE(QFile::exists(path("preferences.json")));
}

TEST_F(ReminderChangesTest, SeveralAreFlaggedTogetherOrNoneAtAll) {
    const QStringList before = lines("store/home/milk.ics");
    const auto refused = run({"flag", "milk", "nobody"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.startsWith("nobody: ")) << refused.err.toStdString();
    EXPECT_EQ(lines("store/home/milk.ics"), before);
    put("preferences.json", R"({"reminderFlagIndex.localOverrides": {"milk": false}})");
    EXPECT_EQ(run({"flag", "milk", "taxes", "--json"}).json().array(),
              (QJsonArray{QJsonObject{{"id", "milk"}}, QJsonObject{{"id", "taxes"}}}));
    EXPECT_THAT(run({"list", "--flagged", "--json"}).ids(), testing::UnorderedElementsAre("milk", "taxes"));
    EXPECT_EQ(run({"unflag", "taxes", "milk"}).status, 0);
    EXPECT_EQ(run({"list", "--flagged", "--json"}).ids(), QStringList());
    EXPECT_EQ(lines("store/home/milk.ics"), before);
}

TEST_F(ReminderChangesTest, SeveralAreCompletedMovedAndDeletedTogether) {
    putTodo("home", "water", "SUMMARY:Water\r\nDUE;VALUE=DATE:20260327\r\nRRULE:FREQ=DAILY\r\n");
    EXPECT_EQ(run({"move", "milk", "taxes", "work", "--json"}).json().array(),
              (QJsonArray{QJsonObject{{"id", "milk"}}, QJsonObject{{"id", "taxes"}}}));
    EXPECT_TRUE(QFile::exists(path("store/work/milk.ics")) && QFile::exists(path("store/work/taxes.ics")));

    const Result completed = run({"complete", "milk", "water", "done", "milk"});
    EXPECT_EQ(completed.status, 0) << completed.err.toStdString();
    EXPECT_EQ(run({"list", "--json"}).ids(), (QStringList{"taxes", "water", "report"}));
    EXPECT_EQ(shown("water")["dueDate"], "2026-03-28");
    const QJsonObject records =
        QJsonDocument::fromJson(file("ledger.json").toUtf8()).object()["records"].toObject();
    EXPECT_EQ(records.size(), 3) << "what was done before, and the copy of the one that repeats";
    EXPECT_TRUE(records.contains("milk"));

    EXPECT_EQ(run({"delete", "milk", "taxes", "report"}).status, 0);
    EXPECT_EQ(QDir(path("store/work")).entryList(QDir::Files), QStringList{"done.ics"});
}

TEST_F(ReminderChangesTest, AnIdentifierMayBeCutShortAsLongAsItFitsOneOnly) {
    putTodo("home", "milk-2", "SUMMARY:More milk\r\n");
    putTodo("home", "dune", "SUMMARY:Read\r\n");
    struct Case {
        QStringList arguments;
        int status;
        const char* error;
    };
    const Case cases[] = {
        {{"show", "milk"}, 0, ""},
        {{"show", "milk-"}, 0, ""},
        {{"show", "Tax"}, 1, "This reminder is no longer available.\n"},
        {{"show", "mil"}, 1, "“mil” is the beginning of several identifiers: milk, milk-2.\n"},
        {{"show", "d"}, 1, "“d” is the beginning of several identifiers: done, dune.\n"},
        {{"complete", "rep", "milk-", "d"}, 1, "“d” is the beginning of several identifiers: done, dune.\n"},
        {{"edit", "t", "--title", "Less"}, 0, ""},
        {{"reschedule", "rep", "2026-04-01"}, 0, ""},
        {{"complete", "rep", "report", "t"}, 0, ""},
    };
    for (const Case& testCase : cases) {
        const Result result = run(testCase.arguments);
        EXPECT_EQ(result.status, testCase.status) << testCase.arguments.join(u' ').toStdString();
        EXPECT_EQ(result.err, QString::fromUtf8(testCase.error));
    }
    EXPECT_THAT(run({"list", "--json"}).ids(), testing::UnorderedElementsAre("milk", "milk-2", "dune"));
    EXPECT_EQ(run({"complete", "dun", "--json"}).json().object(), (QJsonObject{{"id", "dune"}}));
}

TEST_F(ReminderChangesTest, AFlagOutweighsWhatThePanelHasSetBefore) {
    put("preferences.json",
        R"({"other": [1], "reminderFlagIndex.localOverrides": {"milk": false, "taxes": true}})");
    EXPECT_EQ(run({"list", "--flagged", "--json"}).ids(), QStringList{"taxes"});
    EXPECT_EQ(run({"flag", "milk"}).status, 0);
    EXPECT_EQ(run({"unflag", "taxes"}).status, 0);
    EXPECT_EQ(run({"list", "--flagged", "--json"}).ids(), QStringList{"milk"});
    EXPECT_EQ(QJsonDocument::fromJson(file("preferences.json").toUtf8()).object(),
              QJsonDocument::fromJson(
                  R"({"other": [1], "reminderFlagIndex.localOverrides": {"milk": true, "taxes": false}})")
                  .object());
}

struct RefusalCase {
    QStringList arguments;
    int status;
    const char* english;
    const char* french;
};

TEST_F(ReminderChangesTest, WhatIsRefusedIsExplainedInBothLanguagesAndChangesNothing) {
    put("store/first/displayname", "Twin");
    put("store/second/displayname", "twin");
    QDir().mkpath(path("store/locked"));
    putTodo("locked", "fixed", "SUMMARY:Fixed\r\n");
    ASSERT_TRUE(QFile::setPermissions(path("store/locked"), QFile::ReadOwner | QFile::ExeOwner));
    const bool isLocked = !QFileInfo(path("store/locked")).isWritable();
    const QString milk = file("store/home/milk.ics");

    const char* gone = "This reminder is no longer available.\n";
    const char* goneFrench = "Ce rappel n’est plus disponible.\n";
    const char* noList = "There is no list “nowhere”; kestrant lists shows them.\n";
    const char* noListFrench = "La liste « nowhere » n’existe pas ; kestrant lists les affiche.\n";
    const char* twins =
        "Several lists are called “TWIN”; write the identifier of one of them: first, second.\n";
    const char* twinsFrench =
        "Plusieurs listes s’appellent « TWIN » ; écrivez l’identifiant de l’une d’elles : "
        "first, second.\n";
    std::vector<RefusalCase> cases{
        {{"edit", "nobody", "--title", "x"}, 1, gone, goneFrench},
        {{"move", "nobody", "work"}, 1, gone, goneFrench},
        {{"reschedule", "nobody", "2026-04-01"}, 1, gone, goneFrench},
        {{"reschedule", "nobody", "none"}, 1, gone, goneFrench},
        {{"flag", "nobody"}, 1, gone, goneFrench},
        {{"unflag", "ilk"}, 1, gone, goneFrench},
        {{"delete", ""}, 1, gone, goneFrench},
        {{"complete", "milk", "nobody"},
         1,
         "nobody: This reminder is no longer available.\n",
         "nobody : Ce rappel n’est plus disponible.\n"},
        {{"move", "milk", "nobody", "work"},
         1,
         "nobody: This reminder is no longer available.\n",
         "nobody : Ce rappel n’est plus disponible.\n"},
        {{"delete", "nobody", "milk"},
         1,
         "nobody: This reminder is no longer available.\n",
         "nobody : Ce rappel n’est plus disponible.\n"},
        {{"move", "milk", "nowhere"}, 1, noList, noListFrench},
        {{"edit", "milk", "--list", "nowhere"}, 1, noList, noListFrench},
        {{"move", "milk", "TWIN"}, 1, twins, twinsFrench},
        {{"edit", "milk", "--title", " "},
         1,
         "The reminder title cannot be empty.\n",
         "Le titre du rappel ne peut pas être vide.\n"},
        {{"edit", "milk", "--due", "none", "--alert", "15m"},
         1,
         "Choose a due date for the time or notification.\n",
         "Choisissez une échéance pour l’heure ou la notification.\n"},
        {{"edit", "report", "--repeat", "daily"},
         1,
         "Choose a due date for the repetition.\n",
         "Choisissez une échéance pour la répétition.\n"},
        {{"edit", "milk", "--alert", "09:00"},
         1,
         "--alert: with a due time it is a length before it, such as 15m, 1h or 1d.\n",
         "--alert : avec une heure d’échéance, c’est une durée avant elle, comme 15m, 1h ou 1d.\n"},
        {{"add", "x tomorrow", "--alert", "15m"},
         1,
         "--alert: with a due day it is a time of day, such as 09:00 or “1d 18:00”.\n",
         "--alert : avec un jour d’échéance, c’est une heure, comme 09:00 ou « 1d 18:00 ».\n"},
        {{"reschedule", "milk", "some day"},
         2,
         "reschedule: “some day” is no date; write it like 2026-03-27, 2026-03-27T14:30 or “tomorrow 9am”. "
         "See "
         "kestrant --help.\n",
         "reschedule : « some day » n’est pas une date ; écrivez-la comme 2026-03-27, 2026-03-27T14:30 ou "
         "« demain 9h ». Voir kestrant --help.\n"},
    };
    const char* readOnly = "“locked” is read-only.\n";
    const char* readOnlyFrench = "« locked » est en lecture seule.\n";
    // Nothing is locked for root.
    if (isLocked) {
        for (const QStringList& arguments :
             {QStringList{"flag", "fixed"}, QStringList{"edit", "fixed", "--title", "x"},
              QStringList{"move", "milk", "locked"}, QStringList{"add", "x", "--list", "locked"}})
            cases.push_back({arguments, 1, readOnly, readOnlyFrench});
    }
    for (const char* language : {"en", "fr"}) {
        put("preferences.json", QByteArray(R"({"kestrantLanguage": ")") + language + "\"}");
        const bool isFrench = language[0] == 'f';
        for (const RefusalCase& testCase : cases) {
            const Result result = run(testCase.arguments);
            EXPECT_EQ(result.status, testCase.status) << testCase.english;
            EXPECT_EQ(result.err, QString::fromUtf8(isFrench ? testCase.french : testCase.english));
            EXPECT_EQ(result.out, "");
        }
    }
    EXPECT_EQ(file("store/home/milk.ics"), milk);
    EXPECT_EQ(QDir(path("store/home")).entryList(QDir::Files),
              (QStringList{"displayname", "milk.ics", "taxes.ics"}));
    QFile::setPermissions(path("store/locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

}  // namespace
}  // namespace kestrant
