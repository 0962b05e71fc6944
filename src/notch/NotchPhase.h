#pragma once

namespace kestrant {

enum class NotchPhase {
    /// At rest, as large as the camera housing.
    idle = 0,
    /// The pointer is on it; slightly larger.
    hovering = 1,
    /// The panel with its modules; only now does it take the keyboard and every click inside.
    expanded = 2,
};

}  // namespace kestrant
