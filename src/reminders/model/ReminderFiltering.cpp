#include "reminders/model/ReminderFiltering.h"

#include <algorithm>

namespace kestrant {

ReminderTimeContext ReminderTimeContext::at(Instant now, const TimeZone& zone) {
    const QDate today = zone.dayOf(now);
    return {now, zone.startOfDay(today), zone.startOfDay(today.addDays(1))};
}

bool isDueToday(const ReminderTask& task, const ReminderTimeContext& present) {
    return task.dueDate && *task.dueDate >= present.startOfToday && *task.dueDate < present.startOfTomorrow;
}

bool isOverdue(const ReminderTask& task, const ReminderTimeContext& present) {
    return task.dueDate && *task.dueDate < (task.dueDateIncludesTime ? present.now : present.startOfToday);
}

bool passes(const ReminderTask& task, const ReminderFilters& filters, const ReminderTimeContext& present) {
    return (!filters.todayOnly || isDueToday(task, present)) &&
           (!filters.overdueOnly || isOverdue(task, present)) && (!filters.flaggedOnly || task.isFlagged);
}

ReminderFilterCounts filterCounts(const std::vector<ReminderTask>& tasks,
                                  const ReminderTimeContext& present) {
    ReminderFilterCounts counts;
    for (const ReminderTask& task : tasks) {
        counts.today += isDueToday(task, present) ? 1 : 0;
        counts.overdue += isOverdue(task, present) ? 1 : 0;
        counts.flagged += task.isFlagged ? 1 : 0;
    }
    return counts;
}

ReminderTaskList searched(const ReminderTaskList& tasks, const QString& query,
                          const TextCollation& collation) {
    const QString needle = query.trimmed();
    if (needle.isEmpty())
        return tasks;
    return tasks.filtered([&](const ReminderTask& task) { return collation.contains(task.title, needle); });
}

Instant nextFilterChange(const std::vector<ReminderTask>& tasks, const ReminderTimeContext& present) {
    // A task is overdue once its due instant has passed, a microsecond after it.
    Instant next = present.startOfTomorrow;
    for (const ReminderTask& task : tasks) {
        if (task.dueDateIncludesTime && task.dueDate && *task.dueDate >= present.now)
            next = std::min(next, *task.dueDate + Duration(1));
    }
    return next;
}

}  // namespace kestrant
