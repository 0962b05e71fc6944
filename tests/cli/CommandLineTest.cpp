#include "CommandLineFixture.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

/// The lists "home" and "work".
class CommandLineTest : public CommandLineFixture {
  protected:
    CommandLineTest() {
        putTodo("home", "milk",
                "SUMMARY:Buy milk\r\nDUE;TZID=Europe/Paris:20260327T143000\r\nPRIORITY:1\r\n"
                "CREATED:20260301T080000Z\r\n");
        putTodo("home", "taxes",
                "SUMMARY:Fill in taxes\r\nDUE;VALUE=DATE:20260326\r\nPRIORITY:9\r\n"
                "DESCRIPTION:Two forms\\nand a stamp\r\nCREATED:20260302T080000Z\r\n");
        putTodo("work", "report",
                "SUMMARY:Ärger mit Bericht\r\nX-PINNED:TRUE\r\nCREATED:20260303T080000Z\r\n");
        putTodo("work", "done", "SUMMARY:Done\r\nSTATUS:COMPLETED\r\nCOMPLETED:20260301T080000Z\r\n");
    }
};

TEST_F(CommandLineTest, ListPrintsTheOpenRemindersAsJson) {
    putTodo("home", "milk",
            "SUMMARY:Buy "
            "milk\r\nDUE;TZID=Europe/Paris:20260327T143000\r\nPRIORITY:1\r\nCREATED:20260301T080000Z\r\n"
            "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:x\r\nTRIGGER;VALUE=DATE-TIME:20260327T131500Z\r\n"
            "END:VALARM\r\n");
    putTodo("home", "taxes",
            "SUMMARY:Fill in "
            "taxes\r\nDUE;VALUE=DATE:20260326\r\nBEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:x\r\n"
            "TRIGGER;VALUE=DATE-TIME:20260325T170000Z\r\nEND:VALARM\r\n");
    const Result result = run({"list", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.json(), QJsonDocument::fromJson(R"([
        {"id": "taxes", "title": "Fill in taxes", "dueDate": "2026-03-26", "dueDateIncludesTime": false,
         "dueAlertSchedule": {"dayRelativeToDueDate": [-1, 18, 0]}, "creationDate": "2026-03-01T08:00:00Z",
         "priority": 0, "listID": "home", "isFlagged": false},
        {"id": "milk", "title": "Buy milk", "dueDate": "2026-03-27T13:30:00Z", "dueDateIncludesTime": true,
         "dueAlertSchedule": {"relativeToDueTime": -900}, "creationDate": "2026-03-01T08:00:00Z",
         "priority": 1, "listID": "home", "isFlagged": false},
        {"id": "report", "title": "Ärger mit Bericht", "dueDate": null, "dueDateIncludesTime": false,
         "dueAlertSchedule": null, "creationDate": "2026-03-03T08:00:00Z", "priority": 0, "listID": "work",
         "isFlagged": true}])"));
    EXPECT_FALSE(QFile::exists(path("ledger.json"))) << "reading leaves no trace";
}

TEST_F(CommandLineTest, ListTakesFiltersSearchAndOrder) {
    const std::pair<QStringList, QStringList> cases[] = {
        {{}, {"taxes", "milk", "report"}},
        {{"--sort", "title"}, {"report", "milk", "taxes"}},
        {{"--sort", "creationNewestFirst"}, {"report", "taxes", "milk"}},
        {{"--sort", "priority"}, {"milk", "taxes", "report"}},
        {{"--today"}, {"milk"}},
        {{"--overdue"}, {"taxes"}},
        {{"--overdue", "--now", "2026-03-27T13:31:00Z"}, {"taxes", "milk"}},
        {{"--flagged"}, {"report"}},
        {{"--list", "work"}, {"report"}},
        {{"--list", "WORK"}, {"report"}},
        {{"--search", "  MILK "}, {"milk"}},
        {{"--search", "ärger"}, {"report"}},
        {{"--search", "il", "--sort", "title"}, {"milk", "taxes"}},
        {{"--list", "home", "--today", "--search", "taxes"}, {}},
    };
    for (const auto& [options, ids] : cases) {
        const Result result = run(QStringList{"list", "--json"} + options);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.ids(), ids) << options.join(u' ').toStdString();
    }
}

