#include "ui/items/CompletionCircle.h"

#include <QPainter>
#include <QPainterPath>

namespace kestrant {
namespace {

/// Perceived lightness from 0 to 1, after the luma of ITU-R BT.709.
double lightness(const QColor& color) {
    return 0.2126 * color.redF() + 0.7152 * color.greenF() + 0.0722 * color.blueF();
}

}  // namespace

CompletionCircle::CompletionCircle(QQuickItem* parent) : PaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &CompletionCircle::changed, this, [this] { update(); });
}

void CompletionCircle::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate(width() / 2, height() / 2);
    const double radius = (diameter_ - lineWidth_) / 2;
    painter->setPen(QPen(color_, lineWidth_));
    painter->setBrush(Qt::NoBrush);
    painter->drawEllipse(QPointF(), radius, radius);

    if (progress_ > 0.0) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(color_);
        const double filled = (diameter_ / 2) * progress_;
        painter->drawEllipse(QPointF(), filled, filled);
    }

    const double shown = qMax(progress_, hint_ * 0.7);
    if (shown <= 0.0)
        return;
    // The mark is centred by its weight, which lies left of and below the middle of its box.
    QPainterPath mark(QPointF(-3.6, 0.2));
    mark.lineTo(-1.1, 2.7);
    mark.lineTo(3.8, -2.8);
    QColor markColor = color_;
    if (progress_ > 0.0)
        markColor = lightness(color_) > 0.7 ? QColor(0x16, 0x16, 0x1a) : QColor(Qt::white);
    markColor.setAlphaF(float(shown));
    painter->scale(diameter_ / 18, diameter_ / 18);
    painter->strokePath(mark, QPen(markColor, 1.75, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

}  // namespace kestrant
