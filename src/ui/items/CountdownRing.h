#pragma once

#include "ui/items/PaintedItem.h"

#include <QColor>

namespace kestrant {

/// A ring that empties clockwise as `remaining` goes from 1 to 0.
class CountdownRing : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    Q_PROPERTY(double remaining MEMBER remaining_ NOTIFY changed)

  public:
    explicit CountdownRing(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    QColor color_ = Qt::white;
    double remaining_ = 1.0;
};

}  // namespace kestrant
