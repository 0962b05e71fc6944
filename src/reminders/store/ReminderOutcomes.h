#pragma once

#include "foundation/ClockText.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"
#include "reminders/store/ReminderActionHistory.h"

#include <QString>

#include <optional>

namespace kestrant {

struct EKReminderData;

// Sentences about actions on a reminder that have happened. Long titles are cut, so that the verb is
// seen.

/// The sentence with the title in the place of %1 and, where it has one, `detail` in that of %2.
[[nodiscard]] TextPair outcomeText(const TextPair& sentence, const QString& title,
                                   const TextPair& detail = {});

/// `next` is when a repeating reminder comes up again; absent when that is not known.
[[nodiscard]] ReminderActionHistory::Outcome completionOutcome(const QString& title,
                                                               const std::optional<TextPair>& next);

/// When it is due: "Mon 23 Nov", "Mon 23 Nov 2027 09:00"; absent without a due date.
[[nodiscard]] std::optional<TextPair> dueInWords(const EKReminderData& reminder, Instant now,
                                                 const TimeZone& zone, ClockHours hours);

/// Of a reminder whose due date was set, or removed.
[[nodiscard]] TextPair reschedulingOutcome(const QString& title, const std::optional<TextPair>& due);

}  // namespace kestrant
