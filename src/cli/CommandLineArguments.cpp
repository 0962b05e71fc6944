#include "cli/CommandLineArguments.h"

#include <QSet>

#include <algorithm>
#include <array>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;
using Failure = tl::unexpected<TextPair>;

/// A failure whose texts hold "%1" where `detail` belongs.
Failure failure(const char* english, const char* french, const QString& detail = {}) {
    const TextPair message = text(english, french);
    if (detail.isNull())
        return Failure(message);
    return Failure(TextPair{message.english.arg(detail), message.french.arg(detail)});
}

struct CommandName {
    Command command;
    const char* name;
    /// What stands after the command; null for nothing.
    const char* subjectEnglish;
    const char* subjectFrench;
};

constexpr std::array commandNames{
    CommandName{Command::list, "list", nullptr, nullptr},
    CommandName{Command::lists, "lists", nullptr, nullptr},
    CommandName{Command::add, "add", "a title", "un titre"},
    CommandName{Command::complete, "complete", "the identifier of a reminder", "l’identifiant d’un rappel"},
    CommandName{Command::remove, "delete", "the identifier of a reminder", "l’identifiant d’un rappel"},
    CommandName{Command::show, "show", "the identifier of a reminder", "l’identifiant d’un rappel"},
    CommandName{Command::agenda, "agenda", nullptr, nullptr},
    CommandName{Command::calendars, "calendars", nullptr, nullptr},
    CommandName{Command::addEvent, "add-event", "a title", "un titre"},
    CommandName{Command::deleteEvent, "delete-event", "the identifier of a row of the agenda",
                "l’identifiant d’une ligne de l’agenda"},
};

const CommandName* commandNamed(const QString& name) {
    const auto found = std::find_if(commandNames.begin(), commandNames.end(), [&](const CommandName& entry) {
        return name == QLatin1String(entry.name);
    });
    return found == commandNames.end() ? nullptr : &*found;
}

enum class Option {
    help,
    version,
    json,
    store,
    now,
    sort,
    list,
    today,
    overdue,
    flagged,
    search,
    due,
    priority,
    allEvents,
    reminders,
    noReminders,
    start,
    end,
    allDay,
    calendar
};

struct OptionName {
    Option option;
    const char* name;
    bool takesValue;
    /// The commands that know it; empty for all.
    std::array<std::optional<Command>, 2> commands;
};

constexpr std::array optionNames{
    OptionName{Option::help, "--help", false, {}},
    OptionName{Option::help, "-h", false, {}},
    OptionName{Option::version, "--version", false, {}},
    OptionName{Option::json, "--json", false, {}},
    OptionName{Option::store, "--store", true, {}},
    OptionName{Option::now, "--now", true, {}},
    OptionName{Option::sort, "--sort", true, {Command::list}},
    OptionName{Option::list, "--list", true, {Command::list, Command::add}},
    OptionName{Option::today, "--today", false, {Command::list}},
    OptionName{Option::overdue, "--overdue", false, {Command::list}},
    OptionName{Option::flagged, "--flagged", false, {Command::list}},
    OptionName{Option::search, "--search", true, {Command::list}},
    OptionName{Option::due, "--due", true, {Command::add}},
    OptionName{Option::priority, "--priority", true, {Command::add}},
    OptionName{Option::allEvents, "--all", false, {Command::agenda}},
    OptionName{Option::reminders, "--reminders", false, {Command::agenda}},
    OptionName{Option::noReminders, "--no-reminders", false, {Command::agenda}},
    OptionName{Option::start, "--start", true, {Command::addEvent}},
    OptionName{Option::end, "--end", true, {Command::addEvent}},
    OptionName{Option::allDay, "--all-day", false, {Command::addEvent}},
    OptionName{Option::calendar, "--calendar", true, {Command::addEvent}},
};

const OptionName* optionNamed(const QString& name) {
    const auto found = std::find_if(optionNames.begin(), optionNames.end(), [&](const OptionName& entry) {
        return name == QLatin1String(entry.name);
    });
    return found == optionNames.end() ? nullptr : &*found;
}

bool isOption(const QString& argument) {
    return argument.size() > 1 && argument.startsWith(u'-');
}

struct GivenOption {
    const OptionName* name;
    QString value;
};

