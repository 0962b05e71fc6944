#include "cli/CommandLineArguments.h"

#include "cli/CommandLineNames.h"

#include <QDir>

#include <gmock/gmock.h>

#include <utility>

namespace kestrant {
namespace {

using Command = CommandLineArguments::Command;

/// Friday, noon.
const CommandLineContext paris{parseIso8601(u"2026-03-27T11:00:00Z").value(),
                               *TimeZone::named("Europe/Paris")};

TEST(CommandLineArguments, ThatAreWrongAreRefusedWithTheReason) {
    const std::pair<QStringList, const char*> cases[] = {
        {{}, "A command is missing."},
        {{"--json"}, "A command is missing."},
        {{"events"}, "There is no command events."},
        {{""}, "There is no command ."},
        {{"list", "--colour"}, "There is no option --colour."},
        {{"list", "-x"}, "There is no option -x."},
        {{"list", "--json=yes"}, "--json takes no value."},
        {{"list", "--json", "--json"}, "--json is given more than once."},
        {{"list", "--sort"}, "--sort needs a value."},
        {{"list", "--sort", "due"},
         "--sort must be one of: manual, dueDate, priority, title, creationOldestFirst, "
         "creationNewestFirst."},
        {{"list", "work"}, "“work” is one argument too many; a text of several words goes in quotes."},
        {{"list", "--due", "2026-03-27"}, "list has no option --due."},
        {{"lists", "--today"}, "lists has no option --today."},
        {{"complete", "id", "--list", "a"}, "complete has no option --list."},
        {{"add"}, "add needs a title."},
        {{"add", "Buy", "milk"}, "“milk” is one argument too many; a text of several words goes in quotes."},
        {{"add", "x", "--priority", "High"}, "--priority must be one of: high, normal, low."},
        {{"add", "x", "--priority", "none"}, "--priority must be one of: high, normal, low."},
        {{"edit", "id", "--priority", "0"}, "--priority must be one of: high, normal, low, none."},
        {{"edit", "id", "--repeat", "hourly"},
         "--repeat must be one of: none, daily, weekly, monthly, yearly."},
        {{"add", "x", "--notes", "y"}, "add has no option --notes."},
        {{"edit", "id"},
         "edit needs one or more of: --list, --title, --notes, --due, --priority, --alert, --repeat."},
        {{"edit", "id", "--json"},
         "edit needs one or more of: --list, --title, --notes, --due, --priority, --alert, --repeat."},
        {{"edit", "--title", "x"}, "edit needs the identifier of a reminder."},
        {{"edit", "id", "--literal"}, "edit has no option --literal."},
        {{"move", "id"}, "move needs a list."},
        {{"reschedule", "id"}, "reschedule needs a date, or none."},
        {{"reschedule", "id", "some day"},
         "reschedule: “some day” is no date; write it like 2026-03-27, 2026-03-27T14:30 or “tomorrow 9am”."},
        {{"flag"}, "flag needs the identifier of a reminder."},
        {{"show", "id", "other"},
         "“other” is one argument too many; a text of several words goes in quotes."},
        {{"unflag", "id", "--flagged"}, "unflag has no option --flagged."},
        {{"complete"}, "complete needs the identifier of a reminder."},
        {{"delete"}, "delete needs the identifier of a reminder."},
        {{"show"}, "show needs the identifier of a reminder."},
        {{"list", "--store", "/home"}, "“/home” is no store; write vdir:PATH or evolution."},
        {{"list", "--store", "vdir:"}, "“vdir:” is no store; write vdir:PATH or evolution."},
        {{"list", "--store=files:/home"}, "“files:/home” is no store; write vdir:PATH or evolution."},
        {{"list", "--now", "2026-03-27"},
         "--now: “2026-03-27” is no time; write it like 2026-03-27T14:30:00Z."},
        {{"agenda", "--reminders", "--no-reminders"}, "--reminders and --no-reminders exclude each other."},
        {{"agenda", "--start", "2026-03-27"}, "agenda has no option --start."},
        {{"list", "--all"}, "list has no option --all."},
        {{"add-event"}, "add-event needs a title."},
        {{"add-event", "x", "--end", "2026-03-27T14:30"}, "--end and --all-day need --start."},
        {{"add-event", "x", "--start", "noon"},
         "--start: “noon” is no date; write it like 2026-03-27 or 2026-03-27T14:30."},
        {{"add-event", "x", "--start", "2026-03-27T14:30", "--end", "15:00"},
         "--end: “15:00” is no date; write it like 2026-03-27 or 2026-03-27T14:30."},
        {{"add-event", "x", "--start", "2026-03-27"},
         "--start and --end need a time of day, or --all-day beside them."},
        {{"add-event", "x", "--start", "2026-03-27T14:30", "--end", "2026-03-27"},
         "--start and --end need a time of day, or --all-day beside them."},
        {{"add-event", "x", "--start", "2026-03-27", "--end", "2026-03-27T14:30", "--all-day"},
         "With --all-day, --start and --end are days without a time."},
        {{"delete-event"}, "delete-event needs the identifier of a row of the agenda."},
        {{"list", "--now", "noon"}, "--now: “noon” is no time; write it like 2026-03-27T14:30:00Z."},
    };
    for (const auto& [arguments, message] : cases) {
        const auto parsed = parseCommandLine(arguments, paris);
        ASSERT_FALSE(parsed.has_value()) << message;
        EXPECT_EQ(parsed.error().english, QString::fromUtf8(message));
        EXPECT_NE(parsed.error().french, parsed.error().english);
        EXPECT_FALSE(parsed.error().french.contains(u'%'));
    }
}

struct DueCase {
    const char* typed;
    std::optional<const char*> instant;
    bool includesTime = false;
};

TEST(CommandLineArguments, TakeDueDatesAsDaysLocalTimesInstantsOrWords) {
    const DueCase cases[] = {
        {"2026-03-27", "2026-03-26T23:00:00Z", false},
        {"2026-03-27T14:30", "2026-03-27T13:30:00Z", true},
        {"2026-03-27 14:30", "2026-03-27T13:30:00Z", true},
        {"2026-03-27 14:30Z", "2026-03-27T14:30:00Z", true},
        {"2026-03-27T14:30:15", "2026-03-27T13:30:15Z", true},
        {"2026-03-27T14:30:00Z", "2026-03-27T14:30:00Z", true},
        {"2026-03-27T14:30:00+05:30", "2026-03-27T09:00:00Z", true},
        {"2026-03-29T02:30", "2026-03-29T01:30:00Z", true},
        {"2024-02-29", "2024-02-28T23:00:00Z", false},
        {"tomorrow", "2026-03-27T23:00:00Z", false},
        {"Tuesday 9am", "2026-03-31T07:00:00Z", true},
        {"demain 9h", "2026-03-28T08:00:00Z", true},
        {"11:00", "2026-03-28T10:00:00Z", true},
        {"2026-02-29", {}},
        {"2026-03-27T", {}},
        {"2026-03-27T24:00", {}},
        {"2026-03-27/14:30", {}},
        {"0000-01-01", {}},
        {"tomorrow !!", {}},
        {"tomorrow or never", {}},
        {"tomorrow tuesday", {}},
        {"", {}},
    };
    for (const DueCase& testCase : cases) {
        const auto parsed = parseCommandLine({"add", "x", "--due", testCase.typed}, paris);
        ASSERT_EQ(parsed.has_value(), testCase.instant.has_value()) << testCase.typed;
        if (!parsed) {
            EXPECT_TRUE(parsed.error().english.startsWith("--due: ")) << testCase.typed;
            continue;
        }
        EXPECT_EQ(toIso8601((*parsed->due)->instant), *testCase.instant) << testCase.typed;
        EXPECT_EQ((*parsed->due)->includesTime, testCase.includesTime) << testCase.typed;
    }
}

TEST(CommandLineArguments, ReadDatesInWordsInThePersonsLanguageFromThePresentThatIsNamed) {
    CommandLineContext french = paris;
    french.language = Language::french;
    const QStringList rescheduled{"reschedule", "id", "on 3/4"};
    EXPECT_EQ(toIso8601((*parseCommandLine(rescheduled, paris)->due)->instant), "2027-03-03T23:00:00Z");
    EXPECT_EQ(toIso8601((*parseCommandLine(rescheduled, french)->due)->instant), "2026-04-02T22:00:00Z");
    EXPECT_EQ(
        toIso8601(
            (*parseCommandLine({"add", "x", "--due", "tomorrow", "--now", "2026-05-01T12:00Z"}, paris)->due)
                ->instant),
        "2026-05-01T22:00:00Z");
}

TEST(CommandLineArguments, ClearWhatIsCalledNone) {
    const auto cleared = parseCommandLine(
        {"edit", "id", "--due=none", "--priority", "none", "--alert", "none", "--notes", ""}, paris);
    ASSERT_TRUE(cleared.has_value());
    EXPECT_TRUE(cleared->due && !*cleared->due);
    EXPECT_TRUE(cleared->priority && !*cleared->priority);
    EXPECT_TRUE(cleared->alert && !*cleared->alert);
    EXPECT_EQ(cleared->notes, "");
    EXPECT_FALSE(cleared->title || cleared->list);
    const auto rescheduled = parseCommandLine({"reschedule", "id", "none"}, paris);
    ASSERT_TRUE(rescheduled.has_value());
    EXPECT_TRUE(rescheduled->due && !*rescheduled->due);
}

struct AlertCase {
    const char* typed;
    std::optional<ReminderAlertSchedule> alert;
};

TEST(CommandLineArguments, TakeAlertsAsALengthOrATimeOfDay) {
    const AlertCase cases[] = {
        {"0", RelativeToDueTime{0}},
        {"15m", RelativeToDueTime{-900}},
        {"2h", RelativeToDueTime{-7200}},
        {"1d", RelativeToDueTime{-86400}},
        {"09:00", DayRelativeToDueDate{0, 9, 0}},
        {"9:30", DayRelativeToDueDate{0, 9, 30}},
        {"1d 18:00", DayRelativeToDueDate{-1, 18, 0}},
        {"2d 18:00", {}},
        {"24:00", {}},
        {"15", {}},
        {"-15m", {}},
        {"99999m", {}},
        {"1d18:00", {}},
        {"", {}},
    };
    for (const AlertCase& testCase : cases) {
        const auto parsed = parseCommandLine({"edit", "id", "--alert", testCase.typed}, paris);
        ASSERT_EQ(parsed.has_value(), testCase.alert.has_value()) << testCase.typed;
        if (parsed) {
            EXPECT_EQ(*parsed->alert, testCase.alert) << testCase.typed;
        }
    }
}

TEST(CommandLineArguments, MayStandInAnyOrder) {
    const auto parsed =
        parseCommandLine({"--now=2026-03-27T12:00:00Z", "--store", "vdir:some/../lists", "list", "--sort",
                          "title", "--list=a=b", "--today", "--search", "--x", "--json"},
                         paris);
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->command, Command::list);
    EXPECT_EQ(parsed->now, parseIso8601(u"2026-03-27T12:00:00Z"));
    EXPECT_EQ(parsed->store->folder, QDir::current().absoluteFilePath("lists"));
    EXPECT_EQ(parsed->sort, ReminderSortMode::title);
    EXPECT_EQ(parsed->list, "a=b");
    EXPECT_EQ(parsed->search, "--x");
    EXPECT_TRUE(parsed->todayOnly && parsed->json);
    EXPECT_FALSE(parsed->overdueOnly || parsed->isFlagged);

