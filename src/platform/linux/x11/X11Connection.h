#pragma once

#include <QByteArray>

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kestrant {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, FreeReply>;

/// Requests to the X server that the adapters share, over a connection that outlives this object. Thread:
/// one.
class X11Connection {
  public:
    explicit X11Connection(xcb_connection_t* connection);

    /// Over Qt's own connection; to be called only on the xcb platform.
    [[nodiscard]] static X11Connection ofApplication();

    [[nodiscard]] xcb_connection_t* get() const { return connection_; }
    [[nodiscard]] xcb_window_t root() const { return root_; }
    [[nodiscard]] xcb_atom_t atom(const char* name) const;

    void setAtoms(xcb_window_t window, const char* property, const std::vector<const char*>& values) const;
    void setProperty(xcb_window_t window, const char* property, xcb_atom_t type,
                     const std::vector<uint32_t>& values) const;
    /// The 32-bit items of a property; empty when it is absent.
    [[nodiscard]] std::vector<uint32_t> property(xcb_window_t window, const char* property) const;

    /// Sends a message about a window to the window manager.
    void tellWindowManager(xcb_window_t window, const char* message, const std::vector<uint32_t>& data) const;
    [[nodiscard]] bool windowManagerSupports(const char* atom) const;
    /// The window manager's name for itself; empty without one.
    [[nodiscard]] QByteArray windowManagerName() const;
    /// Whether the server is itself a client of a Wayland compositor.
    [[nodiscard]] bool isXWayland() const;

    /// XCB_WINDOW_NONE when the window manager names none.
    [[nodiscard]] xcb_window_t activeWindow() const;
    [[nodiscard]] xcb_window_t inputFocus() const;
    [[nodiscard]] bool isViewable(xcb_window_t window) const;

    void flush() const { xcb_flush(connection_); }

  private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
    mutable std::map<std::string, xcb_atom_t> atoms_;
};

/// Whether a window is one of the application's.
[[nodiscard]] bool isOwnWindow(xcb_window_t id);

}  // namespace kestrant
