#pragma once

#include "foundation/Instant.h"

#include <QByteArray>

#include <optional>

namespace kestrant {

/// A moment as HTTP headers write it (RFC 9110, 5.6.7), in any of the three forms: "Sun, 06 Nov 1994 08:49:37
/// GMT", "Sunday, 06-Nov-94 08:49:37 GMT", "Sun Nov  6 08:49:37 1994". All of them are in GMT. Days may have
/// one digit, and the day of the week need not be that of the date. A year of two digits is the one that lies
/// no more than 50 years after `now`. Absent when the text is none.
[[nodiscard]] std::optional<Instant> httpDate(const QByteArray& text, Instant now);

}  // namespace kestrant
