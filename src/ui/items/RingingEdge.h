#pragma once

#include "ui/items/PaintedItem.h"

#include <QColor>

namespace kestrant {

/// The edge of the resting notch while something rings, and two waves that go out from it. The item covers
/// the notch and `reach` points beside and below it. Thread: main.
class RingingEdge : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double reach MEMBER reach_ NOTIFY changed)
    Q_PROPERTY(double earRadius MEMBER earRadius_ NOTIFY changed)
    Q_PROPERTY(double bottomRadius MEMBER bottomRadius_ NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    /// How far the waves are out, 0 to 1; none are drawn at either end.
    Q_PROPERTY(double progress MEMBER progress_ NOTIFY changed)

  public:
    explicit RingingEdge(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    double reach_ = 0.0;
    double earRadius_ = 0.0;
    double bottomRadius_ = 0.0;
    QColor color_ = Qt::white;
    double progress_ = 0.0;
};

}  // namespace kestrant
