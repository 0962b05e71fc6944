#include "cli/ReminderCommands.h"

#include "cli/RecapOutput.h"
#include "cli/ReminderOutput.h"
#include "cli/ReminderRequests.h"
#include "foundation/JsonFileUserDefaults.h"
#include "reminders/model/ReminderConversion.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <memory>
#include <utility>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;

/// The reminder as the list shows it, open or not.
ReminderTask taskOf(const EKReminderData& reminder, const CommandRun& run) {
    const auto overrides = ReminderFlagIndex::load(run.defaults).localOverrides;
    const QString key = ReminderFlagIndex::flagKey(reminder.calendarItemIdentifier);
    return reminderTask(reminder, run.environment.zone, overrides.value(key, reminder.isFlagged));
}

/// Flags that the panel has set outweigh what the database says, so they have to follow.
tl::expected<void, TextPair> updateFlagsOfPanel(QStringList identifiers, bool flag, CommandRun& run) {
    const auto overrides = ReminderFlagIndex::load(run.defaults).localOverrides;
    identifiers.removeIf([&](const QString& identifier) {
        return overrides.value(ReminderFlagIndex::flagKey(identifier), flag) == flag;
    });
    if (identifiers.isEmpty())
        return {};
    JsonFileUserDefaults preferences(run.environment.preferencesFile, run.scheduler);
    const ReminderFlagIndex before = ReminderFlagIndex::load(preferences);
    ReminderFlagIndex after = before;
    for (const QString& identifier : identifiers)
        after.localOverrides.insert(ReminderFlagIndex::flagKey(identifier), flag);
    after.save(preferences, before);
    if (preferences.flush())
        return {};
    return tl::unexpected(ReminderStoreError{ReminderStoreError::Code::flagNotUpdated, {}}.message());
}

}  // namespace

ReminderCommands::FlagReading::FlagReading(CommandRun& run)
    : host(run.eventStore, run.openReminders, run.scheduler)
    , automation(host, queue, run.scheduler) {}

ReminderCommands::ReminderCommands(CommandRun& run)
    : run_(run)
    , ledger_(run.environment.ledgerFile)
    , flags_(run.arguments.command == Command::list ? std::optional<FlagReading>(std::in_place, run)
                                                    : std::nullopt)
    , store_(ReminderStoreServices{.eventStore = run.eventStore,
                                   .openReminders = run.openReminders,
                                   .scheduler = run.scheduler,
                                   .clock = run.clock,
                                   .currentZone = run.currentZone,
                                   .defaults = run.defaults,
                                   .localization = run.localization,
                                   .notifications = run.notifications,
                                   .ledger = ledger_,
                                   .completionsCommitted = run.environment.completionsCommitted,
                                   .flags = flags_ ? &flags_->automation : nullptr}) {
    const CommandLineArguments& arguments = run.arguments;
    store_.setShowsTodayOnly(arguments.todayOnly);
    store_.setShowsOverdueOnly(arguments.overdueOnly);
    store_.setShowsFlaggedOnly(arguments.isFlagged);
    store_.setSearchQuery(arguments.search);
    // A list that is named by its identifier, as it mostly is, needs no second fetch.
    store_.setSelectedListID(arguments.command == Command::list ? arguments.list : std::nullopt);
    if (arguments.sort)
        store_.setSortMode(*arguments.sort);
}

void ReminderCommands::start() {
    QObject::connect(&store_, &ReminderStore::accessStateChanged, &store_, [this] { accessChanged(); });
    const auto proceedLater = [this](auto signal) {
        // Queued, so that the store has taken in all of what it loaded.
        QObject::connect(
            &store_, signal, &store_,
            [this] {
                if (store_.hasLoaded() && !store_.isLoading() && !store_.isFlagLoading())
                    loaded();
            },
            Qt::QueuedConnection);
    };
    proceedLater(&ReminderStore::isLoadingChanged);
    proceedLater(&ReminderStore::isFlagLoadingChanged);
    store_.requestAccess();
}

