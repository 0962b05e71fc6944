#include "cli/CommandRun.h"

#include "eventkit/EvolutionModule.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kestrant {

CommandRun::CommandRun(const CommandLineArguments& asked, const CommandLineEnvironment& surroundings,
                       UserDefaults& userDefaults, Preferences& personsPreferences, Localization& texts,
                       const EventStoreLocation& store)
    : arguments(asked)
    , environment(surroundings)
    , defaults(userDefaults)
    , preferences(personsPreferences)
    , localization(texts)
    , clock(asked.now.value_or(surroundings.clock.now()))
    , calendar(surroundings.calendar)
    , openedStore(openEventStore(store, scheduler, clock, calendar))
    , eventStore(*openedStore) {}

OutputContext CommandRun::outputContext() const {
    return {clock.now(), environment.calendar, localization.language(), localization.dateLocale()};
}

void CommandRun::printJson(const QJsonArray& json) const {
    print(QString::fromUtf8(QJsonDocument(json).toJson()));
}

void CommandRun::printJson(const QJsonObject& json) const {
    print(QString::fromUtf8(QJsonDocument(json).toJson()));
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
        print(calendarsAsTable(calendars, type, localization.language()));
}

void CommandRun::printError(const TextPair& message) const {
    environment.err(localization(message) + u'\n');
}

void CommandRun::printProblems() const {
    for (const TextPair& problem : eventStore.problems())
        printError(problem);
}

void CommandRun::finish() const {
    QCoreApplication::exit(done);
}

void CommandRun::finishReading() const {
    if (environment.leave)
        environment.leave(done);
    finish();
}

void CommandRun::refuse(const TextPair& reason) const {
    printError(reason);
    QCoreApplication::exit(refused);
}

}  // namespace kestrant
