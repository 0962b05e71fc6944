#pragma once

#include "notch/PointerProvider.h"
#include "platform/linux/window/DesktopPanelWindow.h"

#include <memory>

class QWindow;

namespace kestrant {

class Scheduler;

/// The panel's window and the pointer as the window system of the running application has them. Thread: main.
struct NativePanel {
    std::unique_ptr<DesktopPanelWindow> window;
    /// Null where the window itself knows where the pointer is.
    std::unique_ptr<PointerProvider> ownPointer;
    PointerProvider* pointer = nullptr;
};

/// For a window that has not been shown yet; both must outlive the result.
[[nodiscard]] NativePanel nativePanel(QWindow& window, Scheduler& scheduler);

/// Whether the application runs on X11, in a Wayland session too.
[[nodiscard]] bool isOnX11();

}  // namespace kestrant
