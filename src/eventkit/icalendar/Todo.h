#pragma once

#include "eventkit/icalendar/Document.h"
#include "eventkit/icalendar/ItemReading.h"
#include "eventkit/icalendar/ReminderSeries.h"
#include "eventkit/model/EKTypes.h"

#include <vector>

namespace kestrant::icalendar {

/// One reminder as a file holds it. The identifiers in `data` are left to the caller.
struct TodoItem : ItemComponents {
    EKReminderData data;
    SeriesDates dates;
};

/// Reads the reminders of a file. A series shows its first date that is neither left out nor dealt with; one
/// with none left is completed. What a value does not say properly is absent. `local` is the person's
/// time zone.
[[nodiscard]] std::vector<TodoItem> readTodos(const Document& document, const TimeZone& local);

/// Writes into a VTODO what leads from `item` to `after`; nothing else but the marks of a revision.
/// `document` is the file that holds it, `now` the time of the change.
void writeTodo(Component& todo, const TodoItem& item, const EKReminderData& after, const Document& document,
               const TimeZone& local, Instant now);

/// Writes a series that went on to its next date.
void writeAdvancedTodo(Component& todo, const TodoItem& item, const CompletedOccurrence& step,
                       const Document& document, const TimeZone& local, Instant now);

/// A new file for a new reminder.
[[nodiscard]] Document makeTodo(const QByteArray& uid, const EKReminderData& data, const TimeZone& local,
                                Instant now);

/// The file of a completed occurrence: the series' own file without its repetition, its alarms and everything
/// else in it, under a new UID and related to the series.
[[nodiscard]] Document makeCompletedCopy(const QByteArray& uid, const Document& series, const TodoItem& item,
                                         const EKReminderData& copy, const TimeZone& local, Instant now);

}  // namespace kestrant::icalendar
