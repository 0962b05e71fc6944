#pragma once

#include <QString>
#include <QStringView>

#include <chrono>
#include <optional>

namespace kestrant {

/// A length of time in microseconds; a calendar day is never one of these (days have 23 to 25 hours).
using Duration = std::chrono::microseconds;

/// A point in time, UTC, in microseconds since 1970-01-01. A calendar day is a QDate, never an Instant.
using Instant = std::chrono::sys_time<Duration>;

/// Seconds (with fraction) between 1970-01-01 and 2001-01-01 00:00:00 UTC, the reference date of persistent
/// JSON files.
inline constexpr double referenceDateOffset = 978307200.0;

[[nodiscard]] double secondsSince1970(Instant instant);
[[nodiscard]] Instant instantFromSecondsSince1970(double seconds);

/// Seconds since 2001-01-01 00:00:00 UTC, as persistent JSON files hold them.
[[nodiscard]] double secondsSinceReferenceDate(Instant instant);
[[nodiscard]] Instant instantFromSecondsSinceReferenceDate(double seconds);

/// A duration given in seconds; fractions below a microsecond are rounded.
[[nodiscard]] Duration seconds(double value);

/// ISO 8601 in UTC with whole seconds, "2026-03-27T13:30:00Z". Years outside 0000..9999 get a sign, as the
/// standard asks.
[[nodiscard]] QString toIso8601(Instant instant);

/// Reads an ISO 8601 date-time that carries "Z" or a numeric offset ("2026-03-27T14:30:00+01:00"); fractions
/// of a second are kept. Absent when the text is anything else, also for a date-time without an offset.
[[nodiscard]] std::optional<Instant> parseIso8601(QStringView text);

}  // namespace kestrant
