#include "ui/recap/QrCodePicture.h"

#include <QPainter>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>

namespace kestrant {
namespace {

/// Light modules on each side (ISO/IEC 18004).
constexpr int quietZone = 4;

}  // namespace

QrCodePicture::QrCodePicture(QQuickItem* parent) : PaintedItem(parent) {
    connect(this, &QrCodePicture::changed, this, [this] { update(); });
}

void QrCodePicture::setText(const QString& text) {
    if (text == text_)
        return;
    text_ = text;
    code_ = qrCodeOf(text.toUtf8());
    Q_EMIT changed();
}

void QrCodePicture::paint(QPainter* painter) {
    painter->fillRect(boundingRect(), Qt::white);
    if (!code_)
        return;
    const double scale = window() ? window()->effectiveDevicePixelRatio() : 1.0;
    const double room = std::min(width(), height()) * scale;
    const double module = std::max(1.0, std::floor(room / (code_->size + 2 * quietZone))) / scale;
    const auto begin = [&](double side) {
        return std::floor((side - code_->size * module) / 2 * scale) / scale;
    };
    const QPointF corner(begin(width()), begin(height()));
    for (int row = 0; row < code_->size; ++row) {
        for (int column = 0; column < code_->size; ++column) {
            if (code_->isDark(row, column))
                painter->fillRect(QRectF(corner + QPointF(column, row) * module, QSizeF(module, module)),
                                  Qt::black);
        }
    }
}

}  // namespace kestrant
