#include "reminders/store/ReminderStore.h"

#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "preferences/Localization.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/model/ReminderConversion.h"
#include "reminders/model/ReminderManualOrder.h"
#include "reminders/store/ReminderOutcomes.h"

#include <QPointer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

constexpr Duration reloadDelay = 300ms;
constexpr Duration reconciliationDelay = 150ms;

ReminderAccessState::Kind accessKind(EKAuthorizationStatus status) {
    switch (status) {
    case EKAuthorizationStatus::notDetermined:
        return ReminderAccessState::Kind::notDetermined;
    case EKAuthorizationStatus::restricted:
        return ReminderAccessState::Kind::restricted;
    case EKAuthorizationStatus::denied:
        return ReminderAccessState::Kind::denied;
    case EKAuthorizationStatus::fullAccess:
        return ReminderAccessState::Kind::authorized;
    }
    return ReminderAccessState::Kind::denied;
}

void storeText(UserDefaults& defaults, const QString& key, const std::optional<QString>& value) {
    if (value)
        defaults.set(key, *value);
    else
        defaults.remove(key);
}

}  // namespace

ReminderStore::ReminderStore(ReminderStoreServices services, QObject* parent)
    : QObject(parent)
    , services_(std::move(services))
    , flags_(services_.scheduler, services_.defaults, services_.flags)
    , reconciler_(services_.eventStore, services_.scheduler, services_.clock, services_.calendar,
                  services_.ledger) {
    restorePreferences();
    observe();
    recomputeForPresent();
}

ReminderStore::~ReminderStore() = default;

void ReminderStore::restorePreferences() {
    selectedListID_ = services_.defaults.string(preferenceKeys::selectedReminderListID);
    QStringList order =
        services_.defaults.stringList(preferenceKeys::reminderManualOrder).value_or(QStringList());
    order.removeDuplicates();
    setManualOrderIDs(std::move(order));
    if (const auto stored = services_.defaults.string(preferenceKeys::reminderSortMode))
        sortMode_ = reminderSortMode(*stored).value_or(sortMode_);
}

void ReminderStore::observe() {
    eventStoreObserver_ = services_.eventStore.observeChanges([this] {
        updateProblems();
        scheduleReload();
    });
    calendarEventObserver_ = services_.notifications.observe(QLatin1String(calendarEventChangedNotification),
                                                             [this] { scheduleReload(); });
    zoneObserver_ = services_.calendar.observeChanges([this] {
        // Date-only due dates are instants of the zone: read them anew.
        reloadTasks();
        presentDidChange();
    });
    languageObserver_ = services_.localization.observeChanges([this] { languageChanged(); });
    connect(&reconciler_, &CompletionReconciler::recordsChanged, this,
            &ReminderStore::completionRecordsChanged);
    connect(&reconciler_, &CompletionReconciler::errorChanged, this,
            &ReminderStore::completionLedgerErrorChanged);
    connect(&reconciler_, &CompletionReconciler::ended, this, &ReminderStore::callBackWhenIdle);
    connect(&flags_, &ReminderFlagSync::indexChanged, this, &ReminderStore::refreshFlags);
    connect(&flags_, &ReminderFlagSync::isLoadingChanged, this, &ReminderStore::isFlagLoadingChanged);
    connect(&flags_, &ReminderFlagSync::errorChanged, this, &ReminderStore::flagFilterErrorChanged);
    connect(&flags_, &ReminderFlagSync::pendingIDsChanged, this, &ReminderStore::pendingFlagIDsChanged);
    connect(&flags_, &ReminderFlagSync::ended, this, &ReminderStore::callBackWhenIdle);
}

void ReminderStore::languageChanged() {
    ordering_ =
        ReminderOrdering(fetchedTasks_, TextCollation(services_.localization.dateLocale()), ordering_);
    visibleTasksCache_.reset();
    recompute();
    if (!searchQuery_.trimmed().isEmpty())
        Q_EMIT tasksChanged();
}

void ReminderStore::setAccessState(ReminderAccessState state) {
    if (state == accessState_)
        return;
    accessState_ = std::move(state);
    Q_EMIT accessStateChanged();
    if (accessState_.kind == ReminderAccessState::Kind::authorized) {
        reloadLists();
        reloadTasks();
        reloadFlags();
    }
}

