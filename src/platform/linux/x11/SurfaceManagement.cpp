#include "platform/linux/x11/SurfaceManagement.h"

#include "platform/linux/x11/X11Connection.h"

#include <QSurfaceFormat>
#include <QVariant>

namespace kestrant {

namespace {

constexpr uint32_t allDesktops = 0xffffffff;
/// WM_HINTS (ICCCM 4.1.2.4): nine items; the first says which of the others hold.
constexpr uint32_t inputHint = 1;
constexpr std::size_t hintItems = 9;

}  // namespace

SurfaceManagement surfaceManagement(const X11Connection& server) {
    // KWin passes keys on to windows it manages only, when it is a Wayland compositor.
    return server.windowManagerName().startsWith("KWin") ? SurfaceManagement::managedDock
                                                         : SurfaceManagement::overrideRedirect;
}

void configureSurface(QWindow& window) {
    const X11Connection server = X11Connection::ofApplication();
    const bool managed = surfaceManagement(server) == SurfaceManagement::managedDock;

    QSurfaceFormat format = window.requestedFormat();
    format.setAlphaBufferSize(8);
    window.setFormat(format);
    window.setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint |
                    (managed ? Qt::WindowFlags() : Qt::BypassWindowManagerHint));
    // Read by Qt's xcb platform when it maps the window: no user time, so no focus.
    window.setProperty("_q_showWithoutActivating", true);
    window.create();

    const auto id = static_cast<xcb_window_t>(window.winId());
    server.setAtoms(id, "_NET_WM_WINDOW_TYPE", {"_NET_WM_WINDOW_TYPE_DOCK"});
    server.setAtoms(id, "_NET_WM_STATE",
                    {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_STICKY", "_NET_WM_STATE_SKIP_TASKBAR",
                     "_NET_WM_STATE_SKIP_PAGER"});
    server.setProperty(id, "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {allDesktops});
    setAcceptsFocus(window, false);
}

void setAcceptsFocus(QWindow& surface, bool accepts) {
    const X11Connection server = X11Connection::ofApplication();
    const auto id = static_cast<xcb_window_t>(surface.winId());
    std::vector<uint32_t> hints = server.property(id, "WM_HINTS");
    hints.resize(hintItems, 0);
    hints[0] |= inputHint;
    hints[1] = accepts ? 1 : 0;
    server.setProperty(id, "WM_HINTS", server.atom("WM_HINTS"), hints);
    // A window that takes part in WM_TAKE_FOCUS counts as one that accepts the focus (ICCCM 4.1.7).
    if (accepts)
        server.setAtoms(id, "WM_PROTOCOLS", {"WM_DELETE_WINDOW", "WM_TAKE_FOCUS", "_NET_WM_PING"});
    else
        server.setAtoms(id, "WM_PROTOCOLS", {"WM_DELETE_WINDOW", "_NET_WM_PING"});
    server.flush();
}

}  // namespace kestrant
