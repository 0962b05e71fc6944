#pragma once

#include "notch/PanelWindow.h"

#include <functional>

namespace kestrant {

/// Turns the raw clicks, scrolling and key presses of the panel's window into clicks, swipes and commands.
/// Thread: main.
class NotchPanel : public PanelEventHandler {
  public:
    /// Takes over the window's events while it lives. The window must outlive it.
    explicit NotchPanel(PanelWindow& window);
    ~NotchPanel() override;
    NotchPanel(const NotchPanel&) = delete;
    NotchPanel& operator=(const NotchPanel&) = delete;

    [[nodiscard]] PanelWindow& window() const { return window_; }

    /// Places the window and remembers its frame.
    void setFrame(const QRectF& frame);
    [[nodiscard]] const QRectF& frame() const { return frame_; }

    /// Each returns true when it has consumed the event. Unset handlers consume nothing.
    /// Gets the click's location in the window (points, origin lower left) and the window's frame.
    std::function<bool(QPointF locationInWindow, const QRectF& frame)> onPrimaryClick;
    std::function<bool()> onSwipeDown;
    std::function<bool()> onSwipeUp;
    /// Gets the distance from where the drag began.
    std::function<void(double points, bool ended)> onDrag;
    /// Gets "n", "f", "z" or "redo".
    std::function<bool(const QString& command)> onKeyboardCommand;

    bool scrollWheel(const ScrollEvent& event) override;
    bool leftMouseDown(QPointF locationInWindow) override;
    void dragged(double points, bool ended) override;
    bool performKeyEquivalent(const KeyEquivalent& key) override;

  private:
    void resetGesture();

    PanelWindow& window_;
    QRectF frame_;
    double verticalScrollAccumulator_ = 0.0;
    bool verticalGestureDidTrigger_ = false;
};

}  // namespace kestrant
