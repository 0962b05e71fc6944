#include "cli/CommandLine.h"

#include "cli/CalendarCommands.h"
#include "cli/CommandLineArguments.h"
#include "cli/CommandRun.h"
#include "cli/ReminderCommands.h"
#include "foundation/AtomicFile.h"
#include "foundation/ControlCharacters.h"
#include "foundation/ObserverList.h"
#include "preferences/PreferenceKeys.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;

/// The preferences as they are when the command starts. What the command changes is forgotten with it.
class ReadOnceUserDefaults final : public UserDefaults {
  public:
    explicit ReadOnceUserDefaults(const QString& path) {
        if (const auto document = readFile(path))
            values_ = QJsonDocument::fromJson(*document).object();
    }

    [[nodiscard]] QJsonValue object(const QString& key) const override { return values_.value(key); }
    void set(const QString& key, const QJsonValue& value) override {
        if (value.isUndefined())
            values_.remove(key);
        else
            values_.insert(key, value);
        observers_.notify(key);
    }
    [[nodiscard]] Subscription observe(std::function<void(const QString&)> observer) override {
        return observers_.add(std::move(observer));
    }

  private:
    QJsonObject values_;
    ObserverList<QString> observers_;
};

bool isAboutCalendar(Command command) {
    return command == Command::agenda || command == Command::calendars || command == Command::addEvent ||
           command == Command::deleteEvent;
}

bool makesItems(Command command) {
    return command == Command::add || command == Command::addEvent;
}

template <typename Commands>
int execute(CommandRun& run) {
    Commands commands(run);
    commands.start();
    return QCoreApplication::exec();
}

}  // namespace

Language preferredLanguage(const QString& preferencesFile, const QLocale& systemLocale) {
    ReadOnceUserDefaults defaults(preferencesFile);
    const Preferences preferences(defaults, [&] { return systemLocale; });
    return Localization(preferences).language();
}

int runCommandLine(const QStringList& arguments, const CommandLineEnvironment& surroundings) {
    CommandLineEnvironment environment = surroundings;
    environment.out = [&](const QString& text) { surroundings.out(withoutControlCharacters(text)); };
    environment.err = [&](const QString& text) { surroundings.err(withoutControlCharacters(text)); };
    ReadOnceUserDefaults defaults(environment.preferencesFile);
    Preferences preferences(defaults, [&] { return environment.systemLocale; });
    Localization localization(preferences);

    const auto parsed =
        parseCommandLine(arguments, {environment.clock.now(), environment.zone, localization.language()});
    const auto misused = [&](const TextPair& reason) {
        environment.err(onOneLine(localization(reason)) + u' ' +
                        localization(text("See kestrant --help.", "Voir kestrant --help.")) + u'\n');
        return wrongUsage;
    };
    if (!parsed)
        return misused(parsed.error());
    if (parsed->command == Command::help) {
        environment.out(localization(commandLineUsage()));
        return done;
    }
    if (parsed->command == Command::version) {
        environment.out(QStringLiteral("kestrant %1\n").arg(environment.version));
        return done;
    }

    if (parsed->configurationFile && environment.useConfiguration) {
        if (const auto used = environment.useConfiguration(*parsed->configurationFile); !used)
            return misused(used.error());
    }
    // A folder that was named by mistake is not made, unless something is to be put there.
    if (parsed->store && parsed->store->kind == EventStoreLocation::Kind::vdir &&
        !makesItems(parsed->command) && !QFileInfo(parsed->store->folder).isDir()) {
        environment.err(localization(text("There is no folder %1.\n", "Le dossier %1 n’existe pas.\n"))
                            .arg(onOneLine(parsed->store->folder)));
        return refused;
    }
    const EventStoreLocation store =
        eventStoreToUse(parsed->store, defaults.string(preferenceKeys::eventStore),
                        EventStoreLocation{environment.storeFolder}, environment.desktopHasStore);
    CommandRun run(*parsed, environment, defaults, preferences, localization, store);
    return isAboutCalendar(parsed->command) ? execute<CalendarCommands>(run) : execute<ReminderCommands>(run);
}

}  // namespace kestrant