void ReminderCommands::accessChanged() {
    using Kind = ReminderAccessState::Kind;
    const ReminderAccessState& state = store_.accessState();
    if (hasBegun_ || state.kind == Kind::requesting)
        return;
    if (state.kind != Kind::authorized) {
        run_.refuse(state.kind == Kind::failed ? state.message
                                               : text("Access to the reminders is not allowed.",
                                                      "L’accès aux rappels n’est pas autorisé."));
        return;
    }
    if (const auto taken = takeList(); !taken) {
        hasBegun_ = true;
        run_.printProblems();
        run_.refuse(taken.error());
    }
}

tl::expected<void, TextPair> ReminderCommands::takeList() {
    if (!run_.arguments.list)
        return {};
    const auto list = listNamed(*run_.arguments.list, run_.eventStore.calendars(EKEntityType::reminder));
    if (!list)
        return tl::unexpected(list.error());
    listID_ = *list;
    if (run_.arguments.command == Command::list)
        store_.setSelectedListID(listID_);
    return {};
}

void ReminderCommands::loaded() {
    if (std::exchange(hasBegun_, true))
        return;
    run_.printProblems();
    if (store_.flagFilterError())
        run_.printError(*store_.flagFilterError());
    if (run_.hasAnswer(EKEntityType::reminder, listID_))
        execute();
    else
        run_.finish(refused);
}

void ReminderCommands::execute() {
    const CommandLineArguments& arguments = run_.arguments;
    switch (arguments.command) {
    case Command::list:
        if (arguments.json)
            run_.printJson(tasksAsJson(store_.visibleTasks(), run_.environment.zone));
        else
            run_.print(tasksAsTable(store_.visibleTasks(), store_.lists(), run_.outputContext()));
        run_.finishReading();
        return;
    case Command::lists:
        run_.printCalendars(EKEntityType::reminder);
        run_.finishReading();
        return;
    case Command::recap:
        // Waits until completions made by other programs are in the ledger.
        store_.whenIdle([this] { printRecap(run_, ledger_.sortedRecords()); });
        return;
    case Command::add:
        lines_ = run_.linesToAdd();
        add();
        return;
    default:
        findReminders();
        return;
    }
}

void ReminderCommands::findReminders() {
    const QStringList& typed = run_.arguments.subjects;
    const bool areWhole = std::all_of(typed.begin(), typed.end(), [this](const QString& identifier) {
        return run_.eventStore.calendarItem(identifier) != nullptr;
    });
    const auto take = [this, typed](const QStringList& known) {
        if (const auto meant = remindersMeant(typed, known, notFound())) {
            identifiers_ = *meant;
            foundReminders();
        } else {
            run_.refuse(meant.error());
        }
    };
    if (areWhole) {
        take(typed);
        return;
    }
    const auto identifiers = [](const EKReminders& reminders) {
        QStringList result;
        for (const auto& reminder : reminders)
            result.append(reminder->calendarItemIdentifier);
        return result;
    };
    run_.eventStore.fetchReminders(
        EKEventStore::predicateForIncompleteReminders({}, {}, {}),
        [this, take, identifiers](const EKReminders& open) {
            run_.eventStore.fetchReminders(
                EKEventStore::predicateForCompletedReminders({}, {}, {}),
                [take, identifiers, known = identifiers(open)](const EKReminders& completed) {
                    take(known + identifiers(completed));
                });
        });
}

void ReminderCommands::foundReminders() {
    switch (run_.arguments.command) {
    case Command::show:
        show();
        return;
    case Command::edit:
        edit();
        return;
    case Command::reschedule:
        reschedule();
        return;
    case Command::move:
        move();
        return;
    case Command::flag:
    case Command::unflag:
        setFlagged(identifiers_, run_.arguments.command == Command::flag, [this] { end()({}); });
        return;
    case Command::complete:
        complete();
        return;
    case Command::remove:
        // A completed reminder is to be in the ledger before it goes.
        store_.whenIdle([this] { remove(); });
        return;
    default:
        return;
    }
}

