#pragma once

#include "foundation/Scheduler.h"
#include "notch/PanelWindow.h"

#include <functional>
#include <map>

namespace kestrant {

/// Properties of the scrolling device.
enum class ScrollDeviceKind {
    /// Its scrolling is always made by fingers.
    touchpad,
    /// Its scrolling is never a gesture: wheels, buttons, sticks.
    wheel,
    /// Stands for several real devices, as the pointer of a nested X server does.
    unknown,
};

/// One movement of a device's scroll valuators, as the X input extension reports it.
struct ScrollSample {
    int deviceId = 0;
    ScrollDeviceKind kind = ScrollDeviceKind::unknown;
    /// The device scrolls "naturally": the content follows the fingers.
    bool naturalScrolling = false;
    /// Change of the valuators; positive is right and down.
    double deltaX = 0.0;
    double deltaY = 0.0;
    /// Change of the valuators that stands for one click of a wheel; never 0.
    double incrementX = 1.0;
    double incrementY = 1.0;
};

/// Makes gestures of smooth scrolling, which X11 reports without beginning and end: one begins with the first
/// sample after 150 ms of silence from its device, and ends after as long a silence. Clicks of a wheel,
/// finely divided ones too, are never part of one. A wheel click's worth of scrolling is 15 points. Thread:
/// the scheduler's.
class ScrollGestureRecogniser {
  public:
    using Receiver = std::function<bool(const ScrollEvent& event)>;

    /// `receiver` is told of each event and returns whether it consumed it. The scheduler must outlive this
    /// object.
    ScrollGestureRecogniser(Scheduler& scheduler, Receiver receiver);

    /// Returns what the receiver returned; false when the sample is no part of a gesture.
    bool add(const ScrollSample& sample);

    /// Ends every gesture at once, as when the pointer leaves the window.
    void endAll();

  private:
    struct Gesture {
        ScrollEvent last;
        ScheduledTask end;
    };
    void end(int deviceId);

    Scheduler& scheduler_;
    Receiver receiver_;
    std::map<int, Gesture> gestures_;
};

}  // namespace kestrant
