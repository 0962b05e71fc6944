#pragma once

#include "notch/PanelWindow.h"

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>
#include <vector>

class QEvent;
class QWindow;

namespace kestrant {

/// The panel's window on a desktop: what its implementations for X11 and Wayland have in common, and what the
/// application asks of either. Watches the events of a Qt window that has not been shown yet. Thread: main.
class DesktopPanelWindow : public QObject, public PanelWindow {
    Q_OBJECT

  public:
    /// The window must outlive this object.
    explicit DesktopPanelWindow(QWindow& window);

    /// Whether the panel should have the keyboard focus and another program took it. The news that the window
    /// has lost it comes late: by then the panel may have given it back by itself and asked for it again.
    [[nodiscard]] virtual bool keyWasTakenAway() const = 0;
    /// The focus was asked for a moment ago. Some compositors hand it back and forth until they have settled.
    [[nodiscard]] virtual bool isAskingForKey() const = 0;
    /// False where windows cannot be transparent: the panel then changes its size in one step.
    [[nodiscard]] virtual bool isCompositing() const = 0;

    /// Whether what is scrolled follows the fingers on the touchpad.
    [[nodiscard]] virtual bool touchpadScrollsNaturally() const = 0;
    /// Whether touchpads tell how they scroll. Where they do not, setTouchpadDirection() does.
    [[nodiscard]] virtual bool touchpadsTellDirection() const = 0;
    /// How touchpads scroll that do not tell it themselves: as the compositor says, where that is known, or
    /// the other way round.
    virtual void setTouchpadDirection(std::optional<bool> isNatural, bool isInverted) = 0;

    /// Whether the panel lies below the desktop's bars; to be told before it is shown. Only where those know
    /// of it by themselves: elsewhere its frame says so.
    virtual void setIsBelowBars(bool isBelow) { Q_UNUSED(isBelow) }
    /// Whether windows in full screen cover the folded panel.
    virtual void setYieldsToFullScreen(bool yields) = 0;

    void setEventHandler(PanelEventHandler* handler) override { handler_ = handler; }
    void setFrame(const QRectF& frame) override;
    void setShape(const NotchContainerShape& shape) override;
    void setRestingArea(QSizeF size) override;
    void setSurfaces(const std::vector<PanelSurface>& surfaces) override;
    void setIgnoresMouseEvents(bool ignores) override;
    [[nodiscard]] bool ignoresMouseEvents() const override { return ignoresMouseEvents_; }

    bool eventFilter(QObject* watched, QEvent* event) override;

  Q_SIGNALS:
    void isCompositingChanged();
    /// Another program took the focus so soon after it was asked for that nobody could tell by then.
    void keyTakenWhileAsking();

  protected:
    /// Gives the window its place after the frame or the extent has changed.
    virtual void placeWindow() = 0;
    /// Has the window follow the shape, the surfaces and the resting area.
    virtual void applyShapes() = 0;
    /// A button has been pressed in the window.
    virtual void pressed() {}
    /// Whether the place of events on the desktop is known, so that the window can follow the pointer.
    [[nodiscard]] virtual bool knowsPlaces() const = 0;

    /// The same place counted from the panel's frame. Points, y downwards.
    [[nodiscard]] QPointF inPanel(QPointF inWindow) const;
    /// The window's place where it is as large as its extent. Qt's global coordinates.
    [[nodiscard]] QRect placeOf(QSizeF extent) const;
    /// The desktop scrolls naturally unless it tells otherwise: the best guess until its settings are known.
    [[nodiscard]] static bool desktopScrollsNaturally();

    [[nodiscard]] QWindow& window() const { return window_; }
    [[nodiscard]] PanelEventHandler* handler() const { return handler_; }
    /// In Qt's global coordinates.
    [[nodiscard]] const QRectF& frame() const { return frame_; }
    [[nodiscard]] const NotchContainerShape& shape() const { return shape_; }
    [[nodiscard]] const std::vector<PanelSurface>& surfaces() const { return surfaces_; }
    [[nodiscard]] QSizeF restingArea() const { return restingArea_; }

  private:
    [[nodiscard]] bool mousePressed(QEvent* event);
    void mouseDragged(QEvent* event);
    [[nodiscard]] bool keyPressed(QEvent* event);

    QWindow& window_;
    PanelEventHandler* handler_ = nullptr;
    QRectF frame_;
    NotchContainerShape shape_;
    std::vector<PanelSurface> surfaces_;
    QSizeF restingArea_;
    bool ignoresMouseEvents_ = false;
    bool pressConsumed_ = false;
    /// Where the panel was taken up to be carried along the edge.
    std::optional<double> dragStart_;
};

}  // namespace kestrant
