#pragma once

#include "foundation/Scheduler.h"
#include "notch/PanelWindow.h"
#include "platform/linux/x11/CompositorWatcher.h"
#include "platform/linux/x11/KeyFocus.h"
#include "platform/linux/x11/ScrollGestureRecogniser.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/XInputScroll.h"

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSizeF>
#include <QWindow>

#include <xcb/shape.h>

#include <optional>
#include <vector>

namespace kestrant {

/// The panel's window on X11, made of a Qt window that has not been shown yet. What is seen of it is cut out
/// by its bounding shape where nothing blends windows; with a compositor its own alpha draws the edges. Where
/// the pointer reaches it the input shape says, which follows the outline and the surfaces. Thread: main.
class X11PanelWindow : public QObject, public PanelWindow, public QAbstractNativeEventFilter {
    Q_OBJECT
    /// False where windows cannot be transparent: the panel then changes its size in one step.
    Q_PROPERTY(bool isCompositing READ isCompositing NOTIFY isCompositingChanged)

  public:
    /// Configures the window, which must have a transparent background. Both must outlive this object.
    X11PanelWindow(QWindow& window, Scheduler& scheduler);
    ~X11PanelWindow() override;

    /// Whether the panel should have the keyboard focus and another program took it. The news that the window
    /// has lost it comes late: by then the panel may have given it back by itself and asked for it again.
    [[nodiscard]] bool keyWasTakenAway() const {
        return isKey_ && !isAskingForKey() && focus_.wasTakenAway();
    }
    /// The focus was asked for a moment ago. Some compositors hand it back and forth until they have settled.
    [[nodiscard]] bool isAskingForKey() const { return asking_.isPending(); }

    [[nodiscard]] bool isCompositing() const { return compositor_.isCompositing(); }
    /// Whether what is scrolled follows the fingers on the touchpad.
    [[nodiscard]] bool touchpadScrollsNaturally() const { return scroll_.touchpadScrollsNaturally(); }

    /// How touchpads scroll that do not tell it themselves, as behind XWayland: as the compositor says, where
    /// that is known, or the other way round.
    void setTouchpadDirection(std::optional<bool> isNatural, bool isInverted);
    /// The display is a nested server's, whose devices do not tell how they scroll.
    [[nodiscard]] bool isXWayland() const { return isXWayland_; }

    void setEventHandler(PanelEventHandler* handler) override { handler_ = handler; }
    void setFrame(const QRectF& frame) override;
    void setShape(const NotchContainerShape& shape) override;
    void setRestingArea(QSizeF size) override;
    void setExtent(QSizeF size) override;
    void setSurfaces(const std::vector<PanelSurface>& surfaces) override;
    void setPanelLevel() override;
    void orderFrontRegardless() override;
    void orderOut() override;
    void setIgnoresMouseEvents(bool ignores) override;
    [[nodiscard]] bool ignoresMouseEvents() const override { return ignoresMouseEvents_; }
    void makeKey() override;
    void resignKey() override;

    bool eventFilter(QObject* watched, QEvent* event) override;
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  Q_SIGNALS:
    void isCompositingChanged();
    /// Another program took the focus so soon after it was asked for that nobody could tell by then.
    void keyTakenWhileAsking();

  private:
    [[nodiscard]] bool isManaged() const;
    [[nodiscard]] bool mousePressed(QEvent* event);
    [[nodiscard]] bool keyPressed(QEvent* event);
    /// The same place counted from the panel's frame. Points, y downwards.
    [[nodiscard]] QPointF inPanel(QPointF inWindow) const;
    void placeWindow();
    void applyShapes();
    void setRegion(xcb_shape_kind_t kind, std::vector<QRect> rectangles,
                   std::optional<std::vector<QRect>>& present);
    void askForKey();
    void focusArrived(const xcb_focus_in_event_t& event);

    QWindow& window_;
    Scheduler& scheduler_;
    X11Connection server_;
    bool isXWayland_;
    KeyFocus focus_;
    CompositorWatcher compositor_;
    XInputScroll scroll_;
    ScrollGestureRecogniser gestures_;
    PanelEventHandler* handler_ = nullptr;

    /// In Qt's global coordinates.
    QRectF frame_;
    /// Empty while the window is as large as the frame.
    QSizeF extent_;
    NotchContainerShape shape_;
    std::vector<PanelSurface> surfaces_;
    /// As the server has them; a window without a bounding region is seen in full.
    std::optional<std::vector<QRect>> bounding_;
    std::optional<std::vector<QRect>> input_;
    QSizeF restingArea_;
    bool ignoresMouseEvents_ = false;
    bool isKey_ = false;
    bool pressConsumed_ = false;
    ScheduledTask asking_;
    /// The server's time of the last scrolling that was consumed; Qt's wheel event for it has the same time.
    xcb_timestamp_t consumedScroll_ = 0;
};

}  // namespace kestrant
