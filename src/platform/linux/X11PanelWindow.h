#pragma once

#include "notch/PanelWindow.h"
#include "platform/linux/CompositorWatcher.h"
#include "platform/linux/KeyFocus.h"
#include "platform/linux/ScrollGestureRecogniser.h"
#include "platform/linux/X11Connection.h"
#include "platform/linux/XInputScroll.h"

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSizeF>
#include <QWindow>

#include <vector>

namespace kestrant {

/// The panel's window on X11, made of a Qt window that has not been shown yet. What is seen of it is cut out
/// by its shape where nothing blends windows; with a compositor its own alpha draws the edge and the shape
/// only says where the pointer reaches it. Thread: main.
class X11PanelWindow : public QObject, public PanelWindow, public QAbstractNativeEventFilter {
    Q_OBJECT
    /// False where windows cannot be transparent: the panel then changes its size in one step.
    Q_PROPERTY(bool isCompositing READ isCompositing NOTIFY isCompositingChanged)

  public:
    /// Configures the window, which must have a transparent background. Both must outlive this object.
    X11PanelWindow(QWindow& window, Scheduler& scheduler);
    ~X11PanelWindow() override;

    /// Makes a popover's window, not shown yet, one of the panel's surfaces: above the panel, and able to
    /// take typing. When it closes while the application has the keyboard focus, the focus goes to the
    /// surface below it.
    void adoptOverlay(QWindow& surface);
    /// Moves the keyboard focus to a visible popover.
    void focusOverlay(QWindow& surface);
    /// Moves the keyboard focus to the panel, or to a popover that is still visible, unless the person has
    /// moved it out of the application.
    void focusPanel();

    /// Whether the panel should have the keyboard focus and somebody else took it. The news that a surface
    /// has lost it comes late: by then the panel may have given it back by itself and asked for it again.
    [[nodiscard]] bool keyWasTakenAway() const { return isKey_ && focus_.wasTakenAway(); }

    [[nodiscard]] bool isCompositing() const { return compositor_.isCompositing(); }
    /// Whether what is scrolled follows the fingers on the touchpad.
    [[nodiscard]] bool touchpadScrollsNaturally() const { return scroll_.touchpadScrollsNaturally(); }

    void setEventHandler(PanelEventHandler* handler) override { handler_ = handler; }
    void setFrame(const QRectF& frame) override;
    void setShape(const NotchContainerShape& shape) override;
    void setRestingArea(QSizeF size) override;
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

  private:
    [[nodiscard]] bool isManaged() const;
    [[nodiscard]] bool mousePressed(QEvent* event);
    [[nodiscard]] bool keyPressed(QEvent* event);
    [[nodiscard]] std::vector<QRect> pixelsOf(const NotchContainerShape& shape) const;
    void applyShapes();
    void focusArrived(const xcb_focus_in_event_t& event);
    void focusTopmostExcept(const QWindow* closing);

    QWindow& window_;
    X11Connection server_;
    KeyFocus focus_;
    CompositorWatcher compositor_;
    XInputScroll scroll_;
    ScrollGestureRecogniser gestures_;
    PanelEventHandler* handler_ = nullptr;

    /// In the order in which they were adopted.
    std::vector<QPointer<QWindow>> overlays_;
    NotchContainerShape shape_;
    QSizeF restingArea_;
    bool ignoresMouseEvents_ = false;
    bool isKey_ = false;
    bool pressConsumed_ = false;
    /// An overlay with the focus is closing.
    bool passFocusOn_ = false;
    /// The server's time of the last scrolling that was consumed; Qt's wheel event for it has the same time.
    xcb_timestamp_t consumedScroll_ = 0;
};

}  // namespace kestrant
