#include "cli/CommandLineNames.h"

#include <algorithm>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;
using Option = CommandOption;

constexpr CommandSubject aTitle{"a title", "un titre"};
constexpr CommandSubject aReminder{"the identifier of a reminder", "l’identifiant d’un rappel"};
constexpr CommandSubject aList{"a list", "une liste"};
constexpr CommandSubject aDate{"a date, or none", "une date, ou none"};
constexpr CommandSubject aRow{"the identifier of a row of the agenda",
                              "l’identifiant d’une ligne de l’agenda"};

template <typename Names>
auto find(const Names& names, const QString& name) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const auto& entry) { return name == QLatin1String(entry.name); });
    return found == names.end() ? nullptr : &*found;
}

}  // namespace

const std::vector<CommandName>& commandNames() {
    static const std::vector<CommandName> names{
        {Command::list, "list", {}},
        {Command::lists, "lists", {}},
        {Command::add, "add", {aTitle}},
        {Command::edit, "edit", {aReminder}},
        {Command::reschedule, "reschedule", {aReminder, aDate}},
        {Command::move, "move", {aReminder, aList}, true},
        {Command::flag, "flag", {aReminder}, true},
        {Command::unflag, "unflag", {aReminder}, true},
        {Command::complete, "complete", {aReminder}, true},
        {Command::remove, "delete", {aReminder}, true},
        {Command::show, "show", {aReminder}},
        {Command::recap, "recap", {}},
        {Command::agenda, "agenda", {}},
        {Command::calendars, "calendars", {}},
        {Command::addEvent, "add-event", {aTitle}},
        {Command::deleteEvent, "delete-event", {aRow}},
    };
    return names;
}

const std::vector<OptionName>& optionNames() {
    static const std::vector<OptionName> names{
        {Option::help, "--help", false, CommandSet::all()},
        {Option::help, "-h", false, CommandSet::all()},
        {Option::version, "--version", false, CommandSet::all()},
        {Option::json, "--json", false, CommandSet::all()},
        {Option::store, "--store", true, CommandSet::all()},
        {Option::configuration, "--configuration", true, CommandSet::all()},
        {Option::now, "--now", true, CommandSet::all()},
        {Option::sort, "--sort", true, CommandSet(Command::list)},
        {Option::list, "--list", true, CommandSet(Command::list, Command::add, Command::edit)},
        {Option::today, "--today", false, CommandSet(Command::list)},
        {Option::overdue, "--overdue", false, CommandSet(Command::list)},
        {Option::flagged, "--flagged", false, CommandSet(Command::list, Command::add)},
        {Option::search, "--search", true, CommandSet(Command::list)},
        {Option::literal, "--literal", false, CommandSet(Command::add)},
        {Option::makeList, "--make-list", false, CommandSet(Command::add)},
        {Option::title, "--title", true, CommandSet(Command::edit)},
        {Option::notes, "--notes", true, CommandSet(Command::edit)},
        {Option::due, "--due", true, CommandSet(Command::add, Command::edit)},
        {Option::priority, "--priority", true, CommandSet(Command::add, Command::edit)},
        {Option::alert, "--alert", true, CommandSet(Command::add, Command::edit)},
        {Option::repeat, "--repeat", true, CommandSet(Command::add, Command::edit)},
        {Option::day, "--day", false, CommandSet(Command::recap)},
        {Option::week, "--week", false, CommandSet(Command::recap)},
        {Option::month, "--month", false, CommandSet(Command::recap)},
        {Option::year, "--year", false, CommandSet(Command::recap)},
        {Option::allEvents, "--all", false, CommandSet(Command::agenda)},
        {Option::reminders, "--reminders", false, CommandSet(Command::agenda)},
        {Option::noReminders, "--no-reminders", false, CommandSet(Command::agenda)},
        {Option::start, "--start", true, CommandSet(Command::addEvent)},
        {Option::end, "--end", true, CommandSet(Command::addEvent)},
        {Option::allDay, "--all-day", false, CommandSet(Command::addEvent)},
        {Option::calendar, "--calendar", true, CommandSet(Command::addEvent)},
    };
    return names;
}

const CommandName* commandNamed(const QString& name) {
    return find(commandNames(), name);
}

const OptionName* optionNamed(const QString& name) {
    return find(optionNames(), name);
}

}  // namespace kestrant
