#pragma once

#include <functional>

namespace kestrant {

/// Makes the application object that Qt's event loop needs, for the rest of the process.
void ensureApplication();

/// Turns the event loop of this thread until `done` holds. False when it still does not after twenty seconds,
/// which is a failure of whoever should have.
[[nodiscard]] bool turnUntil(const std::function<bool()>& done);

/// Has turnUntil() on the main thread look again. Thread: any.
void wakeLoop();

}  // namespace kestrant