TextPair ReminderCommands::notFound() const {
    return run_.notFound(EKEntityType::reminder,
                         ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}}.message());
}

void ReminderCommands::show() {
    const EKReminderRef reminder = run_.eventStore.calendarItem(identifiers_.first());
    if (!reminder) {
        run_.refuse(notFound());
        return;
    }
    const ReminderTask task = taskOf(reminder->data, run_);
    if (run_.arguments.json)
        run_.printJson(reminderAsJson(task, reminder->data, run_.environment.zone));
    else
        run_.print(reminderAsTable(task, reminder->data, store_.lists(), run_.outputContext()));
    run_.finishReading();
}

std::vector<ReminderList> ReminderCommands::knownLists() const {
    std::vector<ReminderList> lists = store_.lists();
    // One that was made for a line before is not among those that are shown yet.
    for (const EKCalendar& calendar : run_.eventStore.calendars(EKEntityType::reminder)) {
        const auto isIt = [&](const ReminderList& list) { return list.id == calendar.calendarIdentifier; };
        if (std::none_of(lists.begin(), lists.end(), isIt))
            lists.push_back({.id = calendar.calendarIdentifier, .title = calendar.title});
    }
    return lists;
}

void ReminderCommands::add() {
    if (lines_.isEmpty()) {
        run_.finish(hasFailed_ ? refused : done);
        return;
    }
    const CommandLineArguments& arguments = run_.arguments;
    const QuickAddContext context{.now = run_.clock.now(),
                                  .zone = run_.environment.zone,
                                  .language = run_.localization.language(),
                                  .lists = knownLists(),
                                  .locale = run_.environment.systemLocale};
    const QuickAddLine line = readLineToAdd(lines_.takeFirst(), arguments, context);
    const auto goOn = [this](const TextPair& error) {
        run_.printError(error);
        hasFailed_ = true;
        add();
    };
    const auto reminder = reminderToAdd(line, arguments, listID_, run_.environment.zone);
    if (!reminder)
        return goOn(reminder.error());
    store_.create(*reminder, [this, line, goOn](const tl::expected<QString, ReminderStoreError>& result) {
        if (!result)
            return goOn(result.error().message());
        if (run_.arguments.isFlagged || line.isFlagged)
            setFlagged({*result}, true, [this, line, identifier = *result] { added(line, identifier); });
        else
            added(line, *result);
    });
}

void ReminderCommands::added(const QuickAddLine& line, const QString& identifier) {
    if (!line.newListTitle.isEmpty() && !run_.arguments.makesLists)
        run_.printError(CommandRun::unknownList(line.newListTitle));
    // The identifier alone goes to the output, where scripts read it.
    if (!line.pieces.empty() && !run_.arguments.json)
        run_.environment.err(
            understoodAsTable(line, knownLists(), run_.arguments.makesLists, run_.outputContext()));
    const EKReminderRef reminder = run_.eventStore.calendarItem(identifier);
    if (run_.arguments.json && reminder)
        run_.printJson(reminderAsJson(taskOf(reminder->data, run_), reminder->data, run_.environment.zone));
    else
        run_.printIdentifier(identifier);
    add();
}

void ReminderCommands::edit() {
    const QString& identifier = identifiers_.first();
    const auto present = store_.editDetails(identifier);
    if (!present) {
        run_.refuse(notFound());
        return;
    }
    const auto details = editedDetails(*present, run_.arguments, listID_);
    if (!details) {
        run_.refuse(details.error());
        return;
    }
    store_.edit(identifier, *details, run_.arguments.repeat, end());
}

void ReminderCommands::reschedule() {
    const QString& identifier = identifiers_.first();
    const std::optional<TypedDate>& due = *run_.arguments.due;
    if (due)
        store_.reschedule(identifier, due->instant, due->includesTime, end());
    else
        store_.clearDueDate(identifier, end());
}