void ReminderStore::requestAccess() {
    if (accessState_.kind == ReminderAccessState::Kind::requesting)
        return;
    setAccessState({ReminderAccessState::Kind::requesting, {}});
    beginActivity();
    services_.eventStore.requestFullAccessToReminders([self = QPointer(this), generation = accessGeneration_](
                                                          bool granted, const std::optional<EKError>& error) {
        if (!self)
            return;
        if (generation != self->accessGeneration_)
            return self->endActivity();
        const auto status = self->services_.eventStore.authorizationStatus(EKEntityType::reminder);
        if (granted)
            self->setAccessState({ReminderAccessState::Kind::authorized, {}});
        else if (error && error->code != EKError::Code::accessDenied)
            self->setAccessState(ReminderAccessState::failed(error->message));
        else if (status == EKAuthorizationStatus::restricted)
            self->setAccessState({ReminderAccessState::Kind::restricted, {}});
        else
            self->setAccessState({ReminderAccessState::Kind::denied, {}});
        self->endActivity();
    });
}

void ReminderStore::refreshAccessState() {
    if (accessState_.kind == ReminderAccessState::Kind::requesting)
        return;
    setAccessState({accessKind(services_.eventStore.authorizationStatus(EKEntityType::reminder)), {}});
}

void ReminderStore::databaseWasExchanged() {
    const bool wasRequested = accessState_.kind != ReminderAccessState::Kind::notDetermined;
    ++accessGeneration_;
    ++fetchGeneration_;
    setAccessState({});
    lists_.clear();
    Q_EMIT listsChanged();
    setFetchedTasks({});
    fetched_ = {};
    hasLoaded_ = false;
    if (services_.history)
        services_.history->clear();
    if (std::exchange(isLoading_, false))
        Q_EMIT isLoadingChanged();
    if (wasRequested)
        requestAccess();
}

void ReminderStore::reload() {
    if (accessState_.kind == ReminderAccessState::Kind::failed) {
        const auto status = services_.eventStore.authorizationStatus(EKEntityType::reminder);
        if (status == EKAuthorizationStatus::notDetermined)
            requestAccess();
        else
            refreshAccessState();
    } else if (accessState_.kind == ReminderAccessState::Kind::authorized) {
        reloadLists();
        reloadTasks();
    }
}

void ReminderStore::scheduleReload() {
    eventStoreReloadTask_ = services_.scheduler.after(reloadDelay, [this] {
        reload();
        reloadFlags();
    });
}

void ReminderStore::reloadLists() {
    if (accessState_.kind != ReminderAccessState::Kind::authorized)
        return;
    std::vector<ReminderList> lists;
    for (const EKCalendar& calendar : services_.eventStore.calendars(EKEntityType::reminder))
        lists.push_back({calendar.calendarIdentifier, calendar.title, calendar.color,
                         calendar.allowsContentModifications});
    if (lists == lists_)
        return;
    lists_ = std::move(lists);
    Q_EMIT listsChanged();
}

void ReminderStore::reloadTasks() {
    if (accessState_.kind != ReminderAccessState::Kind::authorized)
        return;
    const int generation = ++fetchGeneration_;
    std::optional<std::vector<QString>> calendars;
    if (selectedListID_ && services_.eventStore.calendarWithIdentifier(*selectedListID_))
        calendars = {*selectedListID_};
    const bool isRestricted = calendars.has_value();
    beginActivity();
    if (!std::exchange(isLoading_, true))
        Q_EMIT isLoadingChanged();
    services_.eventStore.fetchReminders(
        EKEventStore::predicateForIncompleteReminders(std::nullopt, std::nullopt, std::move(calendars)),
        [self = QPointer(this), generation, isRestricted](EKReminders reminders) {
            if (!self)
                return;
            if (generation == self->fetchGeneration_)
                self->applyFetch(std::move(reminders), isRestricted);
            self->endActivity();
        });
}

void ReminderStore::applyFetch(EKReminders reminders, bool isRestricted) {
    const ZoneCalendar calendar = services_.calendar.calendar();
    isLoading_ = false;
    hasLoaded_ = true;
    const bool isAsBefore = fetched_.calendar == calendar && fetched_.reminders == reminders &&
                            fetchedTasks_->size() == reminders.size();
    if (!isAsBefore)
        setFetchedTasks(tasksOf(reminders, calendar));
    fetched_ = {std::move(reminders), calendar};
    updateManualOrder(isRestricted);
    Q_EMIT isLoadingChanged();
    updateProblems();
    if (!revealOnceLoaded_.isEmpty())
        reveal(std::exchange(revealOnceLoaded_, {}));
    reconciler_.schedule(reconciliationDelay);
}

std::vector<ReminderTask> ReminderStore::tasksOf(const EKReminders& reminders,
                                                 const ZoneCalendar& calendar) const {
    const bool areKnown = fetched_.calendar == calendar && fetchedTasks_->size() == fetched_.reminders.size();
    std::vector<ReminderTask> tasks;
    tasks.reserve(reminders.size());
    for (std::size_t i = 0; i < reminders.size(); ++i) {
        const bool isKnown =
            areKnown && i < fetched_.reminders.size() && reminders[i] == fetched_.reminders[i];
        tasks.push_back(isKnown
                            ? (*fetchedTasks_)[i]
                            : reminderTask(*reminders[i], calendar,
                                           flags_.index().isFlagged(reminders[i]->calendarItemIdentifier)));
    }
    return tasks;
}

