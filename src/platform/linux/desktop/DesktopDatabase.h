#pragma once

namespace kestrant {

/// Whether the session bus can start the desktop's calendar service, Evolution Data Server. Asks the bus and
/// waits for it half a second at most.
[[nodiscard]] bool desktopHasCalendarService();

}  // namespace kestrant
