#include "ui/recap/RecapChart.h"

#include "ui/recap/RecapPainting.h"

#include <QPainter>
#include <QPainterPath>

namespace kestrant {

RecapChart::RecapChart(QQuickItem* parent) : PaintedItem(parent) {
    connect(this, &RecapChart::changed, this, [this] { update(); });
}

void RecapChart::setCard(const RecapCard& card) {
    card_ = card;
    Q_EMIT changed();
}

int RecapChart::dayAt(double x, double y) const {
    return recapDayAt(boundingRect(), card_, compact_, {x, y});
}

QRectF RecapChart::frameOf(int day) const {
    return recapDayFrame(boundingRect(), card_, compact_, day);
}

void RecapChart::paint(QPainter* painter) {
    paintRecapChart(*painter, boundingRect(), card_,
                    {.isCompact = compact_,
                     .highContrast = contrast_,
                     .progress = progress_,
                     .current = current_,
                     .textScale = textScale_});
}

RecapPicture::RecapPicture(QQuickItem* parent) : PaintedItem(parent) {
    setImplicitSize(recapPictureSize.width(), recapPictureSize.height());
    connect(this, &RecapPicture::changed, this, [this] { update(); });
}

void RecapPicture::setCard(const RecapCard& card) {
    card_ = card;
    Q_EMIT changed();
}

void RecapPicture::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    QPainterPath outline;
    outline.addRoundedRect(boundingRect(), 14, 14);
    painter->setClipPath(outline);
    const double scale = width() / recapPictureSize.width();
    painter->scale(scale, scale);
    paintRecapPicture(*painter, card_);
}

}  // namespace kestrant