TEST_F(CommandLineTest, ListStartsFromThePreferencesAndNeverChangesThem) {
    const QByteArray preferences =
        R"({"reminderSortMode": "manual", "reminderManualOrder": ["report", "milk"], "selectedReminderListID": "home"})";
    put("preferences.json", preferences);
    EXPECT_EQ(run({"list", "--json"}).ids(), (QStringList{"report", "milk", "taxes"}))
        << "all lists all the same";
    EXPECT_EQ(run({"list", "--json", "--sort", "title", "--list", "home"}).ids(),
              (QStringList{"milk", "taxes"}));
    EXPECT_EQ(file("preferences.json"), QString::fromUtf8(preferences));
}

TEST_F(CommandLineTest, ListPrintsAlignedColumnsInThePersonsLanguage) {
    put("store/work/displayname", "仕事");
    putTodo("work", "report",
            "SUMMARY:Tidy\\nup\x1B[2J\r\nDUE;VALUE=DATE:20260328\r\nRRULE:FREQ=WEEKLY\r\nX-PINNED:TRUE\r\n");
    EXPECT_EQ(run({"list"}).out, "Yesterday    !    Fill in taxes  home  taxes\n"
                                 "Today 14:30  !!!  Buy milk       home  milk\n"
                                 "Tomorrow     ⚑↻   Tidy up␛[2J    仕事  report\n");
    put("preferences.json", R"({"kestrantLanguage": "fr"})");
    EXPECT_EQ(run({"list", "--today"}).out, "Aujourd’hui 14:30  !!!  Buy milk  home  milk\n");
    EXPECT_EQ(run({"list", "--search", "nothing"}).out, "Aucun rappel.\n");
}

TEST_F(CommandLineTest, TimesFollowThePersonsClock) {
    locale = QLocale(QLocale::English, QLocale::UnitedStates);
    EXPECT_EQ(run({"list", "--today"}).out, "Today 2:30\u00a0PM  !!!  Buy milk  home  milk\n");
    EXPECT_TRUE(run({"show", "taxes"}).out.contains("Mon 2 Mar 9:00\u00a0AM\n"));
    put("preferences.json", R"({"kestrantLanguage": "fr"})");
    EXPECT_EQ(run({"list", "--today"}).out, "Aujourd’hui 14:30  !!!  Buy milk  home  milk\n");
}

TEST_F(CommandLineTest, ALongTitleMovesNothingButItsOwnLineAndIsCutAtATerminal) {
    const QString title = QStringLiteral("Report ") + QString(500, 'x');
    putTodo("work", "report", "SUMMARY:" + title.toUtf8() + "\r\n");
    const QStringList lines = run({"list"}).out.split('\n');
    EXPECT_EQ(lines[0].size(), QString("Yesterday    !    ").size() + 60 + 2 + QString("home  taxes").size());
    EXPECT_TRUE(lines[2].endsWith(title + "  work  report")) << "whole, for other programs";
    for (const int width : {80, 50, 10}) {
        lineWidth = width;
        const QString out = run({"list"}).out;
        for (const QString& line : out.split('\n'))
            EXPECT_LE(line.size(), std::max(width, 50)) << "as far as that goes";
        EXPECT_TRUE(out.contains("xx…  work  report\n")) << out.toStdString();
    }
}

