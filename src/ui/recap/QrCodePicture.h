#pragma once

#include "recap/QrCode.h"
#include "ui/items/PaintedItem.h"

#include <QString>

#include <optional>

namespace kestrant {

/// A text as a QR code, dark on white with its quiet zone, in whole pixels as large as the item allows.
class QrCodePicture : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY changed)

  public:
    explicit QrCodePicture(QQuickItem* parent = nullptr);

    [[nodiscard]] const QString& text() const { return text_; }
    void setText(const QString& text);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    QString text_;
    std::optional<QrCode> code_;
};

}  // namespace kestrant
