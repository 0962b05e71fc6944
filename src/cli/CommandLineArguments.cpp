#include "cli/CommandLineArguments.h"

#include "cli/CommandLineNames.h"
#include "cli/TypedAlert.h"

#include <algorithm>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;
using Option = CommandOption;
using Failure = tl::unexpected<TextPair>;

/// A failure whose texts hold "%1" where `detail` belongs.
Failure failure(const char* english, const char* french, const QString& detail = {}) {
    const TextPair message = text(english, french);
    if (detail.isNull())
        return Failure(message);
    return Failure(TextPair{message.english.arg(detail), message.french.arg(detail)});
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

const QString none = QStringLiteral("none");

Failure failure(const TextPair& message, const QString& first, const QString& second) {
    return Failure(TextPair{message.english.arg(first, second), message.french.arg(first, second)});
}

tl::expected<void, TextPair> takeDate(const GivenOption& given, const TimeZone& zone,
                                      std::optional<TypedDate>& date) {
    date = readTypedDate(given.value, zone);
    if (date)
        return {};
    return failure(text("%1: “%2” is no date; write it like 2026-03-27 or 2026-03-27T14:30.",
                        "%1 : « %2 » n’est pas une date ; écrivez-la comme 2026-03-27 ou 2026-03-27T14:30."),
                   QLatin1String(given.name->name), given.value);
}

/// Takes a due date that stands behind `name`.
tl::expected<void, TextPair> takeDue(const QString& name, const QString& value,
                                     const CommandLineContext& context, CommandLineArguments& arguments) {
    const auto date =
        readDateInWords(value, {arguments.now.value_or(context.now), context.zone, context.language, {}});
    if (!date && value != none)
        return failure(text("%1: “%2” is no date; write it like 2026-03-27, 2026-03-27T14:30 or “tomorrow "
                            "9am”.",
                            "%1 : « %2 » n’est pas une date ; écrivez-la comme 2026-03-27, 2026-03-27T14:30 "
                            "ou « demain 9h »."),
                       name, value);
    arguments.due = date;
    return {};
}

template <HasChoices Value>
QString rawValues() {
    QStringList texts;
    for (const auto& choice : choicesOf<Value>)
        texts.append(rawValue(choice.value));
    return texts.join(QStringLiteral(", "));
}

/// Takes one option over into the arguments; fails when its value is none that it can have.
tl::expected<void, TextPair> apply(const GivenOption& given, const CommandLineContext& context,
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
        arguments.isFlagged = true;
        break;
    case Option::search:
        arguments.search = value;
        break;
    case Option::list:
        arguments.list = value;
        break;
    case Option::literal:
        arguments.isLiteral = true;
        break;
    case Option::makeList:
        arguments.makesLists = true;
        break;
    case Option::title:
        arguments.title = value;
        break;
    case Option::notes:
        arguments.notes = value;
        break;
    case Option::store: {
        const auto location = EventStoreLocation::parse(value);
        if (!location)
            return Failure(location.error());
        arguments.store = *location;
        break;
    }
    case Option::configuration:
        arguments.configurationFile = value;
        break;
    case Option::now: {
        const std::optional<TypedDate> now = readTypedDate(value, context.zone);
        if (!now || !now->includesTime)
            return failure("--now: “%1” is no time; write it like 2026-03-27T14:30:00Z.",
                           "--now : « %1 » n’est pas une heure ; écrivez-la comme 2026-03-27T14:30:00Z.",
                           value);
        arguments.now = now->instant;
        break;
    }
    case Option::due:
        return takeDue(QLatin1String(given.name->name), value, context, arguments);
    case Option::start:
        return takeDate(given, context.zone, arguments.start);
    case Option::end:
        return takeDate(given, context.zone, arguments.end);
    case Option::day:
    case Option::week:
    case Option::month:
    case Option::year:
        if (arguments.recapKind)
            return failure("--day, --week, --month and --year exclude each other.",
                           "--day, --week, --month et --year s’excluent.");
        arguments.recapKind = RecapKind(static_cast<int>(given.name->option) - static_cast<int>(Option::day));
        break;
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
        arguments.sort = fromRawValue<ReminderSortMode>(value);
        if (!arguments.sort)
            return failure("--sort must be one of: %1.", "--sort doit être l’un de : %1.",
                           rawValues<ReminderSortMode>());
        break;
    case Option::priority: {
        // A new reminder always has one.
        const bool mayBeNone = arguments.command == Command::edit;
        const auto priority = fromRawValue<NewReminderPriority>(value);
        if (!priority && !(mayBeNone && value == none))
            return failure("--priority must be one of: %1.", "--priority doit être l’un de : %1.",
                           rawValues<NewReminderPriority>() +
                               (mayBeNone ? QStringLiteral(", none") : QString()));
        arguments.priority = priority;
        break;
    }
    case Option::alert: {
        const std::optional<ReminderAlertSchedule> alert = readTypedAlert(value);
        if (!alert && value != none)
            return failure(
                "--alert: “%1” is no alert; write it like 0, 15m, 1h or 1d, or 09:00 or “1d 18:00” "
                "for a whole day.",
                "--alert : « %1 » n’est pas une alerte ; écrivez-la comme 0, 15m, 1h ou 1d, ou "
                "09:00 ou « 1d 18:00 » pour une journée entière.",
                value);
        arguments.alert = alert;
        break;
    }
    case Option::repeat:
        arguments.repeat = fromRawValue<ReminderRepeat>(value);
        if (!arguments.repeat)
            return failure("--repeat must be one of: %1.", "--repeat doit être l’un de : %1.",
                           rawValues<ReminderRepeat>());
        break;
    }
    return {};
}

