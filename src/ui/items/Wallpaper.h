#pragma once

#include <QQuickPaintedItem>

namespace kestrant {

/// A drawn desktop picture with rounded upper corners.
class Wallpaper : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// Points; 0 for square corners.
    Q_PROPERTY(double radius MEMBER radius_ NOTIFY radiusChanged)

  public:
    explicit Wallpaper(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void radiusChanged();

  private:
    double radius_ = 0;
};

}  // namespace kestrant
