#pragma once

#include "foundation/TimeZone.h"

#include <QString>

namespace kestrant {

/// The zone that the C library takes for this process (tzset): that of TZ, which is a name or path of zone
/// data, with or without a colon before it, or else a rule; UTC where it makes no sense. Without TZ, that of
/// "localtime" in the folder of the machine's settings. It has the name of the zone data it comes from, where
/// that can be told.
[[nodiscard]] TimeZone systemTimeZone(const QString& settingsFolder);

}  // namespace kestrant
