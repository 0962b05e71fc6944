#pragma once

#include "foundation/Instant.h"
#include "foundation/TimeZone.h"

#include <QDate>
#include <QTime>

#include <cstdint>
#include <optional>

namespace kestrant {

/// Parts of a date as a person or a file gives them; absent parts are unknown. A due date without an hour is
/// a whole day. Without a zone it is floating: read in the reader's own.
struct DateComponents {
    // Every reminder in memory has some of these.
    using Part = std::optional<std::int16_t>;
    Part year;
    Part month;
    Part day;
    Part hour;
    Part minute;
    Part second;
    std::optional<TimeZone> timeZone;

    [[nodiscard]] bool includesTime() const { return hour.has_value(); }
    /// The day; invalid when year, month or day is absent or they name no day of the proleptic Gregorian
    /// calendar.
    [[nodiscard]] QDate date() const;
    /// The time of day with absent minutes and seconds as 0; invalid when the hour is absent or out of range.
    [[nodiscard]] QTime time() const;

    [[nodiscard]] static DateComponents fromDate(QDate date);
    [[nodiscard]] static DateComponents fromDateTime(QDate date, QTime time,
                                                     std::optional<TimeZone> zone = {});

    bool operator==(const DateComponents&) const = default;
};

/// A half-open span of time: start included, end excluded.
struct DateInterval {
    Instant start;
    Instant end;
    bool operator==(const DateInterval&) const = default;
};

}  // namespace kestrant