    EXPECT_EQ(parseCommandLine({"add", "--", "--help"}, paris)->subjects, QStringList{"--help"});
    EXPECT_EQ(parseCommandLine({"add", "-"}, paris)->subjects, QStringList{"-"});
    const auto moved = parseCommandLine({"move", "one", "--json", "two", "Work"}, paris);
    EXPECT_EQ(moved->subjects, (QStringList{"one", "two"}));
    EXPECT_EQ(moved->list, "Work");
    EXPECT_EQ(parseCommandLine({"complete", "x", "--help"}, paris)->command, Command::help);
    EXPECT_EQ(parseCommandLine({"--version"}, paris)->command, Command::version);
}

TEST(CommandLineArguments, AreAllToldByTheUsage) {
    for (const QString& usage : {commandLineUsage().english, commandLineUsage().french}) {
        for (const CommandName& command : commandNames())
            EXPECT_TRUE(usage.contains(QStringLiteral(" %1 ").arg(command.name))) << command.name;
        for (const OptionName& option : optionNames()) {
            const bool isTold = usage.contains(option.name) || option.name == std::string_view("-h");
            EXPECT_TRUE(isTold) << option.name;
        }
    }
}

TEST(CommandLineArguments, NameACommandWhereAWordStandsThatIsNoOptionsValue) {
    EXPECT_TRUE(namesCommand({"list"}));
    EXPECT_TRUE(namesCommand({"--store", "vdir:x", "--now=x", "--json", "lists"}));
    EXPECT_TRUE(namesCommand({"typo"}));
    EXPECT_FALSE(namesCommand({}));
    EXPECT_FALSE(namesCommand({"--store", "vdir:x"}));
    EXPECT_FALSE(namesCommand({"--toggle", "--help"}));
}

}  // namespace
}  // namespace kestrant
