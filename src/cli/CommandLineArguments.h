#pragma once

#include "cli/TypedDate.h"
#include "eventkit/EventStoreLocation.h"
#include "foundation/Text.h"
#include "foundation/ZoneCalendar.h"
#include "reminders/ReminderTask.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// One command with everything that was asked of it.
struct CommandLineArguments {
    enum class Command {
        list,
        lists,
        add,
        complete,
        remove,
        show,
        agenda,
        calendars,
        addEvent,
        deleteEvent,
        help,
        version
    };

    Command command = Command::help;
    /// The title to add, the identifier of the reminder, or the row of the agenda.
    QString subject;
    bool json = false;
    /// Where one was named.
    std::optional<EventStoreLocation> store;
    /// The time that is taken for the present.
    std::optional<Instant> now;

    std::optional<QString> listID;
    std::optional<ReminderSortMode> sort;
    bool todayOnly = false;
    bool overdueOnly = false;
    bool flaggedOnly = false;
    QString search;
    std::optional<TypedDate> due;
    NewReminderPriority priority = NewReminderPriority::normal;

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

/// Reads the arguments after the program's name; local times are those of `calendar`. Fails with a sentence
/// for whoever typed them.
[[nodiscard]] tl::expected<CommandLineArguments, TextPair> parseCommandLine(const QStringList& arguments,
                                                                            const ZoneCalendar& calendar);

/// Whether these arguments (without the program's name) hold a command, known or not, rather than options
/// alone.
[[nodiscard]] bool namesCommand(const QStringList& arguments);

/// How to call the commands, for --help.
[[nodiscard]] TextPair commandLineUsage();

}  // namespace kestrant
