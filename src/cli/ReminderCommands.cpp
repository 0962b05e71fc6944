#include "cli/ReminderCommands.h"

#include "cli/ReminderOutput.h"
#include "reminders/ReminderConversion.h"

#include <QJsonArray>
#include <QJsonObject>

#include <utility>

namespace kestrant {

using Command = CommandLineArguments::Command;

ReminderCommands::ReminderCommands(CommandRun& run)
    : run_(run)
    , ledger_(run.environment.ledgerFile)
    , store_(ReminderStoreServices{.eventStore = run.eventStore,
                                   .scheduler = run.scheduler,
                                   .clock = run.clock,
                                   .calendar = run.calendar,
                                   .defaults = run.defaults,
                                   .localization = run.localization,
                                   .notifications = run.notifications,
                                   .ledger = ledger_}) {
    const CommandLineArguments& arguments = run.arguments;
    store_.setShowsTodayOnly(arguments.todayOnly);
    store_.setShowsOverdueOnly(arguments.overdueOnly);
    store_.setShowsFlaggedOnly(arguments.flaggedOnly);
    store_.setSearchQuery(arguments.search);
    store_.setSelectedListID(arguments.listID);
    if (arguments.sort)
        store_.setSortMode(*arguments.sort);
}

void ReminderCommands::start() {
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
}

void ReminderCommands::accessChanged() {
    using Kind = ReminderAccessState::Kind;
    const ReminderAccessState& state = store_.accessState();
    if (hasBegun_ || state.kind == Kind::requesting || state.kind == Kind::authorized)
        return;
    run_.refuse(state.kind == Kind::failed ? state.message
                                           : text("Access to the reminders is not allowed.",
                                                  "L’accès aux rappels n’est pas autorisé."));
}

void ReminderCommands::loaded() {
    if (std::exchange(hasBegun_, true))
        return;
    run_.printProblems();
    const auto& listID = run_.arguments.listID;
    if (listID && !run_.eventStore.calendarWithIdentifier(*listID)) {
        run_.refuse(ReminderStoreError{ReminderStoreError::Code::listUnavailable, {}}.message());
        return;
    }
    carryOut();
}

void ReminderCommands::carryOut() {
    const CommandLineArguments& arguments = run_.arguments;
    switch (arguments.command) {
    case Command::list:
        if (arguments.json)
            run_.printJson(tasksAsJson(store_.visibleTasks(), run_.environment.calendar));
        else
            run_.print(tasksAsTable(store_.visibleTasks(), store_.lists(), run_.outputContext()));
        run_.finishReading();
        return;
    case Command::lists:
        run_.printCalendars(EKEntityType::reminder);
        run_.finishReading();
        return;
    case Command::show:
        show();
        return;
    case Command::add:
        add();
        return;
    case Command::complete:
        store_.completeNow(arguments.subject, [this](const auto& result) { changed(result); });
        return;
    case Command::remove:
        // A completed reminder is to be in the ledger before it goes.
        store_.whenIdle([this] {
            store_.remove(run_.arguments.subject, [this](const auto& result) { changed(result); });
        });
        return;
    default:
        return;
    }
}

void ReminderCommands::show() {
    const QString& identifier = run_.arguments.subject;
    const EKReminderRef reminder = run_.eventStore.calendarItem(identifier);
    if (!reminder) {
        run_.refuse(ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}}.message());
        return;
    }
    const ReminderTask* open = store_.task(identifier);
    const ReminderTask task = open ? *open : reminderTask(reminder->data, run_.environment.calendar, {});
    if (run_.arguments.json)
        run_.printJson(reminderAsJson(task, reminder->data, run_.environment.calendar));
    else
        run_.print(reminderAsTable(task, reminder->data, store_.lists(), run_.outputContext()));
    run_.finishReading();
}

void ReminderCommands::add() {
    const CommandLineArguments& arguments = run_.arguments;
    NewReminder reminder;
    reminder.title = arguments.subject;
    if (arguments.due) {
        reminder.dueDate = arguments.due->instant;
        reminder.dueDateIncludesTime = arguments.due->includesTime;
    }
    reminder.priority = arguments.priority;
    reminder.listID = arguments.listID;
    store_.create(reminder, [this](const tl::expected<QString, ReminderStoreError>& result) {
        if (!result) {
            run_.refuse(result.error().message());
            return;
        }
        run_.printIdentifier(*result);
        run_.finish();
    });
}

void ReminderCommands::changed(const tl::expected<void, ReminderStoreError>& result) {
    if (!result) {
        run_.refuse(result.error().message());
        return;
    }
    if (run_.arguments.json)
        run_.printIdentifier(run_.arguments.subject);
    store_.whenIdle([this] {
        if (store_.completionLedgerError())
            run_.printError(*store_.completionLedgerError());
        run_.finish();
    });
}

}  // namespace kestrant
