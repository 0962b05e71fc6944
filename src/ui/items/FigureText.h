#pragma once

#include "ui/items/PaintedItem.h"

#include <QColor>
#include <QFont>
#include <QString>

namespace kestrant {

/// A short text, such as a time, whose figures all take the same width, so that times stand below each other
/// digit by digit. On one line, its own height and width.
class FigureText : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text MEMBER text_ NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    Q_PROPERTY(QFont font MEMBER font_ NOTIFY changed)

  public:
    explicit FigureText(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    void measure();

    QString text_;
    QColor color_ = Qt::white;
    QFont font_;
};

}  // namespace kestrant
