#pragma once

#include "ui/items/PaintedItem.h"

#include <QColor>

namespace kestrant {

/// A dashed line around an empty place, with rounded corners. Thread: main.
class DashedFrame : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    Q_PROPERTY(double radius MEMBER radius_ NOTIFY changed)

  public:
    explicit DashedFrame(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    QColor color_ = Qt::white;
    double radius_ = 0.0;
};

}  // namespace kestrant
