#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <xcb/xcb.h>

namespace kestrant {

/// Whether the active window is in full screen, as the window manager tells (EWMH: _NET_ACTIVE_WINDOW,
/// _NET_WM_STATE_FULLSCREEN). Thread: main.
class FullScreenWatcher {
  public:
    FullScreenWatcher();

    /// True for an event after which the answer may be another one.
    [[nodiscard]] bool handle(const xcb_generic_event_t& event);
    /// Whether a window in full screen covers a part of this one.
    [[nodiscard]] bool covers(xcb_window_t panel) const;

  private:
    void followActiveWindow();

    X11Connection server_;
    xcb_atom_t activeWindow_;
    xcb_atom_t state_;
    /// The active window, of which changes are told; XCB_WINDOW_NONE for one of ours.
    xcb_window_t window_ = XCB_WINDOW_NONE;
};

}  // namespace kestrant
