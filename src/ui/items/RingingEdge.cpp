#include "ui/items/RingingEdge.h"

#include "notch/NotchContainerShape.h"
#include "ui/items/NotchOutline.h"

#include <QPainter>

namespace kestrant {
namespace {

constexpr double edgeWidth = 2.0;
constexpr double waveWidth = 1.5;
/// How far the second wave is behind the first, of the whole way.
constexpr double lag = 0.35;

}  // namespace

RingingEdge::RingingEdge(QQuickItem* parent) : PaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &RingingEdge::changed, this, [this] { update(); });
}

void RingingEdge::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    const QSizeF notch(width() - 2 * reach_, height() - reach_);
    // The body between the ears, its upper end beyond the edge of the screen, where nothing is drawn.
    const auto stroke = [&](double distance, double lineWidth, double strength) {
        QRectF body(reach_ + earRadius_, -40, notch.width() - 2 * earRadius_, notch.height() + 40);
        body.adjust(-distance, 0, distance, distance);
        QColor color = color_;
        color.setAlphaF(float(strength));
        painter->setPen(QPen(color, lineWidth));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(body, bottomRadius_ + distance, bottomRadius_ + distance);
    };
    stroke(-edgeWidth / 2, edgeWidth, 1.0);
    for (const double behind : {0.0, lag}) {
        const double way = (progress_ - behind) / (1.0 - lag);
        if (way > 0.0 && way < 1.0)
            stroke(way * (reach_ - waveWidth), waveWidth, 0.7 * (1.0 - way));
    }
}

}  // namespace kestrant
