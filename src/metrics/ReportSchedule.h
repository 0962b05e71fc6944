#pragma once

#include "foundation/Instant.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// When counts are reported and how failures are spaced. Times are seconds since 1970-01-01 UTC; `random` is
/// a number drawn evenly from [0, 1).
namespace kestrant::metrics {

/// 12 hours, in seconds.
inline constexpr double minimumReportInterval = 43200;
inline constexpr int retentionDays = 90;
/// The most completions one report may hold.
inline constexpr qint64 maximumReportCount = 10000;

/// A day of the Gregorian calendar in UTC.
struct DayStamp {
    /// "2026-03-27"
    QString day;
    /// The day's first moment.
    double startOfDay = 0;
    bool operator==(const DayStamp&) const = default;
};
[[nodiscard]] DayStamp dayStamp(Instant now);

/// Reports of days that began before this are forgotten.
[[nodiscard]] double expiryCutoff(Instant now);

/// 12 to 24 hours from now.
[[nodiscard]] double nextReportTime(Instant now, double random);

/// Whether `time` was set while the clock was ahead: nothing is put off for more than a day.
[[nodiscard]] bool isTooFarAhead(double time, Instant now);

/// The row of a report after another failed attempt.
struct Backoff {
    int attempts = 0;
    double nextAttemptAt = 0;
    bool operator==(const Backoff&) const = default;
};
/// Ten minutes doubled with each failure up to twelve hours, times 0.8 to 1.2, but never less than the server
/// asked for
/// (`retryAfter`, in seconds). `attempts` is the number of failures before this one.
[[nodiscard]] Backoff backoff(qint64 attempts, Instant now, double random, std::optional<double> retryAfter);

/// Seconds to wait according to a "Retry-After" header: a number of seconds or an HTTP date, at most a day. A
/// date in the past is 0. Absent when the value is negative or anything else.
[[nodiscard]] std::optional<double> retryAfterSeconds(const QByteArray& header, Instant now);

/// When to try the store again after it failed: in 300 to 360 seconds.
inline constexpr double longestStorageRetry = 360;
[[nodiscard]] Instant storageRetryTime(Instant now, double random);

}  // namespace kestrant::metrics
