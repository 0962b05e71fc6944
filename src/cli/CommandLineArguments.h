#pragma once

#include "eventkit/EventStoreLocation.h"
#include "foundation/Instant.h"
#include "foundation/Text.h"
#include "foundation/ZoneCalendar.h"
#include "reminders/ReminderTask.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// A due date as it was typed.
struct TypedDueDate {
    /// For a date alone, the start of its day.
    Instant instant;
    bool includesTime = false;
};

/// One command with everything that was asked of it.
struct CommandLineArguments {
    enum class Command { list, lists, add, complete, remove, show, help, version };

    Command command = Command::help;
    /// The title to add, or the identifier of the reminder.
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
    std::optional<TypedDueDate> due;
    NewReminderPriority priority = NewReminderPriority::normal;
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
