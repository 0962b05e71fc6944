#include "ui/items/Wallpaper.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace kestrant {

Wallpaper::Wallpaper(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &Wallpaper::radiusChanged, this, [this] { update(); });
}

void Wallpaper::paint(QPainter* painter) {
    QLinearGradient sky(0, 0, width(), height());
    sky.setColorAt(0, QColor(0x2b, 0x35, 0x66));
    sky.setColorAt(0.45, QColor(0x4f, 0x71, 0x89));
    sky.setColorAt(0.75, QColor(0x62, 0x97, 0x96));
    sky.setColorAt(1, QColor(0xb8, 0xb2, 0x7c));
    QPainterPath path;
    // The lower corners lie outside and are cut off by the item's edge.
    path.addRoundedRect(QRectF(0, 0, width(), height() + radius_), radius_, radius_);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setClipRect(QRectF(0, 0, width(), height()));
    painter->fillPath(path, sky);
}

}  // namespace kestrant
