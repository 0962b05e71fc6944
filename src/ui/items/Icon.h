#pragma once

#include "ui/items/PaintedItem.h"

#include <QColor>

namespace kestrant {

/// One of the program's own line icons, drawn on a grid of 16 points and centred in the item. Its file is
/// SVG; colour and width of the lines are this item's.
class Icon : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// A file in resources/icons/panel, without its ending; nothing is drawn for an empty one.
    Q_PROPERTY(QString name MEMBER name_ NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    /// Points.
    Q_PROPERTY(double strokeWidth MEMBER strokeWidth_ NOTIFY changed)

  public:
    explicit Icon(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    QString name_;
    QColor color_ = Qt::white;
    double strokeWidth_ = 1.5;
};

}  // namespace kestrant
