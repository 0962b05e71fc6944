#pragma once

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QQuickItem>

#include <vector>

namespace kestrant {

/// A blurred copy of an area, as light from above would throw it. `blur` is the width of the soft edge in
/// points; the image covers the bounds of the path grown by `blur` on each side, at `scale` pixels a point.
[[nodiscard]] QImage shadowImage(const QPainterPath& path, double blur, const QColor& color, double scale);

/// The shadow around a rounded rectangle that fills the item: it lies outside the item, and what is below the
/// rectangle is left out. Painted once, in a size of its own, of which the corners are placed and the sides
/// stretched.
class DropShadow : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double radius MEMBER radius_ NOTIFY styleChanged)
    Q_PROPERTY(Kind kind MEMBER kind_ NOTIFY styleChanged)

  public:
    enum Kind { Popover, Panel, Notch, Toast, Card };
    Q_ENUM(Kind)

    explicit DropShadow(QQuickItem* parent = nullptr);

  Q_SIGNALS:
    void styleChanged();

  protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData*) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

  private:
    double radius_ = 16.0;
    Kind kind_ = Popover;
    bool restyled_ = true;
};

}  // namespace kestrant
