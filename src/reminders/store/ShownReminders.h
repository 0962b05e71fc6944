#pragma once

#include "eventkit/model/OpenReminders.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"
#include "foundation/TimeZone.h"
#include "reminders/model/ReminderFiltering.h"
#include "reminders/model/ReminderOrdering.h"
#include "reminders/model/ReminderTaskList.h"
#include "reminders/store/ReminderStoreServices.h"

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

namespace kestrant {

class ReminderArrangement;
class ReminderFlagSync;

/// The open reminders as they are shown: filtered, in order, searched and counted, for the present moment.
/// Brings the manual order up to date with what is open. Thread: main.
class ShownReminders : public QObject {
    Q_OBJECT

  public:
    /// Both outlive this object.
    ShownReminders(const ReminderStoreServices& services, ReminderArrangement& arrangement,
                   ReminderFlagSync& flags);

    [[nodiscard]] const ReminderTaskList& tasks() const { return tasks_; }
    [[nodiscard]] const ReminderTaskList& visibleTasks() const;
    [[nodiscard]] const ReminderTask* task(const QString& id) const;
    [[nodiscard]] const ReminderFilterCounts& filterCounts() const { return filterCounts_; }
    [[nodiscard]] const ReminderFilters& filters() const { return filters_; }
    void setFilters(const ReminderFilters& filters);
    [[nodiscard]] const QString& searchQuery() const { return searchQuery_; }
    void setSearchQuery(const QString& query);

    /// Shows what was fetched. Of one list alone, it says nothing about the places of other reminders.
    void show(const OpenReminders::Reminders& reminders, bool isOfOneList);
    void clear();
    /// Until the next fetch.
    void remove(const QString& id);
    /// Takes the present anew: counts, filters, and the moment at which to do it again.
    void presentDidChange();

  Q_SIGNALS:
    void tasksChanged();
    void filterCountsChanged();
    void filtersChanged();
    void searchQueryChanged();
    void presentChanged();

  private:
    /// Those that were fetched before are taken over.
    [[nodiscard]] std::vector<ReminderTask> tasksOf(const EKReminders& reminders, const TimeZone& zone) const;
    void setFetchedTasks(std::vector<ReminderTask> tasks);
    void updateManualOrder(bool isOfOneList);
    void refreshFlags();
    /// Titles are ordered by the language's own rules.
    void languageChanged();
    [[nodiscard]] ReminderOrdering orderingAnew() const;
    void recompute();
    void recomputeForPresent();
    [[nodiscard]] ReminderTimeContext present() const;

    const ReminderStoreServices& services_;
    ReminderArrangement& arrangement_;
    ReminderFlagSync& flags_;
    /// The result of the last fetch, and the time zone in which it was read.
    struct Fetched {
        OpenReminders::Reminders reminders;
        std::optional<TimeZone> zone;
    };
    Fetched fetched_;
    /// The tasks of it, but for those that were removed since.
    ReminderTaskList::Tasks fetchedTasks_ = std::make_shared<const std::vector<ReminderTask>>();
    ReminderOrdering ordering_;
    ReminderTaskList tasks_;
    ReminderFilterCounts filterCounts_;
    ReminderFilters filters_;
    QString searchQuery_;
    /// The tasks found by the search; absent when it has to be carried out again, unused while the query is
    /// blank.
    mutable std::optional<ReminderTaskList> found_;
    ScheduledTask presentTask_;
    Subscription zoneObserver_;
    Subscription languageObserver_;
};

}  // namespace kestrant
