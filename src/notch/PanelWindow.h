#pragma once

#include "notch/NotchContainerShape.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <vector>

namespace kestrant {

/// One step of scrolling as the window receives it.
struct ScrollEvent {
    enum class Phase { none, began, changed, ended, cancelled };

    /// Points, as the device reports them: negated against the fingers when `directionInverted` is set.
    double deltaX = 0.0;
    double deltaY = 0.0;
    /// A trackpad's finely grained steps; false for the clicks of a wheel.
    bool hasPreciseDeltas = false;
    /// Coasting on after the fingers were lifted.
    bool isMomentum = false;
    /// The device scrolls "naturally": the content follows the fingers.
    bool directionInverted = false;
    Phase phase = Phase::none;
};

/// A key pressed together with modifiers.
struct KeyEquivalent {
    QString charactersIgnoringModifiers;
    /// The Command key is Qt::ControlModifier.
    Qt::KeyboardModifiers modifiers;
    /// The keyboard focus is in an editable text, which undoes its own edits.
    bool firstResponderIsTextView = false;
};

/// Receives what happens to the panel's window. Each returns true when the event is consumed and must not
/// reach the window's content.
class PanelEventHandler {
  public:
    virtual ~PanelEventHandler() = default;
    virtual bool scrollWheel(const ScrollEvent& event) = 0;
    /// The primary button went down on the panel itself. The location is in the panel's frame, in points,
    /// origin at its lower left corner.
    virtual bool leftMouseDown(QPointF locationInWindow) = 0;
    /// The panel is carried along the edge: by so many points to the right since the button went down.
    virtual void dragged(double points, bool ended) = 0;
    virtual bool performKeyEquivalent(const KeyEquivalent& key) = 0;
};

/// Something beside the panel's outline, or upon it, that is drawn in its window.
struct PanelSurface {
    enum class Kind {
        /// A popover or menu. The pointer on it is not on the panel.
        popover,
        /// A message that hangs below the panel and belongs to it: the pointer on it is on the panel.
        toast,
        /// The way from the panel to its toast. Nothing is drawn there, but the pointer may cross it.
        gap,
    };
    Kind kind = Kind::popover;
    /// Points from the upper left corner of the panel's frame, y downwards.
    QRectF frame;
    double cornerRadius = 0.0;

    bool operator==(const PanelSurface&) const = default;
};

/// The borderless window that carries the panel and what opens on it. It is as large as what is shown needs;
/// what is seen of it and what takes the pointer follow the shape and the surfaces. All rectangles and
/// locations are the panel's, whatever the window's own size. It never takes the keyboard focus by being
/// shown. Thread: main.
class PanelWindow {
  public:
    virtual ~PanelWindow() = default;

    /// The receiver of events; may be null. Not owned; must be cleared before the handler goes.
    virtual void setEventHandler(PanelEventHandler* handler) = 0;

    /// The expanded panel's place: a global rectangle in points, y upwards; may cover menu bars and docks.
    virtual void setFrame(const QRectF& frame) = 0;
    /// The window's own size in points, hung from the middle of the frame's top edge: the room that what is
    /// drawn needs, shadows included.
    virtual void setExtent(QSizeF size) = 0;
    /// The panel's outline; hung from the middle of the frame's top edge.
    virtual void setShape(const NotchContainerShape& shape) = 0;
    /// Where the pointer still reaches the window while mouse events are ignored: the resting notch, so that
    /// hovering works also where the pointer is only known above one's own windows. Size in points, hung like
    /// the shape.
    virtual void setRestingArea(QSizeF size) = 0;
    /// The surfaces open on the expanded panel, the lowest first.
    virtual void setSurfaces(const std::vector<PanelSurface>& surfaces) = 0;

    /// Above every other window but pop-up menus. Asked again whenever something may have changed it.
    virtual void setPanelLevel() = 0;
    /// Shows the window, in front of the others of its level, whether or not the application is active.
    virtual void orderFrontRegardless() = 0;
    virtual void orderOut() = 0;

    /// While true, everything outside the resting area falls through to what lies below; while false,
    /// everything outside the shape and the surfaces does.
    virtual void setIgnoresMouseEvents(bool ignores) = 0;
    [[nodiscard]] virtual bool ignoresMouseEvents() const = 0;

    /// Takes the keyboard focus, remembering who had it.
    virtual void makeKey() = 0;
    /// Gives the keyboard focus back to whoever had it before makeKey(), unless it has moved on since.
    virtual void resignKey() = 0;
};

}  // namespace kestrant