void ReminderStore::updateProblems() {
    auto problems = services_.eventStore.problems();
    if (problems == problems_)
        return;
    problems_ = std::move(problems);
    Q_EMIT problemsChanged();
}

void ReminderStore::setFetchedTasks(std::vector<ReminderTask> tasks) {
    if (tasks == *fetchedTasks_)
        return;
    fetchedTasks_ = std::make_shared<const std::vector<ReminderTask>>(std::move(tasks));
    ordering_ =
        ReminderOrdering(fetchedTasks_, TextCollation(services_.localization.dateLocale()), ordering_);
    recomputeForPresent();
}

void ReminderStore::updateManualOrder(bool isRestricted) {
    QStringList order = manualOrderIDs_;
    if (!isRestricted && ordering_.placedTasks() != static_cast<std::size_t>(order.size())) {
        QSet<QString> open;
        for (const ReminderTask& task : *fetchedTasks_)
            open.insert(task.id);
        order.removeIf([&](const QString& id) { return !open.contains(id); });
    }
    // What is shown and has no place yet comes last.
    const ReminderPresent now = present();
    const auto isShownWithoutPlace = [&](std::uint32_t index) {
        return !ordering_.hasPlace(index) && passes((*fetchedTasks_)[index], filters_, now);
    };
    for (const std::uint32_t index : ordering_.ordered(ReminderSortMode::manual, isShownWithoutPlace))
        order.append((*fetchedTasks_)[index].id);
    if (order.size() == manualOrderIDs_.size() && order == manualOrderIDs_)
        return;
    setManualOrderIDs(std::move(order));
}

void ReminderStore::setManualOrderIDs(QStringList ids) {
    manualOrderIDs_ = std::move(ids);
    ordering_.setManualOrder(manualOrderIDs_);
    Q_EMIT manualOrderIDsChanged();
}

ReminderPresent ReminderStore::present() const {
    return ReminderPresent::at(services_.clock.now(), services_.calendar.calendar());
}

ReminderTaskList ReminderStore::filteredTasks(ReminderSortMode mode) const {
    const ReminderPresent now = present();
    return {fetchedTasks_, ordering_.ordered(mode, [&](std::uint32_t index) {
                return passes((*fetchedTasks_)[index], filters_, now);
            })};
}

void ReminderStore::recompute() {
    ReminderTaskList tasks = filteredTasks(sortMode_);
    if (tasks == tasks_)
        return;
    tasks_ = std::move(tasks);
    visibleTasksCache_.reset();
    Q_EMIT tasksChanged();
}

void ReminderStore::recomputeForPresent() {
    const ReminderPresent now = present();
    presentTask_ = services_.scheduler.after(nextFilterChange(*fetchedTasks_, now) - now.now,
                                             [this] { presentDidChange(); });
    const ReminderFilterCounts counts = kestrant::filterCounts(*fetchedTasks_, now);
    const bool countsChanged = counts != std::exchange(filterCounts_, counts);
    recompute();
    if (countsChanged)
        Q_EMIT filterCountsChanged();
}

void ReminderStore::presentDidChange() {
    recomputeForPresent();
    Q_EMIT presentChanged();
}

void ReminderStore::systemDidWake() {
    presentDidChange();
    if (services_.history)
        services_.history->removeExpired();
}

const ReminderTaskList& ReminderStore::visibleTasks() const {
    if (searchQuery_.trimmed().isEmpty())
        return tasks_;
    if (!visibleTasksCache_)
        visibleTasksCache_ =
            searched(tasks_, searchQuery_, TextCollation(services_.localization.dateLocale()));
    return *visibleTasksCache_;
}

const ReminderTask* ReminderStore::task(const QString& id) const {
    const auto found = std::find_if(fetchedTasks_->begin(), fetchedTasks_->end(),
                                    [&](const ReminderTask& candidate) { return candidate.id == id; });
    return found == fetchedTasks_->end() ? nullptr : &*found;
}

void ReminderStore::setSelectedListID(const std::optional<QString>& id) {
    if (id == selectedListID_)
        return;
    selectedListID_ = id;
    storeText(services_.defaults, preferenceKeys::selectedReminderListID, id);
    Q_EMIT selectedListIDChanged();
    reloadTasks();
}

