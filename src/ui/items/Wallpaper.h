#pragma once

#include "ui/items/PaintedItem.h"

namespace kestrant {

/// A drawn desktop picture, hills below a sky, with rounded upper corners.
class Wallpaper : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// Points; 0 for square corners.
    Q_PROPERTY(double radius MEMBER radius_ NOTIFY radiusChanged)
    /// Dusk in violet, else in green.
    Q_PROPERTY(bool warm MEMBER warm_ NOTIFY warmChanged)

  public:
    explicit Wallpaper(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void radiusChanged();
    void warmChanged();

  private:
    double radius_ = 0;
    bool warm_ = true;
};

}  // namespace kestrant
