#pragma once

#include "eventkit/model/EKEvent.h"
#include "eventkit/model/Merging.h"

#include <optional>

namespace kestrant {

struct EKEventPredicate;

/// Title of a calendar that is created because a new event needs one.
inline const QString newCalendarTitle = QStringLiteral("Calendar");

// Pure functions for reading and saving events; every implementation of the database uses
// them.

/// Applies the edits that lead from `base` to `edited` to `current`, property by property; start and end
/// count as one. The identifiers, what the occurrence is of its series and the date of the last change are
/// those of `current`.
[[nodiscard]] Merged<EKEventData> mergeEdits(const EKEventData& base, const EKEventData& edited,
                                             const EKEventData& current);

/// Why these values cannot be saved over `before` (absent for a new event); absent when they can. One
/// occurrence of a series has no repetition of its own to change.
[[nodiscard]] std::optional<EKError> invalidReason(const std::optional<EKEventData>& before,
                                                   const EKEventData& edited);

/// `edited` with what a save sets by itself: the creation date of a new event, the date of the change,
/// instants in whole seconds, and for an occurrence of a series that it was changed by itself.
[[nodiscard]] EKEventData preparedForSave(const std::optional<EKEventData>& before, EKEventData edited,
                                          Instant now);

/// Whether an occurrence with these values is found by the predicate.
[[nodiscard]] bool matches(const EKEventPredicate& predicate, const EKEventData& data);
/// Whether an event that takes place then is in the predicate's span.
[[nodiscard]] bool touches(const EKEventPredicate& predicate, const DateInterval& event);

}  // namespace kestrant
