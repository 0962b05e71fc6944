#pragma once

#include "eventkit/icalendar/Document.h"

#include <QDate>

#include <optional>

namespace kestrant::icalendar {

/// The VTIMEZONE (RFC 5545, 3.6.5) of an IANA zone as its clocks are set in `year` and go on being set by the
/// same yearly rule. Absent for a name that is no IANA zone.
[[nodiscard]] std::optional<Component> timeZoneDefinition(const QByteArray& zone, int year,
                                                          QByteArrayView lineEnd);

/// The zone that a VTIMEZONE describes, by what its clocks do in the year of `day`: an IANA zone in which
/// they do the same, if possible one whose place the definition's name mentions. Where they are not changed
/// in that year, or as in no zone, the distance from UTC on that day, such as "UTC+05:30". Absent for a
/// definition that makes no sense.
[[nodiscard]] std::optional<QByteArray> zoneDescribedBy(ComponentView definition, QDate day);

/// Adds definitions, good from `year` on, of the zones that the file does not define and did not use
/// `before`.
void addMissingTimeZones(Document& document, const Document& before, int year);

}  // namespace kestrant::icalendar
