#pragma once

#include "ui/items/Glass.h"
#include "ui/items/PaintedItem.h"

#include <QColor>
#include <QPainterPath>

namespace kestrant {

struct NotchContainerShape;

/// The outline of a shape that hangs from the middle of the top edge of an area so many points wide.
[[nodiscard]] QPainterPath outlinePath(const NotchContainerShape& shape, double areaWidth);

/// The panel's body, joined to the top edge of the item and centred in it. What the item covers is kept
/// in memory as pixels: let it be no higher than the shape.
class NotchOutline : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double shapeWidth MEMBER shapeWidth_ NOTIFY shapeChanged)
    Q_PROPERTY(double shapeHeight MEMBER shapeHeight_ NOTIFY shapeChanged)
    Q_PROPERTY(double earRadius MEMBER earRadius_ NOTIFY shapeChanged)
    Q_PROPERTY(double bottomRadius MEMBER bottomRadius_ NOTIFY shapeChanged)
    /// The material of the body at this height; see groundStops().
    Q_PROPERTY(Ground ground MEMBER ground_ NOTIFY shapeChanged)
    Q_PROPERTY(double fullHeight MEMBER fullHeight_ NOTIFY shapeChanged)
    /// A line of one point inside the outline; transparent for none.
    Q_PROPERTY(QColor borderColor MEMBER borderColor_ NOTIFY shapeChanged)
    /// Light on the lower edge, one point inside the outline: this strong at the bottom, 0 to 1, and fading
    /// upwards.
    Q_PROPERTY(double rim MEMBER rim_ NOTIFY rimChanged)

  public:
    // As in PanelGround.
    enum Ground {
        Black = int(PanelGround::black),
        Shaded = int(PanelGround::shaded),
        Blended = int(PanelGround::blended),
        Blurred = int(PanelGround::blurred),
    };
    Q_ENUM(Ground)

    explicit NotchOutline(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void shapeChanged();
    void rimChanged();

  private:
    double shapeWidth_ = 0.0;
    double shapeHeight_ = 0.0;
    double earRadius_ = 0.0;
    double bottomRadius_ = 0.0;
    Ground ground_ = Black;
    double fullHeight_ = 0.0;
    QColor borderColor_ = Qt::transparent;
    double rim_ = 0.0;
};

}  // namespace kestrant
