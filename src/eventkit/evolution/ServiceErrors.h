#pragma once

#include "eventkit/evolution/Glib.h"
#include "foundation/Text.h"

namespace kestrant::evolution {

// The meaning of the service's errors.

/// The connection gives no answers (any more).
[[nodiscard]] bool meansDisconnection(const Error& error);
/// Whether a write that failed with this may have taken place all the same, as when a server went away before
/// it answered.
[[nodiscard]] bool leavesOutcomeOpen(const Error& error);
/// The item on the server is not the one that was read.
[[nodiscard]] bool meansConflict(const Error& error);
/// The reason in words of this program; the service's own go to the log.
[[nodiscard]] TextPair reasonIn(const Error& error);
[[nodiscard]] TextPair noAnswerInTime();

}  // namespace kestrant::evolution
