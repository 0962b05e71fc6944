#include "platform/linux/window/ScreenCoordinates.h"

#include <QGuiApplication>
#include <QScreen>

namespace kestrant {

namespace {

double lowerEdge() {
    const QScreen* primary = QGuiApplication::primaryScreen();
    return primary ? QRectF(primary->geometry()).bottom() : 0.0;
}

}  // namespace

QPointF flipped(QPointF location) {
    return {location.x(), lowerEdge() - location.y()};
}

QRectF flipped(const QRectF& rectangle) {
    return {QPointF(rectangle.left(), lowerEdge() - rectangle.bottom()), rectangle.size()};
}

}  // namespace kestrant
