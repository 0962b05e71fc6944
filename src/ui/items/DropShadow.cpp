#include "ui/items/DropShadow.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGNode>
#include <QSGTexture>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>
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
            sum += buffer[size_t(i) + size_t(radius) + 1];
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

namespace {

/// Points.
struct Layer {
    double offset;
    double blur;
    double opacity;
};

const std::vector<Layer>& layersOf(DropShadow::Kind kind) {
    static const std::vector<Layer> popover{{2, 6, 0.28}, {20, 48, 0.44}};
    static const std::vector<Layer> panel{{2, 6, 0.30}, {8, 20, 0.22}, {24, 56, 0.46}};
    static const std::vector<Layer> notch{{1, 3, 0.35}, {6, 18, 0.28}};
    static const std::vector<Layer> toast{{12, 32, 0.44}};
    static const std::vector<Layer> card{{10, 24, 0.44}};
    switch (kind) {
    case DropShadow::Panel:
        return panel;
    case DropShadow::Notch:
        return notch;
    case DropShadow::Toast:
        return toast;
    case DropShadow::Card:
        return card;
    case DropShadow::Popover:
        break;
    }
    return popover;
}

/// The picture of the shadow of a square, or of a rectangle as wide and less high, and where its parts meet.
/// Points.
struct Template {
    QImage image;
    QMarginsF around;
    /// How far from its corners into the rectangle a shadow depends on both sides.
    double corner = 0.0;
    double height = 0.0;
};

/// `height` is that of the rectangle for which it is wanted: one that is so low that its lower edge matters
/// above its middle needs a picture of its own.
Template makeTemplate(const std::vector<Layer>& layers, double radius, double height, double scale) {
    Template result;
    double blur = 0.0;
    for (const Layer& layer : layers) {
        blur = std::max(blur, layer.blur);
        result.around = QMarginsF(blur, std::max(result.around.top(), layer.blur - layer.offset), blur,
                                  std::max(result.around.bottom(), layer.blur + layer.offset));
    }
    result.corner = std::ceil(radius + blur);
    const double length = 2 * result.corner + 1;
    result.height = std::min(length, height);
    const QRectF body(0, 0, length, result.height);
    const QRectF area = body.marginsAdded(result.around);
    result.image = QImage((area.size() * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    result.image.fill(Qt::transparent);
    QPainter painter(&result.image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.scale(scale, scale);
    painter.translate(-area.topLeft());
    for (const Layer& layer : layers) {
        QPainterPath path;
        path.addRoundedRect(body.translated(0, layer.offset), radius, radius);
        // A very soft shadow looks the same at a lower resolution, and is drawn much faster.
        const double coarse = std::min(scale, 16.0 / layer.blur);
        painter.drawImage(
            path.boundingRect().marginsAdded({layer.blur, layer.blur, layer.blur, layer.blur}),
            shadowImage(path, layer.blur, QColor::fromRgbF(0, 0, 0, float(layer.opacity)), coarse));
    }
    // The shadow is left out below the body, which may be translucent, but for half a point, so that no seam
    // shows.
    constexpr double overlap = 0.5;
    QPainterPath inside;
    inside.addRoundedRect(body.adjusted(overlap, overlap, -overlap, -overlap), radius, radius);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(inside, Qt::black);
    return result;
}

/// Four corners and four sides that share one picture.
class ShadowNode : public QSGNode {
  public:
    ShadowNode(QQuickWindow& window, const Template& source, double scale)
        : source_(source)
        , scale_(scale)
        , texture_(window.createTextureFromImage(source.image)) {
        source_.image = {};
        for (QSGImageNode*& part : parts_) {
            part = window.createImageNode();
            part->setTexture(texture_.get());
            part->setOwnsTexture(false);
            appendChildNode(part);
        }
    }

    [[nodiscard]] bool fits(double height) const {
        return std::min(2 * source_.corner + 1, height) == source_.height;
    }
    void layOut(QSizeF size) {
        // Where the parts meet, in the item and in the picture.
        const QMarginsF& around = source_.around;
        const double length = 2 * source_.corner + 1;
        const double height = source_.height;
        const double across = std::min(source_.corner, size.width() / 2);
        const double down = std::min(source_.corner, size.height() / 2);
        const double x[] = {-around.left(), across, size.width() - across, size.width() + around.right()};
        const double y[] = {-around.top(), down, size.height() - down, size.height() + around.bottom()};
        const double fromX[] = {0, around.left() + across, around.left() + length - across,
                                around.left() + length + around.right()};
        const double fromY[] = {0, around.top() + down, around.top() + height - down,
                                around.top() + height + around.bottom()};
        const double middleX = around.left() + source_.corner;
        const double middleY = around.top() + height / 2;
        int part = 0;
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                if (row == 1 && column == 1)
                    continue;
                QRectF to(QPointF(x[column], y[row]), QPointF(x[column + 1], y[row + 1]));
                QRectF from(QPointF(fromX[column], fromY[row]), QPointF(fromX[column + 1], fromY[row + 1]));
                // A side is one row or column of the picture, and no more of it than lies outside.
                if (column == 1)
                    from = QRectF(middleX, from.y(), 1, row == 0 ? around.top() : around.bottom());
                if (row == 1)
                    from = QRectF(from.x(), middleY, column == 0 ? around.left() : around.right(), 1);
                if (column == 1 && row == 0)
                    to.setBottom(0);
                if (column == 1 && row == 2) {
                    from.moveTop(around.top() + height);
                    to.setTop(size.height());
                }
                if (row == 1 && column == 0)
                    to.setRight(0);
                if (row == 1 && column == 2) {
                    from.moveLeft(around.left() + length);
                    to.setLeft(size.width());
                }
                parts_[part]->setRect(to);
                parts_[part]->setSourceRect(QRectF(from.topLeft() * scale_, from.size() * scale_));
                ++part;
            }
        }
    }

  private:
    Template source_;
    double scale_;
    std::unique_ptr<QSGTexture> texture_;
    std::array<QSGImageNode*, 8> parts_{};
};

}  // namespace

DropShadow::DropShadow(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    connect(this, &DropShadow::styleChanged, this, [this] {
        restyled_ = true;
        update();
    });
}

void DropShadow::itemChange(ItemChange change, const ItemChangeData& data) {
    if (change == ItemDevicePixelRatioHasChanged)
        Q_EMIT styleChanged();
    QQuickItem::itemChange(change, data);
}

void DropShadow::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size())
        update();
}

QSGNode* DropShadow::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
    auto* shadow = static_cast<ShadowNode*>(node);
    if (std::exchange(restyled_, false) || !shadow || !shadow->fits(height())) {
        delete shadow;
        const double scale = window()->effectiveDevicePixelRatio();
        shadow = new ShadowNode(*window(), makeTemplate(layersOf(kind_), radius_, height(), scale), scale);
    }
    shadow->layOut(size());
    return shadow;
}

}  // namespace kestrant
