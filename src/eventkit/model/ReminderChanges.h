#pragma once

#include "eventkit/model/EKTypes.h"
#include "eventkit/model/Merging.h"

#include <optional>

namespace kestrant {

struct EKPredicate;

// Pure functions for saving reminders; every implementation of the database uses them.

/// Applies the edits that lead from `base` to `edited` to `current`, property by property. The identifier and
/// the date of the last change are those of `current`. Completing a recurring reminder that was moved to
/// another date meanwhile is a conflict too: the occurrence that was ticked off is not the one that is due
/// now.
[[nodiscard]] Merged<EKReminderData> mergeEdits(const EKReminderData& base, const EKReminderData& edited,
                                                const EKReminderData& current);

/// Why these values cannot be saved over `before` (absent for a new reminder); absent when they can. Values
/// that were in the database already are never refused.
[[nodiscard]] std::optional<EKError> invalidReason(const std::optional<EKReminderData>& before,
                                                   const EKReminderData& edited);

/// `edited` with what a save sets by itself: the completion date, the creation date of a new reminder, the
/// date of the change, instants in whole seconds, and a start that fits the due date.
[[nodiscard]] EKReminderData preparedForSave(const std::optional<EKReminderData>& before,
                                             EKReminderData edited, Instant now, const TimeZone& local);

/// The start that goes with another due date: what was the due date itself follows it; any other keeps its
/// day and, where the new due date has one too, its time, unless it would come after the due date, which it
/// then becomes. `local` is the person's time zone.
[[nodiscard]] std::optional<DateComponents> startFitting(const std::optional<DateComponents>& start,
                                                         const std::optional<DateComponents>& dueBefore,
                                                         const std::optional<DateComponents>& due,
                                                         const TimeZone& local);

/// Whether two states of a reminder differ in nothing but what programs note by themselves: identifiers,
/// flags, dates of changes, and that an alarm was dealt with or snoozed.
[[nodiscard]] bool saysTheSame(EKReminderData a, EKReminderData b);

/// Whether an item with these values is found by the predicate; `local` is the person's time zone.
[[nodiscard]] bool matches(const EKPredicate& predicate, const EKReminderData& data, const TimeZone& local);

}  // namespace kestrant
