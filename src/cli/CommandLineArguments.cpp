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
    priority
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

/// "2026-03-27", with "T14:30" or "T14:30:00" behind it for a local time, or a date-time with "Z" or an
/// offset.
std::optional<TypedDueDate> readDate(const QString& typed, const ZoneCalendar& calendar) {
    if (const std::optional<Instant> instant = parseIso8601(typed))
        return TypedDueDate{*instant, true};
    const QDate day = QDate::fromString(typed.left(10), QStringLiteral("yyyy-MM-dd"));
    if (!day.isValid() || day.year() < 1)
        return std::nullopt;
    if (typed.size() == 10)
        return TypedDueDate{calendar.startOfDay(day), false};
    for (const QString& format : {QStringLiteral("THH:mm"), QStringLiteral("THH:mm:ss")}) {
        const QTime time = QTime::fromString(typed.mid(10), format);
        if (time.isValid())
            return TypedDueDate{calendar.instantAt(day, time), true};
    }
    return std::nullopt;
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
        const std::optional<TypedDueDate> now = readDate(value, calendar);
        if (!now || !now->includesTime)
            return failure("--now: “%1” is no time; write it like 2026-03-27T14:30:00Z.",
                           "--now : « %1 » n’est pas une heure ; écrivez-la comme 2026-03-27T14:30:00Z.",
                           value);
        arguments.now = now->instant;
        break;
    }
    case Option::due:
        arguments.due = readDate(value, calendar);
        if (!arguments.due)
            return failure(
                "--due: “%1” is no date; write it like 2026-03-27 or 2026-03-27T14:30.",
                "--due : « %1 » n’est pas une date ; écrivez-la comme 2026-03-27 ou 2026-03-27T14:30.",
                value);
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
    return result;
}

TextPair commandLineUsage() {
    return text("Usage: kestrant COMMAND [OPTIONS]\n"
                "\n"
                "  list [--sort MODE] [--list ID] [--today] [--overdue] [--flagged] [--search TEXT]\n"
                "                     the open reminders, in order\n"
                "  lists              the lists of reminders\n"
                "  add TITLE [--due DATE] [--priority high|normal|low] [--list ID]\n"
                "                     creates a reminder and prints its identifier\n"
                "  complete ID        completes a reminder\n"
                "  delete ID          deletes a reminder\n"
                "  show ID            everything about a reminder\n"
                "\n"
                "MODE is manual, dueDate, priority, title, creationOldestFirst or creationNewestFirst.\n"
                "DATE is 2026-03-27, 2026-03-27T14:30 (local time) or 2026-03-27T14:30:00Z.\n"
                "\n"
                "  --store vdir:PATH  another folder of iCalendar files\n"
                "  --now TIME         a fixed present, written like DATE with a time\n"
                "  --json             prints data as JSON\n"
                "  --help, --version\n"
                "\n"
                "Exit status: 0 done, 1 refused, 2 wrong usage.\n",
                "Utilisation : kestrant COMMANDE [OPTIONS]\n"
                "\n"
                "  list [--sort MODE] [--list ID] [--today] [--overdue] [--flagged] [--search TEXTE]\n"
                "                     les rappels ouverts, dans l’ordre\n"
                "  lists              les listes de rappels\n"
                "  add TITRE [--due DATE] [--priority high|normal|low] [--list ID]\n"
                "                     crée un rappel et affiche son identifiant\n"
                "  complete ID        termine un rappel\n"
                "  delete ID          supprime un rappel\n"
                "  show ID            tout sur un rappel\n"
                "\n"
                "MODE : manual, dueDate, priority, title, creationOldestFirst ou creationNewestFirst.\n"
                "DATE : 2026-03-27, 2026-03-27T14:30 (heure locale) ou 2026-03-27T14:30:00Z.\n"
                "\n"
                "  --store vdir:CHEMIN  un autre dossier de fichiers iCalendar\n"
                "  --now HEURE          un présent fixe, écrit comme DATE avec une heure\n"
                "  --json               affiche les données en JSON\n"
                "  --help, --version\n"
                "\n"
                "Code de sortie : 0 fait, 1 refusé, 2 mauvais usage.\n");
}

}  // namespace kestrant