TEST_F(CommandLineTest, TextOfOthersCannotCommandTheTerminal) {
    const QByteArray hostile = "a\x1B]0;x\x07\xC2\x9B"
                               "2J\xE2\x80\xAE"
                               "b";
    put("store/work/displayname", hostile);
    putTodo("work", "report",
            "SUMMARY:" + hostile + "\r\nDESCRIPTION:" + hostile + "\r\nLOCATION:" + hostile +
                "\r\nURL:" + hostile + "\r\nRRULE:FREQ=DAILY;X=" + hostile + "\r\n");
    putEvent("work", "lunch",
             "SUMMARY:" + hostile +
                 "\r\nDTSTART:20260327T120000Z\r\nDTEND:20260327T130000Z\r\n"
                 "LOCATION:" +
                 hostile + "\r\n");
    put("store/home/" + QString::fromUtf8(hostile).remove(u'/') + ".ics",
        "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\n");
    const auto isHarmless = [](const QString& text) {
        return std::none_of(text.begin(), text.end(), [](QChar character) {
            return (character.category() == QChar::Other_Control && character != u'\n') ||
                   character == QChar(0x202e);
        });
    };
    const QString word = QString::fromUtf8(hostile);
    const QStringList commands[] = {{"list"},
                                    {"list", "--json"},
                                    {"lists"},
                                    {"lists", "--json"},
                                    {"show", "report"},
                                    {"show", "report", "--json"},
                                    {"agenda"},
                                    {"agenda", "--json"},
                                    {"calendars"},
                                    {word},
                                    {"show", word},
                                    {"list", "--" + word},
                                    {"list", "--list", word + "?"},
                                    {"list", "--store", "vdir:/" + word},
                                    {"add", word + " tomorrow"}};
    for (const QStringList& command : commands) {
        const Result result = run(command);
        EXPECT_TRUE(isHarmless(result.out)) << result.out.toStdString();
        EXPECT_TRUE(isHarmless(result.err)) << result.err.toStdString();
    }
    EXPECT_EQ(run({"show", "report", "--json"}).json().object()["title"].toString(), word) << "exactly";
}

TEST_F(CommandLineTest, CompletionsAreToldOnceEach) {
    EXPECT_EQ(run({"complete", "milk"}).counted, 1);
    EXPECT_EQ(run({"complete", "milk"}).counted, 0) << "it is";
    EXPECT_EQ(run({"complete", "milk", "report", "taxes"}).counted, 2);
    EXPECT_EQ(run({"complete", "done"}).counted, 0);
}