/// The arguments taken apart, before anything is known about their meaning.
struct SplitArguments {
    QStringList words;
    std::vector<GivenOption> options;
};

tl::expected<SplitArguments, TextPair> split(const QStringList& arguments) {
    SplitArguments result;
    bool onlyWords = false;
    for (qsizetype index = 0; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        if (onlyWords || !isOption(argument)) {
            result.words.append(argument);
            continue;
        }
        if (argument == QLatin1String("--")) {
            onlyWords = true;
            continue;
        }
        const qsizetype equals = argument.indexOf(u'=');
        const QString name = argument.left(equals);
        const OptionName* option = optionNamed(name);
        if (!option)
            return failure("There is no option %1.", "L’option %1 n’existe pas.", name);
        if (!option->takesValue && equals >= 0)
            return failure("%1 takes no value.", "%1 ne prend pas de valeur.", name);
        const bool isRepeated =
            std::any_of(result.options.begin(), result.options.end(),
                        [&](const GivenOption& given) { return given.name->option == option->option; });
        if (isRepeated)
            return failure("%1 is given more than once.", "%1 est donné plusieurs fois.", name);
        QString value;
        if (option->takesValue && equals >= 0)
            value = argument.mid(equals + 1);
        else if (option->takesValue && index + 1 < arguments.size())
            value = arguments[++index];
        else if (option->takesValue)
            return failure("%1 needs a value.", "%1 demande une valeur.", name);
        result.options.push_back({option, value});
    }
    return result;
}

tl::expected<void, TextPair> takeDate(const GivenOption& given, const ZoneCalendar& calendar,
                                      std::optional<TypedDate>& date) {
    date = readTypedDate(given.value, calendar);
    if (date)
        return {};
    const TextPair message =
        text("%1: “%2” is no date; write it like 2026-03-27 or 2026-03-27T14:30.",
             "%1 : « %2 » n’est pas une date ; écrivez-la comme 2026-03-27 ou 2026-03-27T14:30.");
    const QString name = QLatin1String(given.name->name);
    return Failure(TextPair{message.english.arg(name, given.value), message.french.arg(name, given.value)});
}

template <typename Values>
QString rawValues(const Values& values) {
    QStringList texts;
    for (const auto value : values)
        texts.append(rawValue(value));
    return texts.join(QStringLiteral(", "));
}

/// Takes one option over into the arguments; fails when its value is none that it can have.
tl::expected<void, TextPair> apply(const GivenOption& given, const ZoneCalendar& calendar,
                                   CommandLineArguments& arguments) {
    const QString& value = given.value;
    switch (given.name->option) {
    case Option::help:
        arguments.command = Command::help;
        break;
    case Option::version:
        arguments.command = Command::version;
        break;
    case Option::json:
        arguments.json = true;
        break;
    case Option::today:
        arguments.todayOnly = true;
        break;
    case Option::overdue:
        arguments.overdueOnly = true;
        break;
    case Option::flagged:
        arguments.flaggedOnly = true;
        break;
    case Option::search:
        arguments.search = value;
        break;
    case Option::list:
        arguments.listID = value;
        break;
    case Option::store: {
        const auto location = EventStoreLocation::parse(value);
        if (!location)
            return Failure(location.error());
        arguments.store = *location;
        break;
    }
    case Option::now: {
        const std::optional<TypedDate> now = readTypedDate(value, calendar);
        if (!now || !now->includesTime)
            return failure("--now: “%1” is no time; write it like 2026-03-27T14:30:00Z.",
                           "--now : « %1 » n’est pas une heure ; écrivez-la comme 2026-03-27T14:30:00Z.",
                           value);
        arguments.now = now->instant;
        break;
    }
    case Option::due:
        return takeDate(given, calendar, arguments.due);
    case Option::start:
        return takeDate(given, calendar, arguments.start);
    case Option::end:
        return takeDate(given, calendar, arguments.end);
    case Option::allEvents:
        arguments.allEvents = true;
        break;
    case Option::reminders:
    case Option::noReminders:
        if (arguments.showsReminders)
            return failure("--reminders and --no-reminders exclude each other.",
                           "--reminders et --no-reminders s’excluent.");
        arguments.showsReminders = given.name->option == Option::reminders;
        break;
    case Option::allDay:
        arguments.isAllDay = true;
        break;
    case Option::calendar:
        arguments.calendarID = value;
        break;
    case Option::sort:
        arguments.sort = reminderSortMode(value);
        if (!arguments.sort)
            return failure("--sort must be one of: %1.", "--sort doit être l’un de : %1.",
                           rawValues(allReminderSortModes));
        break;
    case Option::priority: {
        const std::optional<NewReminderPriority> priority = newReminderPriority(value);
        if (!priority)
            return failure("--priority must be one of: %1.", "--priority doit être l’un de : %1.",
                           rawValues(allNewReminderPriorities));
        arguments.priority = *priority;
        break;
    }
    }
    return {};
}

