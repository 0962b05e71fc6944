#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace kestrant {

/// One of the program's own line icons, drawn on a grid of 16 points and centred in the item.
class Icon : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// One of those that Icon.cpp lists; nothing is drawn for any other.
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
