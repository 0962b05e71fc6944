#include "reminders/store/ShownReminders.h"

#include "eventkit/model/EKReminder.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/TextCollation.h"
#include "preferences/Localization.h"
#include "reminders/flags/ReminderFlagSync.h"
#include "reminders/model/ReminderConversion.h"
#include "reminders/store/ReminderArrangement.h"

#include <QSet>

#include <algorithm>
#include <memory>
#include <utility>

namespace kestrant {

ShownReminders::ShownReminders(const ReminderStoreServices& services, ReminderArrangement& arrangement,
                               ReminderFlagSync& flags)
    : services_(services)
    , arrangement_(arrangement)
    , flags_(flags)
    , zoneObserver_(services.currentZone.observeChanges([this] { presentDidChange(); }))
    , languageObserver_(services.localization.observeChanges([this] { languageChanged(); })) {
    ordering_.setManualOrder(arrangement_.manualOrderIDs());
    connect(&arrangement_, &ReminderArrangement::manualOrderIDsChanged, this,
            [this] { ordering_.setManualOrder(arrangement_.manualOrderIDs()); });
    connect(&arrangement_, &ReminderArrangement::arranged, this, &ShownReminders::recompute);
    connect(&flags_, &ReminderFlagSync::indexChanged, this, &ShownReminders::refreshFlags);
    recomputeForPresent();
}

void ShownReminders::show(const OpenReminders::Reminders& reminders, bool isOfOneList) {
    const TimeZone zone = services_.currentZone.zone();
    const bool isAsBefore = fetched_.reminders && fetched_.zone == zone &&
                            fetchedTasks_->size() == reminders->size() &&
                            (fetched_.reminders == reminders || *fetched_.reminders == *reminders);
    if (!isAsBefore)
        setFetchedTasks(tasksOf(*reminders, zone));
    fetched_ = {reminders, zone};
    updateManualOrder(isOfOneList);
}

std::vector<ReminderTask> ShownReminders::tasksOf(const EKReminders& reminders, const TimeZone& zone) const {
    const EKReminders none;
    const EKReminders& former = fetched_.reminders ? *fetched_.reminders : none;
    const bool areKnown = fetched_.zone == zone && fetchedTasks_->size() == former.size();
    std::vector<ReminderTask> tasks;
    tasks.reserve(reminders.size());
    for (std::size_t i = 0; i < reminders.size(); ++i) {
        const auto& reminder = reminders[i];
        const bool isKnown = areKnown && i < former.size() && reminder == former[i];
        tasks.push_back(isKnown ? (*fetchedTasks_)[i]
                                : reminderTask(*reminder, zone,
                                               flags_.index().isFlagged(reminder->calendarItemIdentifier)));
    }
    return tasks;
}

void ShownReminders::clear() {
    setFetchedTasks({});
    fetched_ = {};
}

void ShownReminders::remove(const QString& id) {
    std::vector<ReminderTask> remaining = *fetchedTasks_;
    std::erase_if(remaining, [&](const ReminderTask& task) { return task.id == id; });
    setFetchedTasks(std::move(remaining));
}

void ShownReminders::refreshFlags() {
    std::vector<ReminderTask> tasks = *fetchedTasks_;
    for (ReminderTask& task : tasks)
        task.isFlagged = flags_.index().isFlagged(task.id);
    setFetchedTasks(std::move(tasks));
}

ReminderOrdering ShownReminders::orderingAnew() const {
    return {fetchedTasks_, TextCollation(services_.localization.dateLocale()), ordering_};
}

void ShownReminders::setFetchedTasks(std::vector<ReminderTask> tasks) {
    if (tasks == *fetchedTasks_)
        return;
    fetchedTasks_ = std::make_shared<const std::vector<ReminderTask>>(std::move(tasks));
    ordering_ = orderingAnew();
    recomputeForPresent();
}

void ShownReminders::languageChanged() {
    ordering_ = orderingAnew();
    found_.reset();
    recompute();
    if (!searchQuery_.trimmed().isEmpty())
        Q_EMIT tasksChanged();
}

void ShownReminders::updateManualOrder(bool isOfOneList) {
    QStringList order = arrangement_.manualOrderIDs();
    if (!isOfOneList && ordering_.placedTasks() != static_cast<std::size_t>(order.size())) {
        QSet<QString> open;
        for (const ReminderTask& task : *fetchedTasks_)
            open.insert(task.id);
        order.removeIf([&](const QString& id) { return !open.contains(id); });
    }
    // Reminders without a place in the order come last.
    const ReminderTimeContext now = present();
    const auto isShownWithoutPlace = [&](std::uint32_t index) {
        return !ordering_.hasPlace(index) && passes((*fetchedTasks_)[index], filters_, now);
    };
    for (const std::uint32_t index : ordering_.ordered(ReminderSortMode::manual, isShownWithoutPlace))
        order.append((*fetchedTasks_)[index].id);
    arrangement_.setManualOrderIDs(order);
}

ReminderTimeContext ShownReminders::present() const {
    return ReminderTimeContext::at(services_.clock.now(), services_.currentZone.zone());
}

void ShownReminders::recompute() {
    const ReminderTimeContext now = present();
    ReminderTaskList tasks(fetchedTasks_,
                           ordering_.ordered(arrangement_.sortMode(), [&](std::uint32_t index) {
                               return passes((*fetchedTasks_)[index], filters_, now);
                           }));
    if (tasks == tasks_)
        return;
    tasks_ = std::move(tasks);
    found_.reset();
    Q_EMIT tasksChanged();
}

void ShownReminders::recomputeForPresent() {
    const ReminderTimeContext now = present();
    presentTask_ = services_.scheduler.after(nextFilterChange(*fetchedTasks_, now) - now.now,
                                             [this] { presentDidChange(); });
    const ReminderFilterCounts counts = kestrant::filterCounts(*fetchedTasks_, now);
    const bool countsChanged = counts != std::exchange(filterCounts_, counts);
    recompute();
    if (countsChanged)
        Q_EMIT filterCountsChanged();
}

void ShownReminders::presentDidChange() {
    recomputeForPresent();
    Q_EMIT presentChanged();
}

const ReminderTaskList& ShownReminders::visibleTasks() const {
    if (searchQuery_.trimmed().isEmpty())
        return tasks_;
    if (!found_)
        found_ = searched(tasks_, searchQuery_, TextCollation(services_.localization.dateLocale()));
    return *found_;
}

const ReminderTask* ShownReminders::task(const QString& id) const {
    const auto found = std::find_if(fetchedTasks_->begin(), fetchedTasks_->end(),
                                    [&](const ReminderTask& candidate) { return candidate.id == id; });
    return found == fetchedTasks_->end() ? nullptr : &*found;
}

void ShownReminders::setFilters(const ReminderFilters& filters) {
    if (filters == filters_)
        return;
    filters_ = filters;
    Q_EMIT filtersChanged();
    recompute();
}

void ShownReminders::setSearchQuery(const QString& query) {
    if (query == searchQuery_)
        return;
    searchQuery_ = query;
    found_.reset();
    Q_EMIT searchQueryChanged();
    Q_EMIT tasksChanged();
}

}  // namespace kestrant
