#pragma once

#include "eventkit/icalendar/Document.h"

#include <optional>

namespace kestrant::icalendar {

/// The VTIMEZONE (RFC 5545, 3.6.5) of an IANA zone as its clocks are set in `year` and go on being set by the
/// same yearly rule. Absent for a name that is no IANA zone.
[[nodiscard]] std::optional<Component> timeZoneDefinition(const QByteArray& zone, int year,
                                                          QByteArrayView lineEnd);

/// Adds definitions, good from `year` on, of the zones that the file uses and does not define.
void addMissingTimeZones(Document& document, int year);

}  // namespace kestrant::icalendar
