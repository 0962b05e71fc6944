#include "platform/linux/x11/FullScreenWatcher.h"

#include <QRect>

#include <algorithm>
#include <optional>

namespace kestrant {

namespace {

/// In the root window's coordinates; absent for a window that is gone.
std::optional<QRect> rectangleOf(const X11Connection& server, xcb_window_t window) {
    const XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(server.get(), xcb_get_geometry(server.get(), window), nullptr));
    const XcbReply<xcb_translate_coordinates_reply_t> corner(xcb_translate_coordinates_reply(
        server.get(), xcb_translate_coordinates(server.get(), window, server.root(), 0, 0), nullptr));
    if (!geometry || !corner)
        return std::nullopt;
    return QRect(corner->dst_x, corner->dst_y, geometry->width, geometry->height);
}

}  // namespace

FullScreenWatcher::FullScreenWatcher()
    : server_(X11Connection::ofApplication())
    , activeWindow_(server_.atom("_NET_ACTIVE_WINDOW"))
    , state_(server_.atom("_NET_WM_STATE")) {
    followActiveWindow();
}

void FullScreenWatcher::followActiveWindow() {
    window_ = server_.activeWindow();
    // Which events of its own windows it gets Qt decides.
    if (window_ == XCB_WINDOW_NONE || isOwnWindow(window_)) {
        window_ = XCB_WINDOW_NONE;
        return;
    }
    constexpr uint32_t changes = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(server_.get(), window_, XCB_CW_EVENT_MASK, &changes);
}

bool FullScreenWatcher::handle(const xcb_generic_event_t& event) {
    if ((event.response_type & ~0x80) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (change.window == server_.root() && change.atom == activeWindow_) {
        followActiveWindow();
        return true;
    }
    return change.window == window_ && change.atom == state_;
}

bool FullScreenWatcher::covers(xcb_window_t panel) const {
    if (window_ == XCB_WINDOW_NONE)
        return false;
    const std::vector<uint32_t> states = server_.property(window_, "_NET_WM_STATE");
    if (std::find(states.begin(), states.end(), server_.atom("_NET_WM_STATE_FULLSCREEN")) == states.end())
        return false;
    const auto covering = rectangleOf(server_, window_);
    const auto covered = rectangleOf(server_, panel);
    return covering && covered && covering->intersects(*covered);
}

}  // namespace kestrant
