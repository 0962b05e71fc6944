#pragma once

#include <QRect>
#include <QRectF>
#include <QSizeF>

#include <vector>

namespace kestrant {

/// The panel's outline: joined to the top edge of the screen with a concave ear at each top corner, rounded
/// at the bottom. The ears lie inside the width, so the body is 2 · topEarRadius narrower than the shape.
/// Points.
struct NotchContainerShape {
    QSizeF size;
    double topEarRadius = 0.0;
    double bottomRadius = 0.0;

    bool operator==(const NotchContainerShape&) const = default;
};

/// How far the outline lies inside the shape's left and right edges at depth `y` below the top edge, in
/// points. Quarter circles: the ear's centre lies on the shape's side edge at depth topEarRadius, the bottom
/// corner's inside the body. Radii larger than the shape allows are limited to it.
[[nodiscard]] double insetAtDepth(const NotchContainerShape& shape, double y);

/// The pixels whose centres lie in the shape, as rectangles of equal rows from top to bottom, when the shape
/// hangs from the middle of the top edge of a window `windowWidth` points wide that is drawn with `scale`
/// pixels per point.
[[nodiscard]] std::vector<QRect> pixelRectangles(const NotchContainerShape& shape, double windowWidth,
                                                 double scale);

/// The same for a rectangle with rounded corners, in the points of the window it is drawn in.
[[nodiscard]] std::vector<QRect> roundedPixelRectangles(const QRectF& frame, double cornerRadius,
                                                        double scale);

}  // namespace kestrant
