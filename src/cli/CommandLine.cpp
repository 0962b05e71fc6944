#include "cli/CommandLine.h"

#include "cli/CommandLineArguments.h"
#include "cli/CommandLineOutput.h"
#include "completion/CompletionLedgerRepository.h"
#include "eventkit/vdir/VdirEventStore.h"
#include "foundation/AtomicFile.h"
#include "foundation/Clocks.h"
#include "foundation/CurrentCalendars.h"
#include "foundation/NotificationCenter.h"
#include "foundation/ObserverList.h"
#include "foundation/QtScheduler.h"
#include "foundation/UserDefaults.h"
#include "preferences/Localization.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"
#include "reminders/ReminderConversion.h"
#include "reminders/ReminderStore.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;

enum ExitStatus { done = 0, refused = 1, wrongUsage = 2 };

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

/// One command from opening the store to the exit status.
class Session {
  public:
    Session(const CommandLineArguments& arguments, const CommandLineEnvironment& environment,
            UserDefaults& defaults, Localization& localization, const QString& storeFolder)
        : arguments_(arguments)
        , environment_(environment)
        , localization_(localization)
        , clock_(arguments.now.value_or(environment.clock.now()))
        , calendar_(environment.calendar)
        , ledger_(environment.ledgerFile)
        , eventStore_(storeFolder, scheduler_, clock_, calendar_)
        , store_(ReminderStoreServices{.eventStore = eventStore_,
                                       .scheduler = scheduler_,
                                       .clock = clock_,
                                       .calendar = calendar_,
                                       .defaults = defaults,
                                       .localization = localization,
                                       .notifications = notifications_,
                                       .ledger = ledger_}) {
        store_.setShowsTodayOnly(arguments.todayOnly);
        store_.setShowsOverdueOnly(arguments.overdueOnly);
        store_.setShowsFlaggedOnly(arguments.flaggedOnly);
        store_.setSearchQuery(arguments.search);
        store_.setSelectedListID(arguments.listID);
        if (arguments.sort)
            store_.setSortMode(*arguments.sort);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    int run() {
        QObject::connect(&store_, &ReminderStore::accessStateChanged, &store_, [this] { accessChanged(); });
        // Queued, so that the store has taken in all of what it loaded.
        QObject::connect(
            &store_, &ReminderStore::isLoadingChanged, &store_,
            [this] {
                if (store_.hasLoaded() && !store_.isLoading())
                    loaded();
            },
            Qt::QueuedConnection);
        store_.requestAccess();
        return QCoreApplication::exec();
    }

  private:
    void accessChanged() {
        using Kind = ReminderAccessState::Kind;
        const ReminderAccessState& state = store_.accessState();
        if (hasBegun_ || state.kind == Kind::requesting || state.kind == Kind::authorized)
            return;
        refuse(state.kind == Kind::failed ? state.message
                                          : text("Access to the reminders is not allowed.",
                                                 "L’accès aux rappels n’est pas autorisé."));
    }

    void loaded() {
        if (std::exchange(hasBegun_, true))
            return;
        for (const TextPair& problem : store_.problems())
            printError(problem);
        if (arguments_.listID && !eventStore_.calendarWithIdentifier(*arguments_.listID)) {
            refuse({ReminderStoreError::Code::listUnavailable, {}});
            return;
        }
        begin();
    }

    void begin() {
        switch (arguments_.command) {
        case Command::list:
            if (arguments_.json)
                printJson(tasksAsJson(store_.visibleTasks(), environment_.calendar));
            else
                environment_.out(tasksAsTable(store_.visibleTasks(), store_.lists(), context()));
            end(done);
            return;
        case Command::lists:
            if (arguments_.json)
                printJson(listsAsJson(store_.lists()));
            else
                environment_.out(listsAsTable(store_.lists(), localization_.language()));
            end(done);
            return;
        case Command::show:
            show();
            return;
        case Command::add:
            add();
            return;
        case Command::complete:
            store_.completeNow(arguments_.subject, [this](const auto& result) { changed(result); });
            return;
        case Command::remove:
            // A completed reminder is to be in the ledger before it goes.
            store_.whenIdle([this] {
                store_.remove(arguments_.subject, [this](const auto& result) { changed(result); });
            });
            return;
        case Command::help:
        case Command::version:
            return;
        }
    }

    void show() {
        const EKReminderRef reminder = eventStore_.calendarItem(arguments_.subject);
        if (!reminder) {
            refuse({ReminderStoreError::Code::reminderNotFound, {}});
            return;
        }
        const ReminderTask* open = store_.task(arguments_.subject);
        const ReminderTask task = open ? *open : reminderTask(reminder->data, environment_.calendar, {});
        if (arguments_.json)
            printJson(reminderAsJson(task, reminder->data, environment_.calendar));
        else
            environment_.out(reminderAsTable(task, reminder->data, store_.lists(), context()));
        end(done);
    }

    void add() {
        NewReminder reminder;
        reminder.title = arguments_.subject;
        if (arguments_.due) {
            reminder.dueDate = arguments_.due->instant;
            reminder.dueDateIncludesTime = arguments_.due->includesTime;
        }
        reminder.priority = arguments_.priority;
        reminder.listID = arguments_.listID;
        store_.create(reminder, [this](const tl::expected<QString, ReminderStoreError>& result) {
            if (!result) {
                refuse(result.error());
                return;
            }
            if (arguments_.json)
                printJson(QJsonObject{{QStringLiteral("id"), *result}});
            else
                environment_.out(*result + u'\n');
            end(done);
        });
    }

    void changed(const tl::expected<void, ReminderStoreError>& result) {
        if (!result) {
            refuse(result.error());
            return;
        }
        if (arguments_.json)
            printJson(QJsonObject{{QStringLiteral("id"), arguments_.subject}});
        store_.whenIdle([this] {
            if (store_.completionLedgerError())
                printError(*store_.completionLedgerError());
            end(done);
        });
    }

    [[nodiscard]] OutputContext context() const {
        return {clock_.now(), environment_.calendar, localization_.language()};
    }

    template <typename Json>
    void printJson(const Json& json) {
        environment_.out(QString::fromUtf8(QJsonDocument(json).toJson()));
    }

    void printError(const TextPair& message) { environment_.err(localization_(message) + u'\n'); }

    void refuse(const TextPair& message) {
        printError(message);
        end(refused);
    }
    void refuse(const ReminderStoreError& error) { refuse(error.message()); }

    static void end(ExitStatus status) { QCoreApplication::exit(status); }

    const CommandLineArguments& arguments_;
    const CommandLineEnvironment& environment_;
    Localization& localization_;
    QtScheduler scheduler_;
    FixedClock clock_;
    FixedCurrentCalendar calendar_;
    NotificationCenter notifications_;
    CompletionLedgerRepository ledger_;
    VdirEventStore eventStore_;
    ReminderStore store_;
    bool hasBegun_ = false;
};

}  // namespace

