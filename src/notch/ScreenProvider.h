#pragma once

#include "foundation/Subscription.h"

#include <QRectF>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

/// One display as the panel sees it. All lengths are in points; y grows upwards, as in every global rectangle
/// and location of this folder. The origin is the lower left corner of the primary display.
struct Screen {
    QString name;
    QRectF frame;
    /// The frame without the desktop's bars; null where those are not known.
    QRectF visibleFrame;
    /// The areas left and right of a camera housing in the top edge; absent on a display without one.
    std::optional<QRectF> auxiliaryTopLeftArea;
    std::optional<QRectF> auxiliaryTopRightArea;
    /// Height of the strip at the top that the camera housing takes; 0 without one.
    double topSafeAreaInset = 0.0;

    bool operator==(const Screen&) const = default;
};

/// The displays of the session. Thread: main.
class ScreenProvider {
  public:
    virtual ~ScreenProvider() = default;
    /// In the platform's order; empty while no display is connected.
    [[nodiscard]] virtual std::vector<Screen> screens() const = 0;
    [[nodiscard]] virtual std::optional<Screen> mainScreen() const = 0;
    /// Told after a display was connected, removed, moved, resized or scaled, or another became the main one.
    [[nodiscard]] virtual Subscription observeChanges(std::function<void()> observer) = 0;
};

}  // namespace kestrant
