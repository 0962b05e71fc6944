#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <xcb/xcb.h>

namespace kestrant {

/// A transparent window below the panel, as large as the desktop, by which the server learns that the pointer
/// has left the panel for a window of which it knows nothing. In a Wayland session a compositor may tell the
/// X server nothing of the pointer while it is above its other clients, and the server then answers with the
/// pointer's last place, on the panel. Mapped while the pointer is on the panel; the first thing that it
/// hears of the pointer removes it again, so that no click ends up in it. Thread: main.
class PointerScrim {
  public:
    PointerScrim();
    ~PointerScrim();
    PointerScrim(const PointerScrim&) = delete;
    PointerScrim& operator=(const PointerScrim&) = delete;

    /// The pointer has entered the panel's window.
    void spreadBelow(xcb_window_t panel);
    /// To be called with every event of the server. True when the pointer was heard of.
    bool handle(const xcb_generic_event_t& event);

  private:
    void create();
    void remove();

    X11Connection server_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_colormap_t colormap_ = XCB_NONE;
    bool isMapped_ = false;
};

}  // namespace kestrant
