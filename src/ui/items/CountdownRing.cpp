#include "ui/items/CountdownRing.h"

#include <QPainter>

namespace kestrant {
namespace {

/// Points.
constexpr double lineWidth = 2.0;
/// QPainter counts angles in sixteenths of a degree, from three o'clock against the clock.
constexpr int degree = 16;

}  // namespace

CountdownRing::CountdownRing(QQuickItem* parent) : PaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &CountdownRing::changed, this, [this] { update(); });
}

void CountdownRing::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF ring =
        QRectF(0, 0, width(), height()).adjusted(lineWidth, lineWidth, -lineWidth, -lineWidth);
    QColor faint = color_;
    faint.setAlphaF(0.25F);
    painter->setPen(QPen(faint, lineWidth));
    painter->drawEllipse(ring);
    painter->setPen(QPen(color_, lineWidth, Qt::SolidLine, Qt::RoundCap));
    painter->drawArc(ring, 90 * degree, qRound(360 * remaining_) * degree);
}

}  // namespace kestrant
