#pragma once

#include "foundation/Scheduler.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>

namespace kestrant {

class CurrentTimeZone;
class EKEventStore;
struct EventStoreLocation;
struct EventStoreUse;

/// The surroundings of a command.
struct CommandLineEnvironment {
    QString version;
    /// The folder of the store that is used when neither the arguments nor the preferences name one.
    QString storeFolder;
    /// Whether the desktop has a database of its own, to be used rather than a store folder without lists;
    /// may be empty.
    std::function<bool()> desktopHasStore;
    /// Opens the database in a place.
    std::function<std::unique_ptr<EKEventStore>(const EventStoreLocation&, Scheduler&, const Clock&,
                                                const CurrentTimeZone&, const EventStoreUse&)>
        openStore;
    QString preferencesFile;
    QString ledgerFile;
    /// Gives the language while the preferences choose none.
    QLocale systemLocale;
    TimeZone zone;
    const Clock& clock;
    /// Take text for the standard output and for the standard error.
    std::function<void(const QString& text)> out;
    std::function<void(const QString& text)> err;
    /// The next line of the standard input; absent at its end. May be empty where there is none.
    std::function<std::optional<QString>()> readLine = {};
    /// Columns of the terminal that the standard output goes to; absent when it goes elsewhere.
    std::optional<int> lineWidth = {};
    /// Takes the deployment values of a file that the arguments name; fails where it has none. May be empty.
    std::function<tl::expected<void, TextPair>(const QString& file)> useConfiguration = {};
    /// Told how many reminders a command has completed; may be empty.
    std::function<void(int count)> completionsCommitted = {};
    /// Ends the process with this exit status as soon as what was printed is out. A command that has only
    /// read ends by it, since giving back a large database takes long; may be empty.
    std::function<void(int status)> leave;
};

/// The language that the preferences in a file choose, else that of `systemLocale`: for texts of a process
/// that holds no preferences.
[[nodiscard]] Language preferredLanguage(const QString& preferencesFile, const QLocale& systemLocale);

/// Carries out one command; `arguments` are those after the program's name. Needs a QCoreApplication, whose
/// event loop it runs until the command has ended. Preferences are read and never written, but for a flag
/// that the panel has set and a command changes. Texts that come from the database or the arguments cannot
/// command a terminal. Returns the exit status: 0 done, 1 refused, 2 wrong usage;
/// whatever is refused is explained on `err`. Thread: main.
[[nodiscard]] int runCommandLine(const QStringList& arguments, const CommandLineEnvironment& environment);

}  // namespace kestrant
