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

std::vector<QRect> pixelRectangles(const NotchContainerShape& shape, double windowWidth, double scale) {
    std::vector<QRect> rectangles;
    const double left = (windowWidth - shape.size.width()) / 2;
    const double right = left + shape.size.width();
    const int rows = static_cast<int>(std::floor(shape.size.height() * scale + 0.5));
    for (int row = 0; row < rows; ++row) {
        const double inset = insetAtDepth(shape, (row + 0.5) / scale);
        const int first = static_cast<int>(std::ceil((left + inset) * scale - 0.5));
        const int end = static_cast<int>(std::ceil((right - inset) * scale - 0.5));
        if (end <= first)
            continue;
        if (!rectangles.empty() && rectangles.back().left() == first &&
            rectangles.back().right() == end - 1 && rectangles.back().bottom() == row - 1)
            rectangles.back().setBottom(row);
        else
            rectangles.emplace_back(first, row, end - first, 1);
    }
    return rectangles;
}

}  // namespace kestrant