/// What only the options of a new event together can break.
tl::expected<void, TextPair> checkEventDates(const CommandLineArguments& arguments) {
    if (!arguments.start)
        return failure("add-event needs --start.", "add-event demande --start.");
    const bool hasTime = arguments.start->includesTime || (arguments.end && arguments.end->includesTime);
    const bool hasDay = !arguments.start->includesTime || (arguments.end && !arguments.end->includesTime);
    if (arguments.isAllDay && hasTime)
        return failure("With --all-day, --start and --end are days without a time.",
                       "Avec --all-day, --start et --end sont des jours sans heure.");
    if (!arguments.isAllDay && hasDay)
        return failure("--start and --end need a time of day, or --all-day beside them.",
                       "--start et --end demandent une heure, ou --all-day à côté.");
    return {};
}

bool isAsked(const SplitArguments& given, Option option) {
    return std::any_of(given.options.begin(), given.options.end(),
                       [&](const GivenOption& each) { return each.name->option == option; });
}

}  // namespace

bool namesCommand(const QStringList& arguments) {
    for (qsizetype index = 0; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        if (!isOption(argument))
            return true;
        const OptionName* option = optionNamed(argument);
        if (option && option->takesValue)
            ++index;
    }
    return false;
}

tl::expected<CommandLineArguments, TextPair> parseCommandLine(const QStringList& arguments,
                                                              const ZoneCalendar& calendar) {
    const auto given = split(arguments);
    if (!given)
        return Failure(given.error());
    CommandLineArguments result;
    if (isAsked(*given, Option::help))
        return result;
    if (isAsked(*given, Option::version)) {
        result.command = Command::version;
        return result;
    }
    if (given->words.isEmpty())
        return failure("A command is missing.", "Il manque une commande.");
    const CommandName* command = commandNamed(given->words.first());
    if (!command)
        return failure("There is no command %1.", "La commande %1 n’existe pas.", given->words.first());
    result.command = command->command;

    for (const GivenOption& option : given->options) {
        const auto& known = option.name->commands;
        if (known.front() && std::find(known.begin(), known.end(), command->command) == known.end()) {
            const TextPair message = text("%1 has no option %2.", "%1 n’a pas d’option %2.");
            const QString commandText = QLatin1String(command->name);
            const QString optionText = QLatin1String(option.name->name);
            return Failure(TextPair{message.english.arg(commandText, optionText),
                                    message.french.arg(commandText, optionText)});
        }
        if (const auto applied = apply(option, calendar, result); !applied)
            return Failure(applied.error());
    }

    const qsizetype expectedWords = command->subjectEnglish ? 2 : 1;
    if (given->words.size() < expectedWords) {
        const TextPair message = text("%1 needs %2.", "%1 demande %2.");
        const QString name = QLatin1String(command->name);
        return Failure(TextPair{message.english.arg(name, QString::fromUtf8(command->subjectEnglish)),
                                message.french.arg(name, QString::fromUtf8(command->subjectFrench))});
    }
    if (given->words.size() > expectedWords)
        return failure("“%1” is one argument too many; a text of several words goes in quotes.",
                       "« %1 » est de trop ; un texte de plusieurs mots se met entre guillemets.",
                       given->words[expectedWords]);
    if (expectedWords == 2)
        result.subject = given->words[1];
    if (result.command == Command::addEvent) {
        if (const auto checked = checkEventDates(result); !checked)
            return Failure(checked.error());
    }
    return result;
}

}  // namespace kestrant
