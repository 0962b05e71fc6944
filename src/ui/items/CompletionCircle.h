#pragma once

#include "ui/items/PaintedItem.h"

#include <QColor>

namespace kestrant {

/// The circle of a card: a ring in its list's colour that fills, with a check mark, as `progress` goes from 0
/// to 1.
class CompletionCircle : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    Q_PROPERTY(double progress MEMBER progress_ NOTIFY changed)
    /// How far a hint of the check mark shows under the pointer, 0 to 1.
    Q_PROPERTY(double hint MEMBER hint_ NOTIFY changed)
    /// Diameter and line, in points.
    Q_PROPERTY(double diameter MEMBER diameter_ NOTIFY changed)
    Q_PROPERTY(double lineWidth MEMBER lineWidth_ NOTIFY changed)

  public:
    explicit CompletionCircle(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    QColor color_ = Qt::white;
    double progress_ = 0.0;
    double hint_ = 0.0;
    double diameter_ = 18.0;
    double lineWidth_ = 1.75;
};

}  // namespace kestrant
