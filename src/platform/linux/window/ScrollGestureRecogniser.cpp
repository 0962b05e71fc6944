#include "platform/linux/window/ScrollGestureRecogniser.h"

#include <cmath>
#include <utility>

namespace kestrant {

namespace {

constexpr Duration silence = std::chrono::milliseconds(150);
constexpr double pointsPerIncrement = 15.0;
/// Wheels with fine resolution report their clicks in parts of this many.
constexpr double partsOfClick = 120.0;

bool isWholeNumber(double value) {
    return std::abs(value - std::round(value)) < 1e-4;
}

/// A wheel turns by whole parts of a click; fingers hardly ever scroll by just such an amount.
bool looksLikeWheel(const ScrollSample& sample) {
    return isWholeNumber(sample.deltaX / sample.incrementX * partsOfClick) &&
           isWholeNumber(sample.deltaY / sample.incrementY * partsOfClick);
}

}  // namespace

ScrollGestureRecogniser::ScrollGestureRecogniser(Scheduler& scheduler, Receiver receiver)
    : scheduler_(scheduler)
    , receiver_(std::move(receiver)) {}

bool ScrollGestureRecogniser::add(const ScrollSample& sample) {
    if (sample.kind == ScrollDeviceKind::wheel || (sample.deltaX == 0.0 && sample.deltaY == 0.0))
        return false;
    const bool continues = gestures_.contains(sample.deviceId);
    if (!continues && sample.kind == ScrollDeviceKind::unknown && looksLikeWheel(sample))
        return false;

    ScrollEvent event;
    event.deltaX = -sample.deltaX / sample.incrementX * pointsPerIncrement;
    event.deltaY = -sample.deltaY / sample.incrementY * pointsPerIncrement;
    event.hasPreciseDeltas = true;
    event.directionInverted = sample.naturalScrolling;
    event.phase = continues ? ScrollEvent::Phase::changed : ScrollEvent::Phase::began;

    Gesture& gesture = gestures_[sample.deviceId];
    gesture.last = event;
    gesture.end = scheduler_.after(silence, [this, id = sample.deviceId] { end(id); });
    return receiver_(event);
}

void ScrollGestureRecogniser::end(int deviceId) {
    auto gesture = gestures_.extract(deviceId);
    if (gesture.empty())
        return;
    ScrollEvent event = gesture.mapped().last;
    event.deltaX = 0.0;
    event.deltaY = 0.0;
    event.phase = ScrollEvent::Phase::ended;
    receiver_(event);
}

void ScrollGestureRecogniser::endAll() {
    while (!gestures_.empty())
        end(gestures_.begin()->first);
}

}  // namespace kestrant
