#pragma once

#include "cli/CommandLineOutput.h"
#include "eventkit/model/EKTypes.h"
#include "foundation/TimeZone.h"
#include "reminders/model/ReminderTask.h"
#include "reminders/quickadd/QuickAddParser.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <vector>

namespace kestrant {

[[nodiscard]] QJsonArray tasksAsJson(const std::vector<ReminderTask>& tasks, const TimeZone& zone);
/// One line for each task: due date in words, priority and flag, title, list, identifier, in aligned columns.
[[nodiscard]] QString tasksAsTable(const std::vector<ReminderTask>& tasks,
                                   const std::vector<ReminderList>& lists, const OutputContext& context);

/// The title that is left of a line, and what was understood of it.
[[nodiscard]] QString understoodAsTable(const QuickAddLine& line, const std::vector<ReminderList>& lists,
                                        bool makesLists, const OutputContext& context);

/// The task with what else the database holds of the reminder.
[[nodiscard]] QJsonObject reminderAsJson(const ReminderTask& task, const EKReminderData& reminder,
                                         const TimeZone& zone);
[[nodiscard]] QString reminderAsTable(const ReminderTask& task, const EKReminderData& reminder,
                                      const std::vector<ReminderList>& lists, const OutputContext& context);

}  // namespace kestrant
