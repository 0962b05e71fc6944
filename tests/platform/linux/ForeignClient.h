#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QObject>
#include <QRect>
#include <QSocketNotifier>

#include <functional>
#include <memory>
#include <vector>

namespace kestrant {

/// Another program on the same display, with windows of its own and hands for the mouse and the keyboard.
/// What it waits for are events; where one never comes, waiting fails.
class ForeignClient : public QObject {
  public:
    ForeignClient();
    ~ForeignClient() override;

    /// Maps a window and waits until it is on screen and has been given the focus.
    xcb_window_t openWindow(const QRect& geometry, const std::vector<const char*>& states = {});
    void closeWindow(xcb_window_t window);

    void movePointer(QPoint to);
    void click(QPoint at);
    /// Presses and releases a key, by its keysym, with Control held or not.
    void type(uint32_t keysym, bool withControl = false);

    /// Returns once a window manager has named itself.
    void waitForWindowManager();

    /// Acts as a compositor, or ceases to.
    void setCompositing(bool on);

    /// Runs the event loop until `done` holds; false when it has not after ten seconds.
    [[nodiscard]] bool waitUntil(const std::function<bool()>& done);

    /// The topmost window at a place that takes the pointer there, from the root down; its own client, not a
    /// frame.
    [[nodiscard]] xcb_window_t windowAt(QPoint place);

    [[nodiscard]] const X11Connection& server() const { return server_; }
    /// Windows of this client that were clicked, and keys that they got, in order.
    std::vector<xcb_window_t> clicked;
    std::vector<uint32_t> typed;
    xcb_window_t focused = XCB_WINDOW_NONE;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    void readEvents();
    void fake(uint8_t type, uint8_t detail, QPoint at = {});
    [[nodiscard]] uint8_t keycode(uint32_t keysym) const;

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    X11Connection server_;
    QSocketNotifier notifier_;
    std::vector<xcb_window_t> mapped_;
    xcb_window_t selectionOwner_ = XCB_WINDOW_NONE;
};

}  // namespace kestrant
