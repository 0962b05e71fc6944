#include "ui/items/NotchOutline.h"

#include "notch/NotchContainerShape.h"

#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

namespace kestrant {
namespace {

/// The part of the height at which the light on the edge has faded.
constexpr double rimTop = 0.4;

}  // namespace

QPainterPath outlinePath(const NotchContainerShape& shape, double areaWidth) {
    const double width = shape.size.width();
    const double height = shape.size.height();
    const double ear = std::clamp(shape.topEarRadius, 0.0, std::min(width / 2, height));
    const double bottom = std::clamp(shape.bottomRadius, 0.0, std::min(width / 2 - ear, height - ear));
    const double left = (areaWidth - width) / 2;
    const double right = left + width;

    QPainterPath path(QPointF(left, 0));
    path.arcTo(QRectF(left - ear, 0, 2 * ear, 2 * ear), 90, -90);
    path.lineTo(left + ear, height - bottom);
    path.arcTo(QRectF(left + ear, height - 2 * bottom, 2 * bottom, 2 * bottom), 180, 90);
    path.lineTo(right - ear - bottom, height);
    path.arcTo(QRectF(right - ear - 2 * bottom, height - 2 * bottom, 2 * bottom, 2 * bottom), 270, 90);
    path.lineTo(right - ear, ear);
    path.arcTo(QRectF(right - ear, 0, 2 * ear, 2 * ear), 180, -90);
    path.closeSubpath();
    return path;
}

NotchOutline::NotchOutline(QQuickItem* parent) : PaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &NotchOutline::shapeChanged, this, [this] { update(); });
    connect(this, &NotchOutline::rimChanged, this, [this] { update(); });
}

void NotchOutline::paint(QPainter* painter) {
    const QPainterPath path = outlinePath({{shapeWidth_, shapeHeight_}, earRadius_, bottomRadius_}, width());
    painter->setRenderHint(QPainter::Antialiasing);
    if (ground_ == Black) {
        painter->fillPath(path, Qt::black);
    } else {
        QLinearGradient shade(0, 0, 0, fullHeight_);
        shade.setStops(groundStops(PanelGround(ground_), fullHeight_));
        painter->fillPath(path, shade);
    }
    // Twice the width, of which the clip leaves the inner half.
    if (borderColor_.alpha() > 0) {
        painter->setClipPath(path);
        painter->strokePath(path, QPen(borderColor_, 2));
    } else if (rim_ > 0) {
        QLinearGradient light(0, shapeHeight_ * rimTop, 0, shapeHeight_);
        light.setColorAt(0, Qt::transparent);
        light.setColorAt(1, QColor::fromRgbF(1, 1, 1, float(rim_)));
        painter->setClipPath(path);
        painter->strokePath(path, QPen(light, 2));
    }
}

}  // namespace kestrant
