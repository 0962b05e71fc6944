#include "ui/items/DropShadow.h"

#include <QPainter>

#include <cmath>
#include <vector>

namespace kestrant {
namespace {

/// One running mean over `radius` pixels on either side, along lines of `length` pixels that lie `step` bytes
/// apart.
void boxBlur(uchar* line, int length, qsizetype step, int radius, std::vector<uchar>& buffer) {
    const int window = 2 * radius + 1;
    buffer.resize(size_t(length));
    for (int i = 0; i < length; ++i)
        buffer[size_t(i)] = line[i * step];
    int sum = 0;
    for (int i = 0; i <= radius && i < length; ++i)
        sum += buffer[size_t(i)];
    for (int i = 0; i < length; ++i) {
        line[i * step] = uchar((sum + window / 2) / window);
        if (i + radius + 1 < length)
            sum += buffer[size_t(i + radius + 1)];
        if (i - radius >= 0)
            sum -= buffer[size_t(i - radius)];
    }
}

}  // namespace

QImage shadowImage(const QPainterPath& path, double blur, const QColor& color, double scale) {
    const QRectF bounds = path.boundingRect().adjusted(-blur, -blur, blur, blur);
    QImage mask((bounds.size() * scale).toSize(), QImage::Format_Alpha8);
    mask.fill(0);
    QPainter painter(&mask);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.translate(-bounds.topLeft());
    painter.fillPath(path, Qt::black);
    painter.end();

    // Three means in a row come close to a bell curve; its deviation is half the blur's width, and the
    // deviation of a mean over n pixels is sqrt((n² - 1) / 12).
    const double deviation = blur * scale / 2;
    const int radius = int(std::lround((std::sqrt(deviation * deviation * 4 + 1) - 1) / 2));
    std::vector<uchar> buffer;
    for (int pass = 0; pass < 3 && radius > 0; ++pass) {
        for (int y = 0; y < mask.height(); ++y)
            boxBlur(mask.scanLine(y), mask.width(), 1, radius, buffer);
        for (int x = 0; x < mask.width(); ++x)
            boxBlur(mask.bits() + x, mask.height(), mask.bytesPerLine(), radius, buffer);
    }

    QImage shadow(mask.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < mask.height(); ++y) {
        const uchar* from = mask.constScanLine(y);
        auto* to = reinterpret_cast<QRgb*>(shadow.scanLine(y));
        for (int x = 0; x < mask.width(); ++x)
            to[x] =
                qPremultiply(qRgba(color.red(), color.green(), color.blue(), from[x] * color.alpha() / 255));
    }
    return shadow;
}

DropShadow::DropShadow(QQuickItem* parent) : QQuickPaintedItem(parent) {
    connect(this, &DropShadow::changed, this, [this] { update(); });
}

void DropShadow::paint(QPainter* painter) {
    const QRectF body(marginLeft_, marginTop_, width() - 2 * marginLeft_,
                      height() - marginTop_ - marginBottom_);
    if (body.isEmpty())
        return;
    QPainterPath path;
    path.addRoundedRect(body.translated(0, offset_), radius_, radius_);
    const QRectF bounds = path.boundingRect().adjusted(-blur_, -blur_, blur_, blur_);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    // A shadow is soft enough to be drawn at the coarsest scale.
    painter->drawImage(bounds, shadowImage(path, blur_, color_, 1.0));
}

}  // namespace kestrant
