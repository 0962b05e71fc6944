#pragma once

#include <QQuickPaintedItem>

namespace kestrant {

/// The picture above the words of an empty or failed module: two cards with a badge that says what is the
/// matter.
class StateArt : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// "empty", "allDone", "nothingFound", "denied" or "failed".
    Q_PROPERTY(QString kind MEMBER kind_ NOTIFY kindChanged)

  public:
    explicit StateArt(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void kindChanged();

  private:
    QString kind_;
};

}  // namespace kestrant
