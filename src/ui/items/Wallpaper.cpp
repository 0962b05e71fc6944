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
    sky.setColorAt(0, QColor(0x22, 0x2a, 0x52));
    sky.setColorAt(0.5, QColor(0x3c, 0x54, 0x86));
    sky.setColorAt(0.8, QColor(0x6f, 0x84, 0xa8));
    sky.setColorAt(1, QColor(0xc2, 0x9f, 0x9a));
    QPainterPath path;
    // The lower corners lie outside and are cut off by the item's edge.
    path.addRoundedRect(QRectF(0, 0, width(), height() + radius_), radius_, radius_);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setClipRect(QRectF(0, 0, width(), height()));
    painter->fillPath(path, sky);
}

}  // namespace kestrant
