#include "reminders/FlaggedReminderAutomation.h"
#include "reminders/scripting/ScriptInterpreter.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

namespace kestrant {
namespace {

using scripting::runScript;
using testing::ElementsAre;
using testing::IsEmpty;

/// Lists and reminders that a test writes down; can refuse to change.
class KnownReminders : public scripting::ScriptDatabase {
  public:
    tl::expected<std::vector<List>, ScriptError> lists() override { return knownLists; }
    tl::expected<std::vector<Reminder>, ScriptError> reminders(Kind kind) override {
        if (denied)
            return tl::unexpected(*denied);
        ++reads;
        return kind == Kind::open ? open : completed;
    }
    tl::expected<void, ScriptError> setFlagged(const QString& reminderID, bool flag) override {
        if (refused.contains(reminderID))
            return tl::unexpected(ScriptError{ScriptError::Code::failed, QStringLiteral("refused")});
        for (auto* reminders : {&open, &completed}) {
            for (Reminder& reminder : *reminders) {
                if (reminder.id == reminderID)
                    reminder.isFlagged = flag;
            }
        }
        return {};
    }
    void beginTimeLimit(int seconds) override { limits.push_back(seconds); }
    void endTimeLimit() override { limits.push_back(0); }

    /// Ids of what is flagged.
    [[nodiscard]] std::vector<QString> flagged() const {
        std::vector<QString> result;
        for (const auto* reminders : {&open, &completed}) {
            for (const Reminder& reminder : *reminders) {
                if (reminder.isFlagged)
                    result.push_back(reminder.id);
            }
        }
        return result;
    }

