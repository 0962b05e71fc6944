#pragma once

#include "cli/CommandLine.h"
#include "cli/CommandLineArguments.h"
#include "cli/CommandLineOutput.h"
#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/EventStoreLocation.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/Clocks.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/NotificationCenter.h"
#include "foundation/QtScheduler.h"
#include "foundation/UserDefaults.h"
#include "preferences/Localization.h"
#include "preferences/Preferences.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

enum CommandStatus { done = 0, refused = 1, wrongUsage = 2 };

/// One command on its way to the exit status: what was asked, the surroundings, the database, and the means
/// to answer. Thread: main, whose event loop runs until end().
class CommandRun {
  public:
    CommandRun(const CommandLineArguments& asked, const CommandLineEnvironment& surroundings,
               UserDefaults& userDefaults, Preferences& personsPreferences, Localization& texts,
               const EventStoreLocation& store);
    CommandRun(const CommandRun&) = delete;
    CommandRun& operator=(const CommandRun&) = delete;

    const CommandLineArguments& arguments;
    const CommandLineEnvironment& environment;
    /// Changes last as long as the command.
    UserDefaults& defaults;
    Preferences& preferences;
    Localization& localization;
    QtScheduler scheduler;
    FixedClock clock;
    FixedTimeZone currentZone;
    NotificationCenter notifications;
    const std::unique_ptr<EKEventStore> openedStore;
    EKEventStore& eventStore;
    OpenReminders openReminders{eventStore, scheduler};

    [[nodiscard]] OutputContext outputContext() const;
    void print(const QString& text) const { environment.out(text); }
    void printJson(const QJsonArray& json) const;
    void printJson(const QJsonObject& json) const;
    /// The lines that a command is to add: its argument, or those of the standard input that are not blank.
    [[nodiscard]] QStringList linesToAdd() const;
    /// Says that a named list or calendar does not exist, and that its name stays in the title.
    [[nodiscard]] static TextPair unknownList(const QString& name);
    /// Prints the identifier of what a command has made or changed: alone in its line, or as {"id": …}.
    void printIdentifier(const QString& identifier) const;
    /// As JSON.
    void printIdentifiers(const QStringList& identifiers) const;
    /// The lists of reminders or the calendars of events.
    void printCalendars(EKEntityType type) const;
    void printError(const TextPair& message);
    /// The files that could not be read, and the lists that do not answer; each once.
    void printProblems();
    /// Whether any list of reminders (or calendar of events) could be asked: any at all, or the one named.
    [[nodiscard]] bool hasAnswer(EKEntityType type, const std::optional<QString>& list) const;
    /// `gone` says that an item is not there; it may be in a list that does not answer.
    [[nodiscard]] TextPair notFound(EKEntityType type, const TextPair& gone) const;

    void finish(CommandStatus status = done);
    /// Ends a command that has changed nothing.
    void finishReading();
    /// Ends without having done what was asked.
    void refuse(const TextPair& reason);

  private:
    /// Refusals and problems that have been printed.
    std::vector<TextPair> told_;
};

}  // namespace kestrant
