#include "platform/linux/x11/KeyFocus.h"

#include "platform/linux/x11/SurfaceManagement.h"

#include <QEvent>
#include <QGuiApplication>
#include <QRasterWindow>
#include <QScreen>
#include <QTimer>

#include <algorithm>

namespace kestrant {

namespace {

constexpr char activeWindowMessage[] = "_NET_ACTIVE_WINDOW";
/// The source of a request that a pager would make: granted without weighing who was active last.
constexpr uint32_t sourcePager = 2;

}  // namespace

KeyFocus::KeyFocus() : server_(X11Connection::ofApplication()), isXWayland_(server_.isXWayland()) {}

KeyFocus::~KeyFocus() = default;

bool KeyFocus::isOurs() const {
    return isOwnWindow(server_.inputFocus());
}

bool KeyFocus::wasTakenAway() const {
    const xcb_window_t focus = server_.inputFocus();
    const bool isNobodys =
        focus == XCB_INPUT_FOCUS_NONE || focus == XCB_INPUT_FOCUS_POINTER_ROOT || focus == server_.root();
    // In a Wayland session nobody is who has it of whom X11 knows nothing.
    return hasArrived_ && (isXWayland_ || !isNobodys) && !isOwnWindow(focus);
}

bool KeyFocus::asksWindowManager(const QWindow& surface) const {
    const bool managed = !surface.flags().testFlag(Qt::BypassWindowManagerHint);
    return (managed || isXWayland_) && server_.windowManagerSupports(activeWindowMessage);
}

void KeyFocus::take(QWindow& surface) {
    handOverWindow_.reset();
    const xcb_window_t focus = server_.inputFocus();
    if (!isOwnWindow(focus)) {
        hasArrived_ = false;
        previousIsActiveWindow_ = asksWindowManager(surface);
        const xcb_window_t holder = previousIsActiveWindow_ ? server_.activeWindow() : focus;
        if (!isOwnWindow(holder))
            previous_ = holder;
    }
    const auto id = static_cast<xcb_window_t>(surface.winId());
    if (surface.flags().testFlag(Qt::BypassWindowManagerHint) ||
        !server_.windowManagerSupports(activeWindowMessage))
        xcb_set_input_focus(server_.get(), XCB_INPUT_FOCUS_PARENT, id, XCB_CURRENT_TIME);
    else
        server_.tellWindowManager(id, activeWindowMessage, {sourcePager, XCB_CURRENT_TIME, XCB_WINDOW_NONE});
    server_.flush();
}

void KeyFocus::confirm(QWindow& surface) {
    if (!isOurs())
        return;
    // A focus that does not change is no news to anybody.
    xcb_set_input_focus(server_.get(), XCB_INPUT_FOCUS_NONE, XCB_INPUT_FOCUS_NONE, XCB_CURRENT_TIME);
    xcb_set_input_focus(server_.get(), XCB_INPUT_FOCUS_PARENT, static_cast<xcb_window_t>(surface.winId()),
                        XCB_CURRENT_TIME);
    server_.flush();
}

void KeyFocus::giveBack() {
    hasArrived_ = false;
    if (!isOurs())
        return;
    // Kept: a request for the focus that is granted late needs it once more.
    if (server_.isViewable(previous_)) {
        if (previousIsActiveWindow_)
            server_.tellWindowManager(previous_, activeWindowMessage,
                                      {sourcePager, XCB_CURRENT_TIME, XCB_WINDOW_NONE});
        else
            xcb_set_input_focus(server_.get(), XCB_INPUT_FOCUS_POINTER_ROOT, previous_, XCB_CURRENT_TIME);
    } else if (isXWayland_) {
        handOver();
    } else {
        // A window manager takes over from nothing; without one the focus follows the pointer.
        const bool managed = !server_.windowManagerName().isEmpty();
        xcb_set_input_focus(server_.get(), XCB_INPUT_FOCUS_POINTER_ROOT,
                            managed ? XCB_INPUT_FOCUS_NONE : XCB_INPUT_FOCUS_POINTER_ROOT, XCB_CURRENT_TIME);
    }
    server_.flush();
}

/// The previous holder may be a client of the compositor of which X11 knows nothing. When an ordinary window
/// closes, compositors give the focus to whoever had it before, so one is opened for just that: a transparent
/// point.
void KeyFocus::handOver() {
    handOverWindow_ = std::make_unique<QRasterWindow>();
    QWindow& window = *handOverWindow_;
    window.setFlags(Qt::Tool | Qt::FramelessWindowHint);
    window.setOpacity(0.0);
    const QScreen* screen = QGuiApplication::primaryScreen();
    window.setGeometry(QRect(screen ? screen->geometry().center() : QPoint(), QSize(1, 1)));
    window.installEventFilter(this);
    window.create();
    server_.setAtoms(static_cast<xcb_window_t>(window.winId()), "_NET_WM_STATE",
                     {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"});
    window.show();
    server_.tellWindowManager(static_cast<xcb_window_t>(window.winId()), activeWindowMessage,
                              {sourcePager, XCB_CURRENT_TIME, XCB_WINDOW_NONE});
}

bool KeyFocus::eventFilter(QObject* watched, QEvent* event) {
    if (watched == handOverWindow_.get() && event->type() == QEvent::FocusIn)
        QTimer::singleShot(0, this, [this] { handOverWindow_.reset(); });
    return false;
}

}  // namespace kestrant
