#pragma once

#include "notch/NotchContainerShape.h"

#include <QPointF>
#include <QRectF>
#include <QString>

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
    /// The primary button went down. The location is in the window, in points, origin at its lower left
    /// corner.
    virtual bool leftMouseDown(QPointF locationInWindow) = 0;
    virtual bool performKeyEquivalent(const KeyEquivalent& key) = 0;
};

/// The borderless window that carries the panel. It keeps the size of the expanded panel; what is seen of it
/// and what takes the pointer follow the shape. It never takes the keyboard focus by being shown. Thread:
/// main.
class PanelWindow {
  public:
    virtual ~PanelWindow() = default;

    /// Who hears of events; null for nobody. Not owned; must be cleared before the handler goes.
    virtual void setEventHandler(PanelEventHandler* handler) = 0;

    /// Global rectangle in points, y upwards; may cover menu bars and docks.
    virtual void setFrame(const QRectF& frame) = 0;
    /// The part of the window that is drawn; hung from the middle of its top edge.
    virtual void setShape(const NotchContainerShape& shape) = 0;
    /// Where the pointer still reaches the window while mouse events are ignored: the resting notch, so that
    /// hovering works also where the pointer is only known above one's own windows. Size in points, hung like
    /// the shape.
    virtual void setRestingArea(QSizeF size) = 0;

    /// Above every other window but pop-up menus. Asked again whenever something may have changed it.
    virtual void setPanelLevel() = 0;
    /// Shows the window, in front of the others of its level, whether or not the application is active.
    virtual void orderFrontRegardless() = 0;
    virtual void orderOut() = 0;

    /// While true, everything outside the resting area falls through to what lies below; while false,
    /// everything outside the shape does.
    virtual void setIgnoresMouseEvents(bool ignores) = 0;
    [[nodiscard]] virtual bool ignoresMouseEvents() const = 0;

    /// Takes the keyboard focus, remembering who had it.
    virtual void makeKey() = 0;
    /// Gives the keyboard focus back to whoever had it before makeKey(), unless it has moved on since.
    virtual void resignKey() = 0;
};

}  // namespace kestrant
