#pragma once

#include "foundation/TextCollation.h"
#include "foundation/TimeZone.h"
#include "reminders/model/ReminderTask.h"
#include "reminders/model/ReminderTaskList.h"

#include <vector>

namespace kestrant {

/// The present as the filters see it: one instant and the day around it. A value; stays right until that day
/// ends.
struct ReminderTimeContext {
    Instant now;
    Instant startOfToday;
    Instant startOfTomorrow;

    [[nodiscard]] static ReminderTimeContext at(Instant now, const TimeZone& zone);
};

/// Due at any time of the present day.
[[nodiscard]] bool isDueToday(const ReminderTask& task, const ReminderTimeContext& present);

/// Due before now, or, for a date-only task, before today.
[[nodiscard]] bool isOverdue(const ReminderTask& task, const ReminderTimeContext& present);

/// The three filters; a task must pass every one that is on.
struct ReminderFilters {
    bool todayOnly = false;
    bool overdueOnly = false;
    bool flaggedOnly = false;

    bool operator==(const ReminderFilters&) const = default;
};

[[nodiscard]] bool passes(const ReminderTask& task, const ReminderFilters& filters,
                          const ReminderTimeContext& present);

/// How many tasks each filter would show by itself.
struct ReminderFilterCounts {
    int today = 0;
    int overdue = 0;
    int flagged = 0;

    bool operator==(const ReminderFilterCounts&) const = default;
};

[[nodiscard]] ReminderFilterCounts filterCounts(const std::vector<ReminderTask>& tasks,
                                                const ReminderTimeContext& present);

/// The tasks whose title contains the trimmed query, letter case aside, in their order; all of them for an
/// empty one.
[[nodiscard]] ReminderTaskList searched(const ReminderTaskList& tasks, const QString& query,
                                        const TextCollation& collation);

/// The earliest instant after `present.now` at which a filter may answer differently: a timed task falls due
/// or the day ends.
[[nodiscard]] Instant nextFilterChange(const std::vector<ReminderTask>& tasks,
                                       const ReminderTimeContext& present);

}  // namespace kestrant
