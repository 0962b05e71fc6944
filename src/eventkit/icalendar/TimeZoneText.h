#pragma once

#include "eventkit/icalendar/Document.h"
#include "foundation/TimeZone.h"

#include <optional>
#include <vector>

namespace kestrant::icalendar {

/// The VTIMEZONE (RFC 5545, 3.6.5) of a zone as its clocks are set in `year` and go on being set by the same
/// yearly rule.
[[nodiscard]] Component timeZoneDefinition(const TimeZone& zone, int year, QByteArrayView lineEnd);

/// The identifier of a VTIMEZONE, as in the parameter TZID of a date.
[[nodiscard]] QByteArray zoneIdentifierIn(const Property& identifier);

/// The zone whose clocks are set as a VTIMEZONE says. Rules may be yearly or monthly; one that is something
/// else, or that sets the clocks more often than clocks are set, counts by its start alone, and so does what
/// lies beyond 500 changes. Absent for a definition that makes no sense or is longer than 64 kB. Thread: any.
[[nodiscard]] std::optional<TimeZone> zoneDefinedBy(ComponentView definition);

/// Adds definitions, good from `year` on, of the zones that the file does not define and did not use
/// `before`. `known` are those that their names alone do not lead to.
void addMissingTimeZones(Document& document, const Document& before, int year,
                         const std::vector<std::optional<TimeZone>>& known = {});

}  // namespace kestrant::icalendar
