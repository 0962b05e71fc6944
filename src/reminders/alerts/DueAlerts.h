#pragma once

#include "eventkit/model/EKReminder.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"
#include "reminders/alerts/UserNotifier.h"

#include <optional>

namespace kestrant {

/// The latest instant after `since` and not after `now` at which the reminder rings and that nobody has dealt
/// with yet.
[[nodiscard]] std::optional<Instant> dueAlert(const EKReminderData& reminder, Instant since, Instant now,
                                              const TimeZone& zone);
/// The next instant after `now` at which the reminder rings.
[[nodiscard]] std::optional<Instant> nextAlert(const EKReminderData& reminder, Instant now,
                                               const TimeZone& zone);

/// Notes in the alarms that have rung by `now` that they were dealt with (RFC 9074, 6.1). Repetitions that
/// have rung are removed.
void acknowledgeAlerts(EKReminderData& reminder, Instant now, const TimeZone& zone);

/// The same, and has the latest of these alarms ring once more (RFC 9074, 7). Does nothing when none has
/// rung. `newIdentifier` is given to that alarm where it has no identifier yet.
void snoozeAlert(EKReminderData& reminder, Instant until, Instant now, const QByteArray& newIdentifier,
                 const TimeZone& zone);

/// When an alert that is snoozed now rings again: "tomorrow" is at nine in the morning. Absent for answers
/// that are none of snoozing.
[[nodiscard]] std::optional<Instant> snoozedUntil(AlertAnswer answer, Instant now, const TimeZone& zone);

/// The label of an action.
[[nodiscard]] TextPair label(AlertAnswer answer);

}  // namespace kestrant
