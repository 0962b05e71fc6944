#include "notch/NotchGeometry.h"

#include <algorithm>

namespace kestrant {

namespace {

constexpr QSizeF fallbackNotch{194.0, 32.25};
constexpr double narrowestNotch = 150.0;
constexpr double widestNotch = 280.0;
constexpr double lowestNotch = 28.0;
constexpr double highestNotch = 45.0;
/// Extra width of the resting panel beside the camera housing: one ear on either side.
constexpr double restingMargin = 11.0;
constexpr double pointerMargin = 2.0;
/// Height of what is left of a notch that is a strip at rest.
constexpr double stripHeight = 4.0;

/// Written so that a value that is not a number fails.
bool isWithin(double value, double low, double high) {
    return value >= low && value <= high;
}

QSizeF measureHousing(const Screen& screen) {
    if (!screen.auxiliaryTopLeftArea || !screen.auxiliaryTopRightArea)
        return fallbackNotch;
    const double width = screen.auxiliaryTopRightArea->left() - screen.auxiliaryTopLeftArea->right();
    const double height = screen.topSafeAreaInset;
    return {isWithin(width, narrowestNotch, widestNotch) ? width : fallbackNotch.width(),
            isWithin(height, lowestNotch, highestNotch) ? height : fallbackNotch.height()};
}

bool hasHousing(const Screen& screen) {
    return screen.auxiliaryTopLeftArea || screen.auxiliaryTopRightArea || screen.topSafeAreaInset > 0.0;
}

}  // namespace

NotchGeometry::NotchGeometry(const Screen& screen, QObject* parent) : QObject(parent) {
    update(screen);
}

std::optional<Screen> NotchGeometry::chooseScreen(const ScreenProvider& provider,
                                                  const PanelPlacement& placement,
                                                  const std::optional<QPointF>& pointer) {
    const std::vector<Screen> screens = provider.screens();
    const auto isWanted = [&](const Screen& screen) {
        return placement.followsPointer ? pointer && screen.frame.contains(*pointer)
                                        : !screen.name.isEmpty() && screen.name == placement.screenName;
    };
    if (const auto wanted = std::find_if(screens.begin(), screens.end(), isWanted); wanted != screens.end())
        return *wanted;
    if (const auto notched = std::find_if(screens.begin(), screens.end(), hasHousing);
        notched != screens.end())
        return *notched;
    if (auto main = provider.mainScreen())
        return main;
    return screens.empty() ? std::nullopt : std::optional(screens.front());
}

void NotchGeometry::update(const Screen& screen) {
    screen_ = screen;
    hardwareNotchSize_ = measureHousing(screen);
    const double width = hardwareNotchSize_.width() + restingMargin;
    const double height = hardwareNotchSize_.height() + 0.5;
    idleSize_ = {width, height};
    hoverSize_ = {std::max(width + 52.0, 251.0), height};
    expandedSize_ = {std::min(std::max(screen.frame.width() - 32.0, 720.0), 940.0), 292.0};
    cameraSafeWidth_ = std::max(width + 26.0, 220.0);
    Q_EMIT changed();
}

void NotchGeometry::setPlacement(const PanelPlacement& placement) {
    if (placement == placement_)
        return;
    placement_ = placement;
    Q_EMIT changed();
}

double NotchGeometry::offset() const {
    const double room = std::max((screen_.frame.width() - expandedSize_.width()) / 2, 0.0);
    return std::clamp(placement_.offset, -room, room);
}

/// A rectangle of the given size where the panel hangs. With y upwards, QRectF's "bottom" is the larger y.
QRectF NotchGeometry::hanging(QSizeF size) const {
    const bool isBelowBar = placement_.isBelowBar && !screen_.visibleFrame.isNull();
    const double top = isBelowBar ? screen_.visibleFrame.bottom() : screen_.frame.bottom();
    return {QPointF(screen_.frame.center().x() + offset() - size.width() / 2, top - size.height()), size};
}

void NotchGeometry::setRestsWide(bool wide) {
    if (wide == restsWide_)
        return;
    restsWide_ = wide;
    Q_EMIT changed();
}

QSizeF NotchGeometry::footprint(NotchPhase phase) const {
    switch (phase) {
    case NotchPhase::idle:
        if (placement_.restingLook == RestingLook::hidden)
            return {0.0, 0.0};
        if (placement_.restingLook == RestingLook::strip)
            return {idleSize_.width(), stripHeight};
        return restsWide_ ? hoverSize_ : idleSize_;
    case NotchPhase::hovering:
        return hoverSize_;
    case NotchPhase::expanded:
        break;
    }
    return expandedSize_;
}

NotchContainerShape NotchGeometry::shape(NotchPhase phase) const {
    switch (phase) {
    case NotchPhase::idle:
        if (placement_.restingLook != RestingLook::notch)
            return {footprint(phase), 0.0, stripHeight / 2};
        // The ears take just the margin, so that the body coincides with a real camera housing.
        if (!restsWide_)
            return {idleSize_, restingMargin / 2, 11.0};
        [[fallthrough]];
    case NotchPhase::hovering:
        return {hoverSize_, 10.0, 14.0};
    case NotchPhase::expanded:
        break;
    }
    return {expandedSize_, 10.0, 26.0};
}

QRectF NotchGeometry::panelFrame() const {
    return hanging(expandedSize_);
}

QRectF NotchGeometry::interactiveRect(NotchPhase phase) const {
    if (phase == NotchPhase::expanded)
        return panelFrame().adjusted(-pointerMargin, -pointerMargin, pointerMargin, pointerMargin);
    return hanging(footprint(phase)).adjusted(0.0, 0.0, 0.0, pointerMargin);
}

bool NotchGeometry::isInteractive(QPointF location, NotchPhase phase) const {
    return interactiveRect(phase).contains(location);
}

}  // namespace kestrant
