#pragma once

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QQuickPaintedItem>

namespace kestrant {

/// A blurred copy of an area, as light from above would throw it. `blur` is the width of the soft edge in
/// points; the image covers the bounds of the path grown by `blur` on each side, at `scale` pixels a point.
[[nodiscard]] QImage shadowImage(const QPainterPath& path, double blur, const QColor& color, double scale);

/// The shadow of a rounded rectangle that fills the item without its margin.
class DropShadow : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double radius MEMBER radius_ NOTIFY changed)
    Q_PROPERTY(double blur MEMBER blur_ NOTIFY changed)
    /// How far the shadow lies below, in points.
    Q_PROPERTY(double offset MEMBER offset_ NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    /// Space that the item has around the rectangle.
    Q_PROPERTY(double marginLeft MEMBER marginLeft_ NOTIFY changed)
    Q_PROPERTY(double marginTop MEMBER marginTop_ NOTIFY changed)
    Q_PROPERTY(double marginBottom MEMBER marginBottom_ NOTIFY changed)

  public:
    explicit DropShadow(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    double radius_ = 16.0;
    double blur_ = 44.0;
    double offset_ = 16.0;
    QColor color_ = QColor(0, 0, 0, 107);
    double marginLeft_ = 44.0;
    double marginTop_ = 28.0;
    double marginBottom_ = 60.0;
};

}  // namespace kestrant
