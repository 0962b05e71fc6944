#include "ui/items/Wallpaper.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <array>

namespace kestrant {
namespace {

/// The area below a line through evenly spaced heights, given as fractions of the picture's height.
QPainterPath hill(QSizeF size, const std::array<double, 7>& heights) {
    const auto at = [&](std::size_t index) {
        return QPointF(size.width() * double(index) / double(heights.size() - 1),
                       size.height() * heights.at(index));
    };
    QPainterPath path(at(0));
    for (std::size_t index = 1; index < heights.size(); ++index) {
        const QPointF from = at(index - 1);
        const QPointF to = at(index);
        const double middle = (from.x() + to.x()) / 2;
        path.cubicTo(QPointF(middle, from.y()), QPointF(middle, to.y()), to);
    }
    path.lineTo(size.width(), size.height());
    path.lineTo(0, size.height());
    path.closeSubpath();
    return path;
}

}  // namespace

Wallpaper::Wallpaper(QQuickItem* parent) : PaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &Wallpaper::radiusChanged, this, [this] { update(); });
    connect(this, &Wallpaper::warmChanged, this, [this] { update(); });
}

void Wallpaper::paint(QPainter* painter) {
    QLinearGradient sky(0, 0, width(), height());
    sky.setColorAt(0, warm_ ? QColor(0x38, 0x44, 0x7a) : QColor(0x54, 0x8d, 0x8c));
    sky.setColorAt(0.45, warm_ ? QColor(0x72, 0x6a, 0x96) : QColor(0x86, 0xa8, 0x9a));
    sky.setColorAt(0.75, warm_ ? QColor(0xc9, 0x9f, 0x9c) : QColor(0xb9, 0xc4, 0xa4));
    sky.setColorAt(1, warm_ ? QColor(0xe9, 0xba, 0x9a) : QColor(0x74, 0xaa, 0x9a));
    QPainterPath path;
    // The lower corners lie outside and are cut off by the item's edge.
    path.addRoundedRect(QRectF(0, 0, width(), height() + radius_), radius_, radius_);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setClipRect(QRectF(0, 0, width(), height()));
    painter->fillPath(path, sky);
    painter->fillPath(hill(size(), {0.82, 0.78, 0.64, 0.68, 0.66, 0.63, 0.79}),
                      warm_ ? QColor(0x6c, 0x67, 0x9b) : QColor(0x56, 0x8c, 0x88));
    painter->fillPath(hill(size(), {1.1, 1.02, 0.88, 0.92, 0.9, 0.8, 0.97}),
                      warm_ ? QColor(0x4a, 0x48, 0x79) : QColor(0x2d, 0x66, 0x6c));
}

}  // namespace kestrant
