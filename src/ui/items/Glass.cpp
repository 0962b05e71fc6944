#include "ui/items/Glass.h"

#include <QColor>

#include <algorithm>

namespace kestrant {
namespace {

/// Points from the top to the end of what is black, to where the glass begins, and to where it is lightest.
constexpr double blackEnd = 32.0;
constexpr double glassBegin = 64.0;
constexpr double glassFull = 150.0;

QColor translucent(QRgb color, double opacity) {
    QColor result(color);
    result.setAlphaF(float(opacity));
    return result;
}

}  // namespace

QGradientStops groundStops(PanelGround ground, double height) {
    QColor begin = Qt::black;
    QColor full = Qt::black;
    switch (ground) {
    case PanelGround::black:
        break;
    case PanelGround::shaded:
        begin = QColor(0x0c0d11);
        full = QColor(0x14151b);
        break;
    case PanelGround::blended:
        begin = translucent(0x0b0c10, 0.96);
        full = translucent(0x111218, 0.90);
        break;
    case PanelGround::blurred:
        begin = translucent(0x0a0b0f, 0.93);
        full = translucent(0x0e0f14, 0.84);
        break;
    }
    const auto at = [height](double y) { return std::min(1.0, y / std::max(height, glassFull)); };
    return {{0.0, Qt::black},
            {at(blackEnd), Qt::black},
            {at(glassBegin), begin},
            {at(glassFull), full},
            {1.0, full}};
}

}  // namespace kestrant
