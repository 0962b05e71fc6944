#pragma once

#include <QQmlEngine>
#include <QQuickPaintedItem>

namespace kestrant {

/// The base of what the program paints itself: it is painted in the size in which it is shown, since the
/// renderer takes the nearest points of a picture that it scales. Derived classes name it with its namespace,
/// since the QML tools look the base up as it is written.
class PaintedItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ANONYMOUS

  protected:
    using QQuickPaintedItem::QQuickPaintedItem;

    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void updatePolish() override;
};

}  // namespace kestrant
