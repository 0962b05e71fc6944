#include "cli/CommandRun.h"

#include "cli/TerminalText.h"
#include "foundation/ControlCharacters.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>
#include <vector>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;

/// Commands that need only the items they name. Completing and removing need all completed ones as well, for
/// the ledger.
bool needsOnlyItsSubjects(Command command) {
    return command == Command::show || command == Command::edit || command == Command::reschedule ||
           command == Command::move || command == Command::flag || command == Command::unflag;
}

/// The items that a command needs.
EventStoreUse useOf(const CommandLineArguments& arguments) {
    EventStoreUse use{.reminders = {}, .observesChanges = false};
    if (arguments.command == Command::add || arguments.command == Command::addEvent)
        use.reminders = QStringList();
    else if (needsOnlyItsSubjects(arguments.command))
        use.reminders = arguments.subjects;
    return use;
}

}  // namespace

CommandRun::CommandRun(const CommandLineArguments& asked, const CommandLineEnvironment& surroundings,
                       UserDefaults& userDefaults, Preferences& personsPreferences, Localization& texts,
                       const EventStoreLocation& store)
    : arguments(asked)
    , environment(surroundings)
    , defaults(userDefaults)
    , preferences(personsPreferences)
    , localization(texts)
    , clock(asked.now.value_or(surroundings.clock.now()))
    , currentZone(surroundings.zone)
    , openedStore(environment.openStore(store, scheduler, clock, currentZone, useOf(asked)))
    , eventStore(*openedStore) {}

OutputContext CommandRun::outputContext() const {
    return {clock.now(),
            environment.zone,
            localization.language(),
            localization.dateLocale(),
            localization.clockHours(),
            environment.lineWidth};
}

void CommandRun::printJson(const QJsonArray& json) const {
    print(terminalJson(QString::fromUtf8(QJsonDocument(json).toJson())));
}

void CommandRun::printJson(const QJsonObject& json) const {
    print(terminalJson(QString::fromUtf8(QJsonDocument(json).toJson())));
}

QStringList CommandRun::linesToAdd() const {
    if (arguments.subjects.first() != u"-" || !environment.readLine)
        return {arguments.subjects.first()};
    QStringList lines;
    while (const auto line = environment.readLine()) {
        if (!line->trimmed().isEmpty())
            lines.append(line->trimmed());
    }
    return lines;
}

TextPair CommandRun::unknownList(const QString& name) {
    const TextPair message =
        text("There is no list “%1” that could be written to; its name stays in the title.",
             "Il n’y a pas de liste « %1 » où écrire ; son nom reste dans le titre.");
    return {message.english.arg(name), message.french.arg(name)};
}

void CommandRun::printIdentifier(const QString& identifier) const {
    if (arguments.json)
        printJson(QJsonObject{{QStringLiteral("id"), identifier}});
    else
        print(identifier + u'\n');
}

void CommandRun::printIdentifiers(const QStringList& identifiers) const {
    QJsonArray rows;
    for (const QString& identifier : identifiers)
        rows.append(QJsonObject{{QStringLiteral("id"), identifier}});
    printJson(rows);
}

void CommandRun::printCalendars(EKEntityType type) const {
    const std::vector<EKCalendar> calendars = eventStore.calendars(type);
    if (arguments.json)
        printJson(calendarsAsJson(calendars));
    else
        print(calendarsAsTable(calendars, type, outputContext()));
}

void CommandRun::printError(const TextPair& message) {
    told_.push_back(message);
    environment.err(onOneLine(localization(message)) + u'\n');
}

void CommandRun::printProblems() {
    for (const TextPair& problem : eventStore.problems()) {
        if (std::find(told_.begin(), told_.end(), problem) == told_.end())
            printError(problem);
    }
}

bool CommandRun::hasAnswer(EKEntityType type, const std::optional<QString>& list) const {
    const std::vector<EKCalendar> calendars = eventStore.calendars(type);
    const auto isSilent = [&](const EKCalendar& each) {
        return !each.isAnswering || (list && each.calendarIdentifier != *list);
    };
    return calendars.empty() || !std::all_of(calendars.begin(), calendars.end(), isSilent);
}

TextPair CommandRun::notFound(EKEntityType type, const TextPair& gone) const {
    QStringList english;
    QStringList french;
    for (const EKCalendar& each : eventStore.calendars(type)) {
        if (each.isAnswering)
            continue;
        english.append(QStringLiteral("“%1”").arg(each.title));
        french.append(QStringLiteral("« %1 »").arg(each.title));
    }
    if (english.isEmpty())
        return gone;
    const TextPair message =
        type == EKEntityType::reminder
            ? text("There is no such reminder in the lists that answer; it may be in %1.",
                   "Ce rappel n’est dans aucune des listes qui répondent ; il est peut-être dans %1.")
            : text(
                  "There is no such event in the calendars that answer; it may be in %1.",
                  "Cet événement n’est dans aucun des calendriers qui répondent ; il est peut-être dans %1.");
    return {message.english.arg(english.join(QStringLiteral(", "))),
            message.french.arg(french.join(QStringLiteral(", ")))};
}

void CommandRun::finish(CommandStatus status) {
    printProblems();
    QCoreApplication::exit(status);
}

void CommandRun::finishReading() {
    if (environment.leave)
        environment.leave(done);
    finish();
}

void CommandRun::refuse(const TextPair& reason) {
    printError(reason);
    QCoreApplication::exit(refused);
}

}  // namespace kestrant
