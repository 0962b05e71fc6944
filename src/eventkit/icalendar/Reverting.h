#pragma once

#include "eventkit/icalendar/Document.h"
#include "foundation/Instant.h"

#include <optional>

namespace kestrant::icalendar {

/// Takes back in `current` what led from `before` to `after`: each property, and the components within of
/// each kind, that differs between these two becomes what it was; everything else stays, and the marks of a
/// revision tell of the change. Absent where such a property is by now neither as it was after nor as it was
/// before.
[[nodiscard]] std::optional<Component> reverted(ComponentView current, ComponentView before,
                                                ComponentView after, QByteArrayView lineEnd, Instant now);

/// Whether two components say the same, the marks of a revision aside.
[[nodiscard]] bool saySame(ComponentView a, ComponentView b);

}  // namespace kestrant::icalendar
