#include "app/NativePanel.h"

#include "platform/linux/wayland/WaylandPanelWindow.h"
#include "platform/linux/x11/X11PanelWindow.h"
#include "platform/linux/x11/X11PointerProvider.h"

#include <QGuiApplication>

namespace kestrant {

bool isOnX11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

NativePanel nativePanel(QWindow& window, Scheduler& scheduler) {
    NativePanel panel;
    if (isOnX11()) {
        panel.window = std::make_unique<X11PanelWindow>(window, scheduler);
        panel.ownPointer = std::make_unique<X11PointerProvider>();
        panel.pointer = panel.ownPointer.get();
    } else {
        auto wayland = std::make_unique<WaylandPanelWindow>(window, scheduler);
        panel.pointer = wayland.get();
        panel.window = std::move(wayland);
    }
    return panel;
}

}  // namespace kestrant
