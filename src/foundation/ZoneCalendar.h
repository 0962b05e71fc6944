#pragma once

#include "foundation/Instant.h"
#include "foundation/Subscription.h"
#include "foundation/TimeZone.h"

#include <QDate>
#include <QTime>

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

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

/// The Gregorian calendar in one time zone: every question about days, local times and instants goes through
/// here. A value; cheap to copy. Thread: any. Answers for all years from 0001 to 9999.
class ZoneCalendar {
  public:
    explicit ZoneCalendar(TimeZone zone) : zone_(std::move(zone)) {}

    [[nodiscard]] const TimeZone& zone() const { return zone_; }

    [[nodiscard]] QDate dayOf(Instant instant) const;
    [[nodiscard]] QTime timeOf(Instant instant) const;

    /// The first instant of a day; where midnight is skipped, the first that exists.
    [[nodiscard]] Instant startOfDay(QDate day) const;
    [[nodiscard]] Instant startOfDay(Instant instant) const { return startOfDay(dayOf(instant)); }

    /// An invalid day or time gives 1970-01-01.
    [[nodiscard]] Instant instantAt(QDate day, QTime time, GapPolicy policy = GapPolicy::keepOffset) const;

    [[nodiscard]] bool isSameDay(Instant a, Instant b) const { return dayOf(a) == dayOf(b); }

    /// The calendar year that contains the instant.
    [[nodiscard]] DateInterval yearContaining(Instant instant) const;

    /// The instant the components denote: a whole day is its start; a time is read in the components' own
    /// zone, or in this calendar's zone when they have none. Absent when they name no day or no valid time.
    [[nodiscard]] std::optional<Instant> instantFrom(const DateComponents& components) const;

    /// Components of an instant in this zone, with this zone.
    [[nodiscard]] DateComponents componentsOf(Instant instant) const;

    bool operator==(const ZoneCalendar& other) const = default;

  private:
    [[nodiscard]] qint64 localMicroseconds(Instant instant) const;

    TimeZone zone_;
};

/// The person's own calendar: follows the machine's time zone while the program runs. Thread: main.
class CurrentCalendar {
  public:
    virtual ~CurrentCalendar() = default;
    [[nodiscard]] virtual ZoneCalendar calendar() const = 0;
    /// Told after the zone has changed.
    [[nodiscard]] virtual Subscription observeChanges(std::function<void()> observer) = 0;
};

}  // namespace kestrant
