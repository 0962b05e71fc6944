#pragma once

#include "foundation/Scheduler.h"
#include "platform/linux/window/DesktopPanelWindow.h"
#include "platform/linux/window/ScrollGestureRecogniser.h"
#include "platform/linux/x11/CompositorWatcher.h"
#include "platform/linux/x11/FullScreenWatcher.h"
#include "platform/linux/x11/KeyFocus.h"
#include "platform/linux/x11/PointerScrim.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/XInputScroll.h"

#include <QAbstractNativeEventFilter>
#include <QRect>
#include <QSizeF>
#include <QWindow>

#include <xcb/shape.h>

#include <optional>
#include <vector>

namespace kestrant {

/// The panel's window on X11, made of a Qt window that has not been shown yet. What is seen of it is cut out
/// by its bounding shape where nothing blends windows; with a compositor its own alpha draws the edges. Where
/// the pointer reaches it the input shape says, which follows the outline and the surfaces. Thread: main.
class X11PanelWindow : public DesktopPanelWindow, public QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    /// Configures the window, which must have a transparent background. Both must outlive this object.
    X11PanelWindow(QWindow& window, Scheduler& scheduler);
    ~X11PanelWindow() override;

    [[nodiscard]] bool keyWasTakenAway() const override {
        return isKey_ && !isAskingForKey() && focus_.wasTakenAway();
    }
    [[nodiscard]] bool isAskingForKey() const override { return asking_.isPending(); }
    [[nodiscard]] bool isCompositing() const override { return compositor_.isCompositing(); }
    [[nodiscard]] bool touchpadScrollsNaturally() const override {
        return scroll_.touchpadScrollsNaturally();
    }
    /// False behind XWayland: the devices of a nested server do not tell.
    [[nodiscard]] bool touchpadsTellDirection() const override { return !isXWayland_; }
    void setTouchpadDirection(std::optional<bool> isNatural, bool isInverted) override;

    void setYieldsToFullScreen(bool yields) override;
    void setExtent(QSizeF size) override;
    void setPanelLevel() override;
    void orderFrontRegardless() override;
    void orderOut() override;
    void makeKey() override;
    void resignKey() override;

    bool eventFilter(QObject* watched, QEvent* event) override;
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  private:
    void placeWindow() override;
    void applyShapes() override;
    void pressed() override;
    [[nodiscard]] bool knowsPlaces() const override { return true; }
    /// By a window in full screen, which it yields to.
    [[nodiscard]] bool isCovered() const;
    void followFullScreen();
    [[nodiscard]] bool isManaged() const;
    void setRegion(xcb_shape_kind_t kind, std::vector<QRect> rectangles,
                   std::optional<std::vector<QRect>>& present);
    enum class Attempt { first, last };
    void askForKey(Attempt attempt = Attempt::first);
    /// Sees to it that the pointer's leaving is noticed in a Wayland session.
    void watchPointerLeave();
    void focusArrived(const xcb_focus_in_event_t& event);

    Scheduler& scheduler_;
    X11Connection server_;
    bool isXWayland_;
    KeyFocus focus_;
    CompositorWatcher compositor_;
    /// In a Wayland session only.
    std::optional<PointerScrim> scrim_;
    XInputScroll scroll_;
    ScrollGestureRecogniser gestures_;

    /// Empty while the window is as large as the frame.
    QSizeF extent_;
    /// As the server has them; a window without a bounding region is seen in full.
    std::optional<std::vector<QRect>> bounding_;
    std::optional<std::vector<QRect>> input_;
    bool isKey_ = false;
    bool isWanted_ = false;
    /// Absent where windows in full screen stay below.
    std::optional<FullScreenWatcher> fullScreen_;
    ScheduledTask asking_;
    ScheduledTask confirming_;
    ScheduledTask pointerLook_;
    ScheduledTask fullScreenLook_;
    /// The server's time of the last scrolling that was consumed; Qt's wheel event for it has the same time.
    xcb_timestamp_t consumedScroll_ = 0;
};

}  // namespace kestrant