TEST_F(CommandLineTest, CompletionsAreCountedWhereTheNamedFileOfDeploymentValuesSays) {
    const Result refused = run({"--configuration", "none", "complete", "milk"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, "No file. See kestrant --help.\n");
    EXPECT_EQ(refused.counted, 0) << "nothing was done";
    const Result done = run({"complete", "milk", "--configuration=values.json"});
    EXPECT_EQ(done.configuration, "values.json");
    EXPECT_EQ(done.counted, 1);
    EXPECT_EQ(run({"list"}).configuration, "");
}

TEST_F(CommandLineTest, ListsPrintsTheLists) {
    put("store/home/displayname", "Maison");
    put("store/home/color", "#ff8800");
    EXPECT_EQ(run({"lists"}).out, "Maison  home\n"
                                  "work    work\n");
    const QJsonArray lists = run({"lists", "--json"}).json().array();
    ASSERT_EQ(lists.size(), 2);
    EXPECT_EQ(lists[0].toObject(), (QJsonObject{{"id", "home"},
                                                {"title", "Maison"},
                                                {"color", "#FF8800"},
                                                {"allowsContentModifications", true}}));
}

TEST_F(CommandLineTest, AddCreatesAReminderAndPrintsItsIdentifier) {
    const Result added =
        run({"add", " Call Zoé ", "--due", "2026-04-02T09:15", "--priority", "high", "--list", "work"});
    EXPECT_EQ(added.status, 0) << added.err.toStdString();
    const QString id = added.out.trimmed();
    const Result listed = run({"list", "--search", "zoé", "--json"});
    ASSERT_EQ(listed.ids(), QStringList{id});
    const QJsonObject task = listed.json().array()[0].toObject();
    EXPECT_EQ(task["title"], "Call Zoé");
    EXPECT_EQ(task["dueDate"], "2026-04-02T07:15:00Z");
    EXPECT_EQ(task["priority"], 1);
    EXPECT_EQ(task["listID"], "work");
    EXPECT_EQ(task["creationDate"], "2026-03-27T11:00:00Z");

    const QJsonObject second = run({"add", "Rest", "--due", "2026-04-03", "--json"}).json().object();
    EXPECT_EQ(run({"show", second["id"].toString(), "--json"}).json().object()["dueDate"], "2026-04-03");
}

TEST_F(CommandLineTest, AddMakesTheFolderAndTheFirstListOfANewStore) {
    const QString store = "vdir:" + path("new/store");
    EXPECT_EQ(run({"list", "--store", store}).status, 1);
    EXPECT_FALSE(QFile::exists(path("new")));
    EXPECT_EQ(run({"add", "First", "--store", store}).err, "");
    EXPECT_EQ(run({"list", "--json", "--store", store}).ids().size(), 1);
}

TEST_F(CommandLineTest, CompleteWritesTheFileAndTheLedgerBeforeItEnds) {
    const Result result = run({"complete", "milk"});
    EXPECT_EQ(result.status, 0) << result.err.toStdString();
    EXPECT_TRUE(file("store/home/milk.ics").contains("\r\nSTATUS:COMPLETED\r\n"));
    EXPECT_TRUE(file("store/home/milk.ics").contains("\r\nCOMPLETED:20260327T110000Z\r\n"));
    EXPECT_EQ(run({"list", "--json"}).ids(), (QStringList{"taxes", "report"}));
    const QJsonObject ledger = QJsonDocument::fromJson(file("ledger.json").toUtf8()).object();
    EXPECT_EQ(ledger["didBackfill"], true);
    EXPECT_EQ(ledger["records"].toObject().keys(), (QStringList{"done", "milk"}));
    EXPECT_EQ(run({"complete", "milk"}).status, 0) << "it is";
}

TEST_F(CommandLineTest, CompleteAdvancesAReminderThatRepeats) {
    putTodo("home", "water", "SUMMARY:Water\r\nDUE;VALUE=DATE:20260327\r\nRRULE:FREQ=DAILY\r\n");
    EXPECT_EQ(run({"complete", "water"}).status, 0);
    EXPECT_EQ(run({"show", "water", "--json"}).json().object()["dueDate"], "2026-03-28");
    EXPECT_EQ(QJsonDocument::fromJson(file("ledger.json").toUtf8()).object()["records"].toObject().size(), 2);
}

TEST_F(CommandLineTest, DeleteRemovesTheFileAndKeepsTheCompletionInTheLedger) {
    EXPECT_EQ(run({"delete", "taxes"}).status, 0);
    EXPECT_FALSE(QFile::exists(path("store/home/taxes.ics")));
    EXPECT_EQ(run({"delete", "done"}).status, 0);
    EXPECT_EQ(QJsonDocument::fromJson(file("ledger.json").toUtf8()).object()["records"].toObject().keys(),
              QStringList{"done"});
}

TEST_F(CommandLineTest, ShowPrintsEverythingAboutAReminder) {
    EXPECT_EQ(run({"show", "taxes"}).out, "Title       Fill in taxes\n"
                                          "List        home\n"
                                          "Due         Yesterday\n"
                                          "Marks       !\n"
                                          "Created     Mon 2 Mar 09:00\n"
                                          "Notes       Two forms\n"
                                          "            and a stamp\n"
                                          "Identifier  taxes\n");
    const QJsonObject done = run({"show", "done", "--json"}).json().object();
    EXPECT_EQ(done["isCompleted"], true);
    EXPECT_EQ(done["completionDate"], "2026-03-01T08:00:00Z");
}

struct RefusalCase {
    QStringList arguments;
    int status;
    const char* message;
};

TEST_F(CommandLineTest, WhatIsRefusedIsExplainedAndChangesNothing) {
    const QString milk = file("store/home/milk.ics");
    const RefusalCase cases[] = {
        {{"complete", "nobody"}, 1, "This reminder is no longer available.\n"},
        {{"delete", "nobody"}, 1, "This reminder is no longer available.\n"},
        {{"show", "nobody"}, 1, "This reminder is no longer available.\n"},
        {{"show", ""}, 1, "This reminder is no longer available.\n"},
        {{"add", " \t "}, 1, "The reminder title cannot be empty.\n"},
        {{"add", "x", "--list", "nowhere"}, 1, "There is no list “nowhere”; kestrant lists shows them.\n"},
        {{"list", "--list", "nowhere"}, 1, "There is no list “nowhere”; kestrant lists shows them.\n"},
        {{"list", "--store", "vdir:/no/such"}, 1, "There is no folder /no/such.\n"},
        {{"list", "--sort"}, 2, "--sort needs a value. See kestrant --help.\n"},
        {{"remind"}, 2, "There is no command remind. See kestrant --help.\n"},
    };
    for (const RefusalCase& testCase : cases) {
        const Result result = run(testCase.arguments);
        EXPECT_EQ(result.status, testCase.status) << testCase.message;
        EXPECT_EQ(result.err, QString::fromUtf8(testCase.message));
        EXPECT_EQ(result.out, "");
    }
    EXPECT_EQ(file("store/home/milk.ics"), milk);
    EXPECT_EQ(QDir(path("store/home")).entryList(QDir::Files), (QStringList{"milk.ics", "taxes.ics"}));
}

TEST_F(CommandLineTest, HelpAndVersionNeedNoStore) {
    EXPECT_EQ(run({"--version"}).out, "kestrant 1.2.3\n");
    const Result help = run({"list", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.startsWith("Usage: kestrant COMMAND"));
}

TEST_F(CommandLineTest, ADamagedFileIsNamedAndHidesNothingElse) {
    put("store/home/broken.ics", "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nSUMMARY:cut");
    const Result result = run({"list", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.ids(), (QStringList{"taxes", "milk", "report"}));
    EXPECT_TRUE(result.err.contains("broken.ics")) << result.err.toStdString();
    EXPECT_EQ(result.err.count(u'\n'), 1);

    // A store of which nothing could be read has not said that there are no reminders.
    put("other/list/broken.ics", "nothing");
    const Result silent = run({"list", "--store", "vdir:" + path("other")});
    EXPECT_EQ(silent.status, 1);
    EXPECT_TRUE(silent.err.contains(QLatin1String("broken.ics")));
    EXPECT_EQ(silent.out, QString());
}

TEST_F(CommandLineTest, DamagedPreferencesAndLedgerStandInNobodysWayAndAreNotLost) {
    put("preferences.json", "{\"kestrantLang");
    put("ledger.json", "{\"records\":");
    EXPECT_EQ(run({"list"}).status, 0);
    EXPECT_EQ(file("ledger.json"), "{\"records\":");
    EXPECT_EQ(run({"complete", "milk"}).status, 0);
    EXPECT_EQ(file("preferences.json"), "{\"kestrantLang");
    EXPECT_EQ(file("ledger.json.damaged-1"), "{\"records\":");
    EXPECT_TRUE(file("ledger.json").contains("\"milk\""));
}

TEST_F(CommandLineTest, ALedgerThatCannotBeWrittenIsSaidButTheReminderIsCompleted) {
    ASSERT_TRUE(QDir().mkpath(path("ledger.json")));
    const Result result = run({"complete", "milk"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "Completion history could not be saved.\n");
    EXPECT_TRUE(file("store/home/milk.ics").contains("STATUS:COMPLETED"));
}

TEST_F(CommandLineTest, AFileInTheFoldersPlaceIsRefused) {
    put("file", "x");
    put("preferences.json",
        QJsonDocument(QJsonObject{{"kestrantEventStore", "vdir:" + path("file")}}).toJson());
    const Result result = run({"list"});
    EXPECT_EQ(result.status, 1);
    EXPECT_FALSE(result.err.isEmpty());
    EXPECT_EQ(file("file"), "x");
}

TEST_F(CommandLineTest, RecapCountsWhatWasCompletedAlsoElsewhere) {
    putTodo("home", "done", "SUMMARY:Done\r\nSTATUS:COMPLETED\r\nCOMPLETED:20260327T080000Z\r\n");
    putTodo("home", "before", "SUMMARY:Before\r\nSTATUS:COMPLETED\r\nCOMPLETED:20260318T080000Z\r\n");
    const QJsonObject week = run({"recap", "--week", "--json"}).json().object();
    EXPECT_EQ(week["completed"], 1);
    EXPECT_EQ(week["week"], 13);
    EXPECT_EQ(week["lists"], (QJsonArray{QJsonObject{{"title", "home"}, {"count", 1}}}));
    const Result all = run({"recap"});
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.out.count(u'\n'), 4);
    EXPECT_TRUE(run({"recap", "--month"}).out.contains(QStringLiteral("March"))) << qPrintable(all.out);
    EXPECT_EQ(run({"recap", "--month", "--year"}).status, 2);
}

}  // namespace
}  // namespace kestrant
