#include "notch/NotchPanel.h"

#include <cmath>

namespace kestrant {

namespace {
/// Points of vertical scrolling that make a swipe.
constexpr double swipeThreshold = 5.0;
}  // namespace

NotchPanel::NotchPanel(PanelWindow& window) : window_(window) {
    window_.setEventHandler(this);
}

NotchPanel::~NotchPanel() {
    window_.setEventHandler(nullptr);
}

void NotchPanel::setFrame(const QRectF& frame) {
    frame_ = frame;
    window_.setFrame(frame);
}

void NotchPanel::resetGesture() {
    verticalScrollAccumulator_ = 0.0;
    verticalGestureDidTrigger_ = false;
}

bool NotchPanel::scrollWheel(const ScrollEvent& event) {
    if (!event.hasPreciseDeltas || event.isMomentum)
        return false;
    if (event.phase == ScrollEvent::Phase::ended || event.phase == ScrollEvent::Phase::cancelled) {
        resetGesture();
        return false;
    }
    if (event.phase == ScrollEvent::Phase::began)
        resetGesture();
    if (verticalGestureDidTrigger_)
        return true;
    if (std::abs(event.deltaX) >= std::abs(event.deltaY))
        return false;

    // The sign follows the fingers: negative is down.
    verticalScrollAccumulator_ += event.directionInverted ? -event.deltaY : event.deltaY;
    if (std::abs(verticalScrollAccumulator_) < swipeThreshold)
        return false;
    const auto& swipe = verticalScrollAccumulator_ < 0.0 ? onSwipeDown : onSwipeUp;
    verticalScrollAccumulator_ = 0.0;
    verticalGestureDidTrigger_ = swipe && swipe();
    return verticalGestureDidTrigger_;
}

bool NotchPanel::leftMouseDown(QPointF locationInWindow) {
    return onPrimaryClick && onPrimaryClick(locationInWindow, frame_);
}

void NotchPanel::dragged(double points, bool ended) {
    if (onDrag)
        onDrag(points, ended);
}

bool NotchPanel::performKeyEquivalent(const KeyEquivalent& key) {
    const bool withShift = key.modifiers == (Qt::ControlModifier | Qt::ShiftModifier);
    if (!withShift && key.modifiers != Qt::ControlModifier)
        return false;
    const QString characters = key.charactersIgnoringModifiers.toLower();
    const bool isUndo = characters == u"z";
    if (!isUndo && (withShift || (characters != u"n" && characters != u"f")))
        return false;
    if (isUndo && key.firstResponderIsTextView)
        return false;
    return onKeyboardCommand && onKeyboardCommand(isUndo && withShift ? QStringLiteral("redo") : characters);
}

}  // namespace kestrant
