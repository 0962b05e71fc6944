#include "ui/items/PaintedItem.h"

#include <QTransform>

#include <cmath>

namespace kestrant {

void PaintedItem::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickPaintedItem::itemChange(change, data);
    if (change == ItemSceneChange && data.window)
        polish();
}

void PaintedItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickPaintedItem::geometryChange(now, before);
    polish();
}

void PaintedItem::updatePolish() {
    const QTransform toScene = itemTransform(nullptr, nullptr);
    const double scale = std::hypot(toScene.m11(), toScene.m12());
    const bool isScaled = std::abs(scale - 1.0) > 0.001;
    setTextureSize(isScaled ? (size() * scale).toSize() : QSize());
}

}  // namespace kestrant
