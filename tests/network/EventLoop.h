#pragma once

#include <functional>

namespace kestrant {

/// Makes the application object that Qt's event loop needs, for the rest of the process.
void ensureApplication();

/// Runs the event loop of this thread until `done` holds; false when it does not hold after twenty seconds.
[[nodiscard]] bool turnUntil(const std::function<bool()>& done);

/// Makes turnUntil() on the main thread check its condition again. Thread: any.
void wakeLoop();

}  // namespace kestrant