    std::vector<List> knownLists{{QStringLiteral("1"), QStringLiteral("Home")},
                                 {QStringLiteral("2"), QStringLiteral("Work")}};
    std::vector<Reminder> open;
    std::vector<Reminder> completed;
    QStringList refused;
    std::optional<ScriptError> denied;
    int reads = 0;
    std::vector<int> limits;
};

class ScriptTest : public testing::Test {
  protected:
    void put(const char* id, const char* list, bool flagged = false) {
        database.open.push_back({QString::fromUtf8(id), QString::fromUtf8(list), flagged});
    }
    tl::expected<QStringList, ScriptError> run(const QString& script) { return runScript(script, database); }
    /// The texts a script returns within "tell", or its error with an exclamation mark.
    QString returned(const char* lines) {
        const auto result =
            run(QStringLiteral("tell application \"Reminders\"\n%1\nend tell").arg(QString::fromUtf8(lines)));
        return result ? result->join(QLatin1Char(' ')) : QLatin1Char('!') + result.error().message;
    }
    void flag(const char* suffix, const char* list = nullptr, bool value = true) {
        const auto result = run(FlaggedReminderAutomation::writeScript(
            QString::fromUtf8(suffix), value, list ? std::optional(QString::fromUtf8(list)) : std::nullopt));
        EXPECT_TRUE(result.has_value()) << qPrintable(result.error().message);
    }
    KnownReminders database;
};

TEST_F(ScriptTest, TheScriptThatReadsGivesTheOpenFlaggedReminders) {
    put("A-1", "1", true);
    put("b", "2");
    put("c", "2", true);
    database.completed.push_back({QStringLiteral("done"), QStringLiteral("1"), true});
    EXPECT_EQ(
        FlaggedReminderAutomation::readScript(),
        QStringLiteral("with timeout of 8 seconds\n"
                       "    tell application \"Reminders\"\n"
                       "        return id of every reminder whose flagged is true and completed is false\n"
                       "    end tell\n"
                       "end timeout"));
    EXPECT_THAT(*run(FlaggedReminderAutomation::readScript()),
                ElementsAre("x-kestrant-reminder://A-1", "x-kestrant-reminder://c"));
    EXPECT_THAT(database.limits, ElementsAre(8, 0));
    EXPECT_EQ(database.reads, 1) << "completed ones are not looked at";
    for (auto& reminder : database.open)
        reminder.isFlagged = false;
    EXPECT_THAT(*run(FlaggedReminderAutomation::readScript()), IsEmpty());
    database.denied = ScriptError{ScriptError::Code::notPermitted, {}};
    EXPECT_EQ(run(FlaggedReminderAutomation::readScript()).error().code, ScriptError::Code::notPermitted);
}

TEST(WriteScript, IsWrittenLineByLine) {
    EXPECT_EQ(FlaggedReminderAutomation::writeScript(QStringLiteral("abc"), true, QStringLiteral("Home")),
              QStringLiteral("with timeout of 8 seconds\n"
                             "    tell application \"Reminders\"\n"
                             "        set targetSuffix to \"abc\"\n"
                             "        try\n"
                             "    set flagged of (first reminder of list \"Home\" whose id ends with "
                             "targetSuffix) to true\n"
                             "    return\n"
                             "end try\n"
                             "        repeat with aList in lists\n"
                             "            try\n"
                             "                set flagged of (first reminder of aList whose id ends with "
                             "targetSuffix) to true\n"
                             "                return\n"
                             "            end try\n"
                             "        end repeat\n"
                             "    end tell\n"
                             "end timeout"));
    const QString withoutList = QStringLiteral(
        "with timeout of 8 seconds\n"
        "    tell application \"Reminders\"\n"
        "        set targetSuffix to \"abc\"\n"
        "        repeat with aList in lists\n"
        "            try\n"
        "                set flagged of (first reminder of aList whose id ends with targetSuffix) to false\n"
        "                return\n"
        "            end try\n"
        "        end repeat\n"
        "    end tell\n"
        "end timeout");
    EXPECT_EQ(FlaggedReminderAutomation::writeScript(QStringLiteral("abc"), false, std::nullopt),
              withoutList);
    EXPECT_EQ(FlaggedReminderAutomation::writeScript(QStringLiteral("abc"), false, QString()), withoutList);
}

TEST_F(ScriptTest, TheScriptThatWritesFindsTheReminderWhereverItIs) {
    put("one", "1");
    put("TWO", "2");
    database.completed.push_back({QStringLiteral("done"), QStringLiteral("2")});
    flag("one", "Home");
    flag("two", "Home");
    flag("done");
    flag("nobody");
    EXPECT_THAT(database.flagged(), ElementsAre("one", "TWO", "done"));
    flag("two", "Work", false);
    flag("done", "no such list", false);
    EXPECT_THAT(database.flagged(), ElementsAre("one"));
}

TEST_F(ScriptTest, NeverFlagsAnotherReminderThatMerelyEndsAlike) {
    put("21", "1");
    put("1", "2");
    put("folder/x", "2");
    put("ax", "1");
    database.refused << QStringLiteral("1");
    flag("1", "Work");
    EXPECT_THAT(database.flagged(), IsEmpty()) << "not even where the right one refuses";
    flag("x", "Home");
    EXPECT_THAT(database.flagged(), ElementsAre("folder/x"));
    database.refused.clear();
    flag("1", "Home");
    EXPECT_THAT(database.flagged(), ElementsAre("1", "folder/x"));
}

TEST_F(ScriptTest, AListsNameNeverBecomesScript) {
    const char* const names[] = {
        "say \"hi\"", "back\\slash",        "ends with \\",  "two\nlines",
        "tab\there",  "\\\" & quit & \\\"", "emoji 🛒 é", "\" of x)\n    return\nend try",
        "日本語",
    };
    for (const char* name : names) {
        database.open = {{QStringLiteral("right"), QStringLiteral("1")}};
        database.knownLists = {{QStringLiteral("1"), QString::fromUtf8(name)}};
        flag("right", name);
        EXPECT_THAT(database.flagged(), ElementsAre("right")) << name;
        EXPECT_EQ(returned(("return " + scriptLiteral(QString::fromUtf8(name))).toUtf8().constData()),
                  QString::fromUtf8(name));
    }
    flag("\" to x\nreturn \"");
}

TEST_F(ScriptTest, TheLanguageIsUnderstoodAsFarAsItGoes) {
    put("a", "1", true);
    put("b", "2");
    struct Case {
        const char* script;
        const char* expected;
    };
    const Case cases[] = {
        {"return", ""},
        {"RETURN \"x\"", "x"},
        {"set x to \"a\"\nset y to x\nreturn y", "a"},
        {"return id of first reminder of list \"home\" whose flagged is true", "x-kestrant-reminder://a"},
        {"return flagged of (first reminder whose id is \"X-KESTRANT-REMINDER://B\")", "false"},
        {"return completed of every reminder of list \"Work\"", "false"},
        {"try\nreturn nothing\nend try\nreturn \"after\"", "after"},
        {"repeat with l in lists\ntry\nreturn id of first reminder of l whose flagged is false\nend try\nend "
         "repeat",
         "x-kestrant-reminder://b"},
        {"set flagged of (first reminder whose flagged is false) to true\nreturn id of every reminder whose "
         "flagged is "
         "true",
         "x-kestrant-reminder://a x-kestrant-reminder://b"},
        {"return nothing", "!“nothing” is not defined"},
        {"return list \"Home\"", "!the script returned something that is no text"},
        {"return id of list \"Home\"", "!only reminders have this property"},
        {"return first reminder whose flagged is \"yes\"",
         "!a property is compared with something of another kind"},
        {"return first reminder whose flagged ends with true",
         "!a property is compared with something of another kind"},
        {"set completed of (first reminder) to true",
         "!only the flag of a reminder can be set, to true or false"},
        {"repeat with x in \"abc\"\nend repeat", "!only a list can be gone through"},
        {"return every reminder of \"Home\"", "!only lists have reminders"},
        {"delete every reminder", "!line 2: expected a statement"},
        {"set x to", "!line 2: expected a value"},
        {"return (\"x\"", "!line 2: expected \")\""},
        {"return \"x", "!line 3: a text without an end"},
        {"return \"\\x\"", "!line 2: a text without an end"},
        {"return \"x\" & \"y\"", "!line 2: “&” is not understood"},
        {"return \"x\" \"y\"", "!line 2: expected the end of the line"},
        {"try\nreturn", "!line 4: expected \"try\""},
        {"tell application \"Finder\"\nend tell", "!there is no application “Finder”"},
        {"with timeout of 99999999999 seconds\nend timeout", "!line 2: expected a smaller number"},
    };
    for (const Case& each : cases) {
        const auto before = database.open;
        EXPECT_EQ(returned(each.script).toStdString(), each.expected) << each.script;
        database.open = before;
    }
    EXPECT_EQ(run(QStringLiteral("return lists")).error().message,
              QStringLiteral("no application is being told"));
    EXPECT_EQ(run(QStringLiteral("end tell")).error().message,
              QStringLiteral("line 1: expected a statement"));
}

TEST_F(ScriptTest, OnlyWhatCanBeHelpedIsLeftToTry) {
    for (const auto code :
         {ScriptError::Code::timedOut, ScriptError::Code::interrupted, ScriptError::Code::notPermitted}) {
        database.denied = ScriptError{code, {}};
        EXPECT_EQ(
            run(FlaggedReminderAutomation::writeScript(QStringLiteral("x"), true, std::nullopt)).error().code,
            code);
    }
}

}  // namespace
}  // namespace kestrant
