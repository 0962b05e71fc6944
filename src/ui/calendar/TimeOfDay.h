#pragma once

#include "foundation/Text.h"

#include <QString>
#include <QTime>

#include <optional>

namespace kestrant {

/// A time of day as people type it: "9", "9:30", "9h30", "09.30", "930", "1830", "9 pm". Absent for anything
/// that is no time of a 24-hour (or, with am or pm, 12-hour) clock.
[[nodiscard]] std::optional<QTime> timeOfDay(QStringView typed);

/// Whether a form shows both times alike.
[[nodiscard]] bool isSameMinute(QTime a, QTime b);

/// The message for a time that could not be read.
[[nodiscard]] TextPair unreadableTimeText();

}  // namespace kestrant
