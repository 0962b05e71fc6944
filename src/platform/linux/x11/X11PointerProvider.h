#pragma once

#include "notch/PointerProvider.h"
#include "platform/linux/x11/X11Connection.h"

#include <memory>

namespace kestrant {

/// The pointer as the X server knows it: one round trip a call, on a connection of its own so that nothing
/// else of the program wakes up for it. In a Wayland session the server only knows of the pointer above X11
/// windows; elsewhere the location is absent. Thread: main.
class X11PointerProvider : public PointerProvider {
  public:
    X11PointerProvider();
    ~X11PointerProvider() override;

    [[nodiscard]] std::optional<QPointF> location() const override;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    X11Connection server_;
    bool isXWayland_;
};

}  // namespace kestrant
