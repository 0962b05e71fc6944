#pragma once

#include "cli/CommandLineArguments.h"

#include <QString>

#include <array>
#include <cstdint>
#include <vector>

namespace kestrant {

/// An argument of a command, named for use in a sentence: "the identifier of a reminder".
struct CommandSubject {
    const char* english = nullptr;
    const char* french = nullptr;
};

struct CommandName {
    CommandLineArguments::Command command;
    const char* name;
    /// As many as are needed, in their order.
    std::vector<CommandSubject> subjects;
    /// Whether there may be more like the first one.
    bool takesMore = false;
};

enum class CommandOption {
    help,
    version,
    json,
    store,
    configuration,
    now,
    sort,
    list,
    today,
    overdue,
    flagged,
    search,
    literal,
    makeList,
    title,
    notes,
    due,
    priority,
    alert,
    repeat,
    day,
    week,
    month,
    year,
    allEvents,
    reminders,
    noReminders,
    start,
    end,
    allDay,
    calendar
};

/// A set of commands.
class CommandSet {
  public:
    template <typename... Commands>
    explicit constexpr CommandSet(Commands... commands)
        : bits_(((std::uint32_t(1) << static_cast<int>(commands)) | ... | 0)) {}

    [[nodiscard]] static constexpr CommandSet all() {
        CommandSet result;
        result.bits_ = ~std::uint32_t(0);
        return result;
    }
    [[nodiscard]] constexpr bool contains(CommandLineArguments::Command command) const {
        return (bits_ >> static_cast<int>(command) & 1) != 0;
    }

  private:
    std::uint32_t bits_;
};

struct OptionName {
    CommandOption option;
    const char* name;
    bool takesValue;
    /// Those that know it.
    CommandSet commands;
};

[[nodiscard]] const std::vector<CommandName>& commandNames();
[[nodiscard]] const std::vector<OptionName>& optionNames();

/// Null for a name that is none.
[[nodiscard]] const CommandName* commandNamed(const QString& name);
[[nodiscard]] const OptionName* optionNamed(const QString& name);

}  // namespace kestrant