void ReminderCommands::move() {
    if (identifiers_.size() == 1) {
        store_.move(identifiers_.first(), *listID_, end());
        return;
    }
    saveTogether(
        identifiers_, [this](EKReminderData& reminder) { reminder.calendarIdentifier = *listID_; },
        [this](const QStringList&) { end()({}); });
}

void ReminderCommands::complete() {
    if (identifiers_.size() == 1) {
        store_.completeNow(identifiers_.first(), end());
        return;
    }
    QStringList open = identifiers_;
    open.removeIf([this](const QString& identifier) {
        const EKReminderRef reminder = run_.eventStore.calendarItem(identifier);
        return reminder && reminder->data.isCompleted;
    });
    saveTogether(
        open, [](EKReminderData& reminder) { reminder.isCompleted = true; },
        [this](const QStringList& written) {
            if (!written.isEmpty() && run_.environment.completionsCommitted)
                run_.environment.completionsCommitted(int(written.size()));
            // The ledger learns of completions from the fetch.
            store_.reloadTasks();
            end()({});
        });
}

void ReminderCommands::remove() {
    const auto waiting = std::make_shared<qsizetype>(identifiers_.size());
    for (const QString& identifier : std::as_const(identifiers_)) {
        store_.remove(identifier, [this, waiting, identifier](const auto& result) {
            if (!result)
                printFailure(result.error(), identifier);
            if (--*waiting == 0)
                end()({});
        });
    }
}

void ReminderCommands::setFlagged(const QStringList& identifiers, bool flag,
                                  const std::function<void()>& done) {
    saveTogether(
        identifiers, [flag](EKReminderData& reminder) { reminder.isFlagged = flag; },
        [this, flag, done](const QStringList& written) {
            if (const auto updated = updateFlagsOfPanel(written, flag, run_); !updated) {
                run_.printError(updated.error());
                hasFailed_ = true;
            }
            done();
        });
}

void ReminderCommands::saveTogether(const QStringList& identifiers,
                                    const std::function<void(EKReminderData&)>& change,
                                    std::function<void(const QStringList& written)> done) {
    std::vector<EKReminderRef> reminders;
    for (const QString& identifier : identifiers) {
        const EKReminderRef reminder = run_.eventStore.calendarItem(identifier);
        if (!reminder) {
            run_.refuse(about(identifier, notFound()));
            return;
        }
        change(reminder->data);
        reminders.push_back(reminder);
    }
    if (reminders.empty())
        return done({});
    run_.eventStore.saveAll(reminders, [this, identifiers, done = std::move(done)](const auto& results) {
        QStringList written;
        for (std::size_t i = 0; i < results.size(); ++i) {
            const QString& identifier = identifiers[qsizetype(i)];
            if (results[i])
                written.append(identifier);
            else
                printFailure(ReminderStoreError::from(results[i].error()), identifier);
        }
        done(written);
    });
}

void ReminderCommands::printFailure(const ReminderStoreError& error, const QString& identifier) {
    hasFailed_ = true;
    run_.printError(identifiers_.size() > 1 ? about(identifier, error.message()) : error.message());
}

std::function<void(const tl::expected<void, ReminderStoreError>&)> ReminderCommands::end() {
    return [this](const tl::expected<void, ReminderStoreError>& result) {
        if (!result)
            printFailure(result.error(), identifiers_.first());
        if (!hasFailed_ && run_.arguments.json) {
            if (run_.arguments.subjects.size() == 1)
                run_.printIdentifier(identifiers_.first());
            else
                run_.printIdentifiers(identifiers_);
        }
        store_.whenIdle([this] { finish(); });
    };
}

void ReminderCommands::finish() {
    if (store_.completionLedgerError())
        run_.printError(*store_.completionLedgerError());
    run_.finish(hasFailed_ ? refused : done);
}

}  // namespace kestrant
