#pragma once

#include "eventkit/evolution/Glib.h"
#include "foundation/Text.h"

namespace kestrant::evolution {

// What the service's errors mean.

/// There is no answer to be had over this connection (any more).
[[nodiscard]] bool meansDisconnection(const Error& error);
/// Whether a write that failed with this may have taken place all the same, as when a server went away before
/// it answered.
[[nodiscard]] bool leavesOutcomeOpen(const Error& error);
/// What is on the server is not what was read.
[[nodiscard]] bool meansConflict(const Error& error);
/// The reason in words of this program; the service's own go to the log.
[[nodiscard]] TextPair reasonIn(const Error& error);
[[nodiscard]] TextPair noAnswerInTime();

}  // namespace kestrant::evolution