void ReminderStore::setSortMode(ReminderSortMode mode) {
    const ReminderSortMode before = sortMode_;
    if (mode == before)
        return;
    applySortMode(mode);
    record(
        text("Change sort order", "Changer le tri"),
        {QStringLiteral("Sorted: %1").arg(title(mode).english),
         QStringLiteral("Tri : %1").arg(title(mode).french)},
        [this, before] { applySortMode(before); }, [this, mode] { applySortMode(mode); });
}

void ReminderStore::applySortMode(ReminderSortMode mode) {
    if (mode == sortMode_)
        return;
    sortMode_ = mode;
    services_.defaults.set(preferenceKeys::reminderSortMode, rawValue(mode));
    Q_EMIT sortModeChanged();
    recompute();
}

void ReminderStore::commitManualOrder(const QStringList& ids, const QString& moved) {
    QStringList arranged;
    for (const QString& id : ids)
        arranged.append(currentID(id));
    const Placement before{manualOrderIDs_, sortMode_};
    const Placement after{mergedManualOrder(manualOrderIDs_, arranged), ReminderSortMode::manual};
    if (after.ids == before.ids && after.mode == before.mode)
        return;
    const ReminderTask* dragged = task(moved);
    const QString title = dragged ? dragged->title : QString();
    const bool switches = after.mode != before.mode;
    applyPlacement(after);
    record(
        text("Move reminder", "Déplacer le rappel"),
        outcomeText(switches
                        ? text("“%1” moved · now in manual order", "« %1 » déplacé · ordre manuel désormais")
                        : text("“%1” moved", "« %1 » déplacé"),
                    title),
        [this, before] { restorePlacement(before); }, [this, after] { restorePlacement(after); });
}

void ReminderStore::restorePlacement(const Placement& placement) {
    // What has come since keeps its place, and what has gone stays away.
    const QSet<QString> present(manualOrderIDs_.begin(), manualOrderIDs_.end());
    QStringList arranged;
    for (const QString& former : placement.ids) {
        const QString id = currentID(former);
        if (present.contains(id))
            arranged.append(id);
    }
    applyPlacement({mergedManualOrder(manualOrderIDs_, arranged), placement.mode});
}

void ReminderStore::applyPlacement(const Placement& placement) {
    services_.defaults.setStringList(preferenceKeys::reminderManualOrder, placement.ids);
    setManualOrderIDs(placement.ids);
    if (placement.mode == sortMode_)
        recompute();
    else
        applySortMode(placement.mode);
}

void ReminderStore::setFilters(const ReminderFilters& filters) {
    if (filters == filters_)
        return;
    filters_ = filters;
    Q_EMIT filtersChanged();
    recompute();
}

void ReminderStore::setShowsTodayOnly(bool on) {
    ReminderFilters filters = filters_;
    filters.todayOnly = on;
    setFilters(filters);
}

void ReminderStore::setShowsOverdueOnly(bool on) {
    ReminderFilters filters = filters_;
    filters.overdueOnly = on;
    setFilters(filters);
}

void ReminderStore::setShowsFlaggedOnly(bool on) {
    ReminderFilters filters = filters_;
    filters.flaggedOnly = on;
    setFilters(filters);
}

void ReminderStore::setSearchQuery(const QString& query) {
    if (query == searchQuery_)
        return;
    searchQuery_ = query;
    visibleTasksCache_.reset();
    Q_EMIT searchQueryChanged();
    Q_EMIT tasksChanged();
}

std::optional<QString> ReminderStore::defaultListID() const {
    return services_.defaults.string(preferenceKeys::defaultReminderListID);
}

void ReminderStore::setDefaultListID(const std::optional<QString>& id) {
    if (id == defaultListID())
        return;
    storeText(services_.defaults, preferenceKeys::defaultReminderListID, id);
    Q_EMIT defaultListIDChanged();
}

void ReminderStore::reveal(const QString& id) {
    reminderRevealRequest_ = {QUuid::createUuid(), id};
    Q_EMIT revealRequested(*reminderRevealRequest_);
}

void ReminderStore::whenIdle(std::function<void()> done) {
    idleWaiters_.push_back(std::move(done));
    callBackWhenIdle();
}

void ReminderStore::endActivity() {
    --activities_;
    callBackWhenIdle();
}

void ReminderStore::callBackWhenIdle() {
    if (idleWaiters_.empty() || activities_ > 0 || flags_.isBusy() || reconciler_.bringForward())
        return;
    services_.scheduler.post([self = QPointer(this)] {
        if (!self || self->activities_ > 0 || self->flags_.isBusy())
            return;
        for (const auto& waiter : std::exchange(self->idleWaiters_, {}))
            waiter();
    });
}

}  // namespace kestrant
