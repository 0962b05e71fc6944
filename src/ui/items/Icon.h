#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace kestrant {

/// One of the program's own line icons, drawn on a grid of 16 points and centred in the item.
class Icon : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// "search", "sort", "plus", "settings", "calendar", "chevronDown", "chevronLeft", "chevronRight",
    /// "check", "close", "flag", "repeat", "today", "overdue", "trash", "circle", "list",
    /// "calendarMinus", "arrowRight". Nothing is drawn for any other.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    /// Points.
    Q_PROPERTY(double strokeWidth READ strokeWidth WRITE setStrokeWidth NOTIFY strokeWidthChanged)

  public:
    explicit Icon(QQuickItem* parent = nullptr);

    [[nodiscard]] const QString& name() const { return name_; }
    void setName(const QString& name);
    [[nodiscard]] const QColor& color() const { return color_; }
    void setColor(const QColor& color);
    [[nodiscard]] double strokeWidth() const { return strokeWidth_; }
    void setStrokeWidth(double width);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void nameChanged();
    void colorChanged();
    void strokeWidthChanged();

  private:
    QString name_;
    QColor color_ = Qt::white;
    double strokeWidth_ = 1.5;
};

}  // namespace kestrant
