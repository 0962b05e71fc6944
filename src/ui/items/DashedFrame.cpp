#include "ui/items/DashedFrame.h"

#include <QPainter>

namespace kestrant {
namespace {

constexpr double lineWidth = 1.25;
/// Lengths of a dash and of the gap behind it, in widths of the line.
const QList<qreal> pattern{4.0, 3.5};

}  // namespace

DashedFrame::DashedFrame(QQuickItem* parent) : PaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &DashedFrame::changed, this, [this] { update(); });
}

void DashedFrame::paint(QPainter* painter) {
    QPen pen(color_, lineWidth);
    pen.setDashPattern(pattern);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(pen);
    constexpr double half = lineWidth / 2;
    painter->drawRoundedRect(boundingRect().adjusted(half, half, -half, -half), radius_ - half,
                             radius_ - half);
}

}  // namespace kestrant
