#pragma once

#include "eventkit/icalendar/Document.h"
#include "eventkit/recurrence/RecurrenceRule.h"
#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"

#include <optional>

namespace kestrant::icalendar {

/// The zone that a TZID names: by an IANA or a Windows name, also one with a vendor's prefix, else by what
/// the file's own definition says. Absent for any other; such times are read in the person's own zone.
[[nodiscard]] std::optional<TimeZone> zoneNamed(const QByteArray& zoneIdentifier, const Document& document);

/// Reads one value, with a zone only where it says itself that it is in UTC.
[[nodiscard]] std::optional<DateComponents> readLocalDate(QByteArrayView value);
/// Reads DATE and DATE-TIME values, also a date that does not say that it is one, and dates written with
/// hyphens and colons. Absent for anything else.
[[nodiscard]] std::optional<DateComponents> readDate(const Property& property, const Document& document);
/// Reads one value of a list that stands in this property.
[[nodiscard]] std::optional<DateComponents> readDate(QByteArrayView value, const Property& property,
                                                     const Document& document);
/// Reads a date as an instant; floating times and whole days are taken in `local`.
[[nodiscard]] std::optional<Instant> readInstant(const std::optional<Property>& property,
                                                 const Document& document, const TimeZone& local);

/// A day is its midnight.
[[nodiscard]] LocalTime localTimeOf(const DateComponents& date);
/// A date of a series as the clock of the series' own date `anchor` shows it. A day stands for the series'
/// date on that day, and so does a time where the series has days.
[[nodiscard]] LocalTime localTimeIn(const DateComponents& anchor, const DateComponents& date,
                                    const TimeZone& local);

/// Sets value and parameters for this date; other parameters stay, and so does the name of a zone that did
/// not change (or that nobody knows).
void writeDate(Property& property, const DateComponents& date, const Document& document);
/// "20260327T133000Z".
[[nodiscard]] QByteArray utcText(Instant instant);

/// A duration: days as the calendar counts them, and a part in seconds. Weeks are days.
struct DurationValue {
    int days = 0;
    qint64 seconds = 0;
    bool operator==(const DurationValue&) const = default;
};
/// Absent for a text that is no duration, or one of thousands of years.
[[nodiscard]] std::optional<DurationValue> readDuration(QByteArrayView text);
/// "PT15M", "-P1D", in the largest units that fit.
[[nodiscard]] QByteArray durationText(qint64 seconds);

}  // namespace kestrant::icalendar
