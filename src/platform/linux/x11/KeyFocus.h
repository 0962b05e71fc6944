#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QObject>

#include <memory>

class QWindow;

namespace kestrant {

/// Takes the keyboard focus for the panel's window and gives it back to whoever had it. Thread: main.
class KeyFocus : public QObject {
  public:
    KeyFocus();
    ~KeyFocus() override;

    /// Gives the focus to one of our visible surfaces, remembering its holder when that was none of them.
    void take(QWindow& surface);
    /// Takes the focus once more, so that a compositor notices which did not know the surface yet when it was
    /// taken. Nothing where it is not ours.
    void confirm(QWindow& surface);
    /// Gives the focus back unless it has left our surfaces already.
    void giveBack();
    /// Whether one of the application's windows has the focus, as the server sees it.
    [[nodiscard]] bool isOurs() const;
    /// Whether another window took the focus from our surfaces: not while what was asked for with take() is
    /// still to come, nor when it fell back to nobody or was given back.
    [[nodiscard]] bool wasTakenAway() const;
    /// To be called when one of our surfaces is told that it has the focus.
    void arrived() { hasArrived_ = true; }
    /// What was asked for with take() will not come.
    void wasRefused() { hasArrived_ = false; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    [[nodiscard]] bool asksWindowManager(const QWindow& surface) const;
    void handOver();

    X11Connection server_;
    bool isXWayland_;
    /// The window that had the focus: the window manager's active window, or the very window that had it
    /// where the window manager is not asked.
    xcb_window_t previous_ = XCB_WINDOW_NONE;
    bool previousIsActiveWindow_ = false;
    /// Since it was last asked for.
    bool hasArrived_ = false;
    std::unique_ptr<QWindow> handOverWindow_;
};

}  // namespace kestrant
