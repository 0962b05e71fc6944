#pragma once

#include "platform/linux/window/ScrollGestureRecogniser.h"
#include "platform/linux/x11/X11Connection.h"

#include <xcb/xinput.h>

#include <map>
#include <optional>
#include <vector>

namespace kestrant {

/// Reads smooth scrolling from the motion events of the X input extension, version 2.1 or later. A device
/// reports the running total of each direction; what counts is the change, so the totals are followed for
/// each device. Thread: main.
class XInputScroll {
  public:
    /// `assumeNaturalScrolling` is the direction of devices that do not tell theirs.
    XInputScroll(const X11Connection& server, bool assumeNaturalScrolling);

    void setAssumeNaturalScrolling(bool assumed);

    /// Reads devices, their settings and their totals anew: when the pointer comes in (it may have scrolled
    /// elsewhere), and when devices come and go. A few round trips.
    void refresh();

    /// Whether what is scrolled follows the fingers on the touchpad, as far as devices tell theirs.
    [[nodiscard]] bool touchpadScrollsNaturally() const;

    /// The extension's motion event in a generic event; null when it is something else.
    [[nodiscard]] const xcb_input_motion_event_t* motionEvent(const xcb_generic_event_t& event) const;
    /// Whether a generic event says that devices came or went.
    [[nodiscard]] bool isHierarchyChange(const xcb_generic_event_t& event) const;

    /// The scrolling in a motion event; absent when the pointer only moved.
    [[nodiscard]] std::optional<ScrollSample> sample(const xcb_input_motion_event_t& event);

  private:
    struct Axis {
        int number = 0;
        bool vertical = false;
        double increment = 1.0;
        std::optional<double> total;
    };
    struct Device {
        ScrollDeviceKind kind = ScrollDeviceKind::unknown;
        bool naturalScrolling = false;
        std::vector<Axis> axes;
    };
    [[nodiscard]] std::map<int, ScrollDeviceKind> kinds() const;
    [[nodiscard]] bool naturalScrolling(int deviceId) const;
    [[nodiscard]] bool isExtensionEvent(const xcb_generic_event_t& event, int type) const;

    X11Connection server_;
    bool assumeNaturalScrolling_;
    uint8_t opcode_ = 0;
    std::map<int, Device> devices_;
};

}  // namespace kestrant
