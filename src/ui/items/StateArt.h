#pragma once

#include "ui/items/PaintedItem.h"

namespace kestrant {

/// The picture above the words of an empty or failed module: two cards, or two sheets of a calendar, with a
/// badge that says what is the matter.
class StateArt : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// "empty", "new", "allDone", "nothingFound", "off", "denied" or "failed".
    Q_PROPERTY(QString kind MEMBER kind_ NOTIFY kindChanged)
    /// "reminders" or "calendar".
    Q_PROPERTY(QString subject MEMBER subject_ NOTIFY subjectChanged)

  public:
    explicit StateArt(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void kindChanged();
    void subjectChanged();

  private:
    QString kind_;
    QString subject_ = QStringLiteral("reminders");
};

}  // namespace kestrant
