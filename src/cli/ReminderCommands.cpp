#include "cli/ReminderCommands.h"

#include "cli/ReminderOutput.h"
#include "cli/ReminderRequests.h"
#include "foundation/JsonFileUserDefaults.h"
#include "reminders/ReminderConversion.h"

#include <QJsonArray>
#include <QJsonObject>

#include <utility>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;

/// The reminder as the list shows it, open or not.
ReminderTask taskOf(const EKReminderData& reminder, const CommandRun& run) {
    ReminderFlagIndex flags = ReminderFlagIndex::load(run.defaults);
    flags.nativeIDs.clear();
    if (reminder.isFlagged)
        flags.nativeIDs.insert(ReminderFlagIndex::flagKey(reminder.calendarItemIdentifier));
    return reminderTask(reminder, run.environment.calendar, flags);
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
    : host(run.eventStore, run.scheduler)
    , automation(host, queue, run.scheduler) {}

ReminderCommands::ReminderCommands(CommandRun& run)
    : run_(run)
    , ledger_(run.environment.ledgerFile)
    , flags_(run.arguments.command == Command::list ? std::optional<FlagReading>(std::in_place, run)
                                                    : std::nullopt)
    , store_(ReminderStoreServices{.eventStore = run.eventStore,
                                   .scheduler = run.scheduler,
                                   .clock = run.clock,
                                   .calendar = run.calendar,
                                   .defaults = run.defaults,
                                   .localization = run.localization,
                                   .notifications = run.notifications,
                                   .ledger = ledger_,
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
    carryOut();
}

void ReminderCommands::carryOut() {
    const CommandLineArguments& arguments = run_.arguments;
    const auto setFlag = [this](bool flag) {
        setFlagged(QStringList(run_.arguments.subject) + run_.arguments.moreSubjects, flag,
                   [this] { changed({}); });
    };
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
    case Command::edit:
        edit();
        return;
    case Command::reschedule:
        reschedule();
        return;
    case Command::move:
        store_.move(arguments.subject, *listID_, [this](const auto& result) { changed(result); });
        return;
    case Command::flag:
        setFlag(true);
        return;
    case Command::unflag:
        setFlag(false);
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
    const EKReminderRef reminder = run_.eventStore.calendarItem(run_.arguments.subject);
    if (!reminder) {
        run_.refuse(ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}}.message());
        return;
    }
    const ReminderTask task = taskOf(reminder->data, run_);
    if (run_.arguments.json)
        run_.printJson(reminderAsJson(task, reminder->data, run_.environment.calendar));
    else
        run_.print(reminderAsTable(task, reminder->data, store_.lists(), run_.outputContext()));
    run_.finishReading();
}

void ReminderCommands::add() {
    const CommandLineArguments& arguments = run_.arguments;
    const QuickAddLine line = readLineToAdd(arguments, {run_.clock.now(), run_.environment.calendar,
                                                        run_.localization.language(), store_.lists()});
    const auto reminder = reminderToAdd(line, arguments, listID_, run_.environment.calendar);
    if (!reminder) {
        run_.refuse(reminder.error());
        return;
    }
    store_.create(*reminder, [this, line](const tl::expected<QString, ReminderStoreError>& result) {
        if (!result) {
            run_.refuse(result.error().message());
            return;
        }
        // The identifier alone goes to the output, where scripts read it.
        if (!line.pieces.empty() && !run_.arguments.json)
            run_.environment.err(understoodAsTable(line, store_.lists(), run_.outputContext()));
        if (run_.arguments.isFlagged)
            setFlagged({*result}, true, [this, identifier = *result] { added(identifier); });
        else
            added(*result);
    });
}

void ReminderCommands::added(const QString& identifier) {
    const EKReminderRef reminder = run_.eventStore.calendarItem(identifier);
    if (run_.arguments.json && reminder)
        run_.printJson(
            reminderAsJson(taskOf(reminder->data, run_), reminder->data, run_.environment.calendar));
    else
        run_.printIdentifier(identifier);
    run_.finish();
}

void ReminderCommands::edit() {
    const QString& identifier = run_.arguments.subject;
    const auto present = store_.editDetails(identifier);
    if (!present) {
        run_.refuse(ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}}.message());
        return;
    }
    const auto details = editedDetails(*present, run_.arguments, listID_);
    if (!details) {
        run_.refuse(details.error());
        return;
    }
    store_.edit(identifier, *details, run_.arguments.repeat, [this](const auto& result) { changed(result); });
}

void ReminderCommands::reschedule() {
    const QString& identifier = run_.arguments.subject;
    const std::optional<TypedDate>& due = *run_.arguments.due;
    const auto done = [this](const auto& result) { changed(result); };
    if (due)
        store_.reschedule(identifier, due->instant, due->includesTime, done);
    else
        store_.clearDueDate(identifier, done);
}

void ReminderCommands::setFlagged(const QStringList& identifiers, bool flag,
                                  const std::function<void()>& done) {
    std::vector<EKReminderRef> reminders;
    for (const QString& identifier : identifiers) {
        const EKReminderRef reminder = run_.eventStore.calendarItem(identifier);
        if (!reminder) {
            run_.refuse(nameIfSeveral(ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}},
                                      identifier));
            return;
        }
        reminder->data.isFlagged = flag;
        reminders.push_back(reminder);
    }
    run_.eventStore.saveAll(reminders, [this, identifiers, flag, done](const auto& results) {
        QStringList written;
        std::optional<TextPair> failure;
        for (std::size_t i = 0; i < results.size(); ++i) {
            const QString& identifier = identifiers[qsizetype(i)];
            if (results[i])
                written.append(identifier);
            else if (!failure)
                failure = nameIfSeveral(ReminderStoreError::from(results[i].error()), identifier);
        }
        if (const auto updated = updateFlagsOfPanel(written, flag, run_); !updated && !failure)
            failure = updated.error();
        if (failure)
            run_.refuse(*failure);
        else
            done();
    });
}

TextPair ReminderCommands::nameIfSeveral(const ReminderStoreError& error, const QString& identifier) const {
    TextPair message = error.message();
    if (run_.arguments.moreSubjects.isEmpty())
        return message;
    return {identifier + QStringLiteral(": ") + message.english,
            identifier + QStringLiteral(" : ") + message.french};
}

void ReminderCommands::changed(const tl::expected<void, ReminderStoreError>& result) {
    if (!result) {
        run_.refuse(result.error().message());
        return;
    }
    if (run_.arguments.json && run_.arguments.moreSubjects.isEmpty())
        run_.printIdentifier(run_.arguments.subject);
    else if (run_.arguments.json)
        run_.printIdentifiers(QStringList(run_.arguments.subject) + run_.arguments.moreSubjects);
    store_.whenIdle([this] {
        if (store_.completionLedgerError())
            run_.printError(*store_.completionLedgerError());
        run_.finish();
    });
}

}  // namespace kestrant
