#include "notch/NotchContainerShape.h"

#include <algorithm>
#include <cmath>

namespace kestrant {

double insetAtDepth(const NotchContainerShape& shape, double y) {
    const double width = shape.size.width();
    const double height = shape.size.height();
    const double ear = std::clamp(shape.topEarRadius, 0.0, std::min(width / 2, height));
    const double bottom = std::clamp(shape.bottomRadius, 0.0, std::min(width / 2 - ear, height - ear));

    if (y < ear)
        return std::sqrt(ear * ear - (ear - y) * (ear - y));
    const double intoCorner = y - (height - bottom);
    if (intoCorner > 0.0) {
        const double reach = std::min(intoCorner, bottom);
        return ear + bottom - std::sqrt(bottom * bottom - reach * reach);
    }
    return ear;
}

namespace {

/// The pixels whose centres lie in a frame, given in points, whose sides are `inset(y)` further in at the
/// depth y below its top.
template <typename Inset>
std::vector<QRect> rowsOfPixels(const QRectF& frame, double scale, const Inset& inset) {
    std::vector<QRect> rectangles;
    const int end = static_cast<int>(std::floor(frame.bottom() * scale + 0.5));
    for (int row = static_cast<int>(std::ceil(frame.top() * scale - 0.5)); row < end; ++row) {
        const double cut = inset((row + 0.5) / scale - frame.top());
        const int left = static_cast<int>(std::ceil((frame.left() + cut) * scale - 0.5));
        const int right = static_cast<int>(std::ceil((frame.right() - cut) * scale - 0.5));
        if (right <= left)
            continue;
        if (!rectangles.empty() && rectangles.back().left() == left &&
            rectangles.back().right() == right - 1 && rectangles.back().bottom() == row - 1)
            rectangles.back().setBottom(row);
        else
            rectangles.emplace_back(left, row, right - left, 1);
    }
    return rectangles;
}

}  // namespace

std::vector<QRect> pixelRectangles(const NotchContainerShape& shape, double windowWidth, double scale) {
    const QRectF frame(QPointF((windowWidth - shape.size.width()) / 2, 0), shape.size);
    return rowsOfPixels(frame, scale, [&shape](double y) { return insetAtDepth(shape, y); });
}

std::vector<QRect> roundedPixelRectangles(const QRectF& frame, double cornerRadius, double scale) {
    const double radius = std::clamp(cornerRadius, 0.0, std::min(frame.width(), frame.height()) / 2);
    return rowsOfPixels(frame, scale, [&frame, radius](double y) {
        const double reach = std::max({radius - y, radius - (frame.height() - y), 0.0});
        return radius - std::sqrt(radius * radius - reach * reach);
    });
}

}  // namespace kestrant