/// Checks of a new event that concern several options together.
tl::expected<void, TextPair> checkEventDates(const CommandLineArguments& arguments) {
    if (!arguments.start) {
        // The line itself says when.
        if (!arguments.end && !arguments.isAllDay)
            return {};
        return failure("--end and --all-day need --start.", "--end et --all-day demandent --start.");
    }
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

/// Reads the second argument of a command.
tl::expected<void, TextPair> takeSecondSubject(const QString& subject, const CommandName& command,
                                               const CommandLineContext& context,
                                               CommandLineArguments& arguments) {
    if (command.command == Command::reschedule)
        return takeDue(QLatin1String(command.name), subject, context, arguments);
    arguments.list = subject;
    return {};
}

tl::expected<void, TextPair> checkEdit(const CommandLineArguments& arguments) {
    if (arguments.title || arguments.notes || arguments.due || arguments.list || arguments.priority ||
        arguments.alert || arguments.repeat)
        return {};
    QStringList options;
    for (const OptionName& option : optionNames()) {
        if (option.commands.contains(Command::edit) && !option.commands.contains(Command::lists))
            options.append(QLatin1String(option.name));
    }
    return failure("edit needs one or more of: %1.", "edit demande une ou plusieurs de : %1.",
                   options.join(QStringLiteral(", ")));
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
                                                              const CommandLineContext& context) {
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
        if (!option.name->commands.contains(command->command))
            return failure(text("%1 has no option %2.", "%1 n’a pas d’option %2."),
                           QLatin1String(command->name), QLatin1String(option.name->name));
    }
    // Dates in words are read against the present that is named.
    for (const bool isNow : {true, false}) {
        for (const GivenOption& option : given->options) {
            if ((option.name->option == Option::now) != isNow)
                continue;
            if (const auto applied = apply(option, context, result); !applied)
                return Failure(applied.error());
        }
    }

    const qsizetype subjects = given->words.size() - 1;
    const auto wanted = static_cast<qsizetype>(command->subjects.size());
    if (subjects < wanted) {
        const CommandSubject& missing = command->subjects[static_cast<std::size_t>(subjects)];
        const QString name = QLatin1String(command->name);
        return Failure(
            TextPair{QStringLiteral("%1 needs %2.").arg(name, QString::fromUtf8(missing.english)),
                     QStringLiteral("%1 demande %2.").arg(name, QString::fromUtf8(missing.french))});
    }
    if (subjects > wanted && !command->takesMore)
        return failure("“%1” is one argument too many; a text of several words goes in quotes.",
                       "« %1 » est de trop ; un texte de plusieurs mots se met entre guillemets.",
                       given->words[wanted + 1]);
    // The argument that is no identifier comes last.
    const bool hasSecond = wanted > 1;
    result.subjects = given->words.sliced(1, subjects - (hasSecond ? 1 : 0));
    if (hasSecond) {
        if (const auto taken = takeSecondSubject(given->words.last(), *command, context, result); !taken)
            return Failure(taken.error());
    }
    tl::expected<void, TextPair> checked;
    if (result.command == Command::addEvent)
        checked = checkEventDates(result);
    else if (result.command == Command::edit)
        checked = checkEdit(result);
    if (!checked)
        return Failure(checked.error());
    return result;
}

}  // namespace kestrant
