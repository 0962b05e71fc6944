#pragma once

#include "cli/TypedDate.h"
#include "eventkit/model/EventStoreLocation.h"
#include "foundation/Instant.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"
#include "recap/Recap.h"
#include "reminders/model/ReminderAlertSchedule.h"
#include "reminders/model/ReminderTask.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// The new value of a property: absent leaves it as it is, an empty value clears it.
template <typename Value>
using Wanted = std::optional<std::optional<Value>>;

/// One command with everything that was asked of it, in the order of what belongs together.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): there is one of them.
struct CommandLineArguments {
    enum class Command {
        list,
        lists,
        add,
        edit,
        reschedule,
        move,
        flag,
        unflag,
        complete,
        remove,
        show,
        recap,
        agenda,
        calendars,
        addEvent,
        deleteEvent,
        help,
        version
    };

    Command command = Command::help;
    /// The title to add ("-" for those of the standard input), the row of the agenda, or the identifiers of
    /// reminders; these may be cut short as long as they fit one reminder only.
    QStringList subjects;
    bool json = false;
    /// Where one was named.
    std::optional<EventStoreLocation> store;
    /// A file of deployment values, where one was named.
    std::optional<QString> configurationFile;
    /// The time that is taken for the present.
    std::optional<Instant> now;

    /// The identifier or the title of a list.
    std::optional<QString> list;
    std::optional<ReminderSortMode> sort;
    bool todayOnly = false;
    bool overdueOnly = false;
    /// To list flagged reminders alone, or to flag the one that is added.
    bool isFlagged = false;
    QString search;

    /// The title to add is nothing but a title, whatever its words look like.
    bool isLiteral = false;
    /// A list that the title names is made where there is none.
    bool makesLists = false;
    std::optional<QString> title;
    /// Empty clears them.
    std::optional<QString> notes;
    Wanted<TypedDate> due;
    Wanted<NewReminderPriority> priority;
    Wanted<ReminderAlertSchedule> alert;
    std::optional<ReminderRepeat> repeat;

    /// Of the recap; absent for all four.
    std::optional<RecapKind> recapKind;

    /// The two years of the full calendar instead of the coming week.
    bool allEvents = false;
    /// Absent leaves it to the preferences.
    std::optional<bool> showsReminders;
    /// Of a new event: days when it takes whole days, times otherwise.
    std::optional<TypedDate> start;
    /// All-day: the last day.
    std::optional<TypedDate> end;
    bool isAllDay = false;
    std::optional<QString> calendarID;
};

/// The present, zone and language against which dates are read.
struct CommandLineContext {
    /// Until the arguments name another present.
    Instant now;
    /// Local times are of this zone.
    TimeZone zone;
    /// That of dates in words.
    Language language = Language::english;
};

/// Reads the arguments after the program's name. Fails with a sentence for whoever typed them.
[[nodiscard]] tl::expected<CommandLineArguments, TextPair>
parseCommandLine(const QStringList& arguments, const CommandLineContext& context);

/// Whether these arguments (without the program's name) hold a command, known or not, rather than options
/// alone.
[[nodiscard]] bool namesCommand(const QStringList& arguments);

/// How to call the commands, for --help.
[[nodiscard]] TextPair commandLineUsage();

}  // namespace kestrant
