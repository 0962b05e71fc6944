#pragma once

#include "ui/items/PaintedItem.h"

namespace kestrant {

/// A wave, a ring that closes around a tick, and paper that rises and falls about it: 26 pieces. The ring
/// stands in the middle of the upper part of the item.
class CelebrationArt : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// Of the whole, 0 to 1.
    Q_PROPERTY(double progress MEMBER progress_ NOTIFY changed)
    /// The ring and the tick alone, complete.
    Q_PROPERTY(bool still MEMBER still_ NOTIFY changed)

  public:
    explicit CelebrationArt(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    void paintPaper(QPainter& painter, QPointF middle) const;

    double progress_ = 0.0;
    bool still_ = false;
};

}  // namespace kestrant