int runCommandLine(const QStringList& arguments, const CommandLineEnvironment& environment) {
    ReadOnceUserDefaults defaults(environment.preferencesFile);
    const Preferences preferences(defaults, [&] { return environment.systemLocale; });
    Localization localization(preferences);

    const auto parsed = parseCommandLine(arguments, environment.calendar);
    if (!parsed) {
        environment.err(localization(parsed.error()) + u' ' +
                        localization(text("See kestrant --help.", "Voir kestrant --help.")) + u'\n');
        return wrongUsage;
    }
    if (parsed->command == Command::help) {
        environment.out(localization(commandLineUsage()));
        return done;
    }
    if (parsed->command == Command::version) {
        environment.out(QStringLiteral("kestrant %1\n").arg(environment.version));
        return done;
    }

    // A folder that was named by mistake is not made, unless something is to be put there.
    if (parsed->store && parsed->command != Command::add && !QFileInfo(parsed->store->folder).isDir()) {
        environment.err(localization(text("There is no folder %1.\n", "Le dossier %1 n’existe pas.\n"))
                            .arg(parsed->store->folder));
        return refused;
    }
    const auto preferred =
        EventStoreLocation::parse(defaults.string(preferenceKeys::eventStore).value_or(QString()));
    const EventStoreLocation store =
        parsed->store.value_or(preferred.value_or(EventStoreLocation{environment.storeFolder}));
    return Session(*parsed, environment, defaults, localization, store.folder).run();
}

}  // namespace kestrant
