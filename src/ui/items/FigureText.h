#pragma once

#include <QColor>
#include <QFont>
#include <QQuickPaintedItem>
#include <QString>

namespace kestrant {

/// A short text, such as a time, whose figures all take the same width, so that times stand below each other
/// digit by digit. On one line, its own height and width.
class FigureText : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(QFont font READ font WRITE setFont NOTIFY fontChanged)

  public:
    explicit FigureText(QQuickItem* parent = nullptr);

    [[nodiscard]] const QString& text() const { return text_; }
    void setText(const QString& text);
    [[nodiscard]] const QColor& color() const { return color_; }
    void setColor(const QColor& color);
    [[nodiscard]] const QFont& font() const { return font_; }
    void setFont(const QFont& font);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void textChanged();
    void colorChanged();
    void fontChanged();

  private:
    void measure();

    QString text_;
    QColor color_ = Qt::white;
    QFont font_;
};

}  // namespace kestrant
