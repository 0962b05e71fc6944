#include "ui/items/StateArt.h"

#include <QPainter>
#include <QPainterPath>

namespace kestrant {
namespace {

constexpr QSizeF cardSize(92, 46);
constexpr QSizeF sheetSize(68, 58);
constexpr double badgeRadius = 15.0;

void drawCard(QPainter& painter, double angle, int lightness, bool written) {
    painter.save();
    painter.rotate(angle);
    const QRectF card(QPointF(-cardSize.width() / 2, -cardSize.height() / 2), cardSize);
    // Opaque, so that the card behind does not shine through.
    painter.setBrush(QColor(lightness, lightness, lightness + 4));
    painter.setPen(QPen(QColor(255, 255, 255, 26), 1));
    painter.drawRoundedRect(card, 11, 11);
    if (written) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(0x5a, 0x5c, 0x66), 1.75));
        painter.drawEllipse(QPointF(card.left() + 17, card.top() + 17), 6.5, 6.5);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, 40));
        painter.drawRoundedRect(QRectF(card.left() + 32, card.top() + 12, 42, 5), 2.5, 2.5);
        painter.setBrush(QColor(255, 255, 255, 22));
        painter.drawRoundedRect(QRectF(card.left() + 32, card.top() + 23, 28, 5), 2.5, 2.5);
    }
    painter.restore();
}

/// A sheet of a calendar: its head, and the days of three weeks.
void drawSheet(QPainter& painter, double angle, int lightness, bool written) {
    painter.save();
    painter.rotate(angle);
    const QRectF sheet(QPointF(-sheetSize.width() / 2, -sheetSize.height() / 2), sheetSize);
    painter.setBrush(QColor(lightness, lightness, lightness + 4));
    painter.setPen(QPen(QColor(255, 255, 255, 26), 1));
    painter.drawRoundedRect(sheet, 11, 11);
    if (written) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, 40));
        painter.drawRoundedRect(QRectF(sheet.left() + 10, sheet.top() + 9, 26, 5), 2.5, 2.5);
        for (int week = 0; week < 3; ++week) {
            for (int day = 0; day < 5; ++day) {
                const bool isToday = week == 1 && day == 1;
                painter.setBrush(isToday ? QColor(0x5a, 0xc8, 0xfa) : QColor(255, 255, 255, 24));
                painter.drawRoundedRect(
                    QRectF(sheet.left() + 10 + day * 10.5, sheet.top() + 21 + week * 11.0, 7, 7), 2, 2);
            }
        }
    }
    painter.restore();
}

QColor badgeColor(const QString& kind) {
    if (kind == QLatin1String("nothingFound") || kind == QLatin1String("new"))
        return {0x0a, 0x84, 0xff};
    if (kind == QLatin1String("off"))
        return {0xa3, 0xa5, 0xaf};
    if (kind == QLatin1String("denied"))
        return {0xff, 0x9f, 0x0a};
    if (kind == QLatin1String("failed"))
        return {0xff, 0x69, 0x61};
    return {0x30, 0xd1, 0x58};
}

/// The sign on the badge, around its middle.
void drawSign(QPainter& painter, const QString& kind, const QColor& color) {
    const QPen pen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    if (kind == QLatin1String("nothingFound")) {
        painter.drawEllipse(QPointF(-1.2, -1.2), 4.6, 4.6);
        painter.drawLine(QPointF(2.4, 2.4), QPointF(5.6, 5.6));
    } else if (kind == QLatin1String("new")) {
        painter.drawLine(QPointF(-5, 0), QPointF(5, 0));
        painter.drawLine(QPointF(0, -5), QPointF(0, 5));
    } else if (kind == QLatin1String("off")) {
        // A switch that is off.
        painter.drawRoundedRect(QRectF(-7, -4, 14, 8), 4, 4);
        painter.setBrush(color);
        painter.drawEllipse(QPointF(-3, 0), 1.2, 1.2);
    } else if (kind == QLatin1String("denied")) {
        QPainterPath bow(QPointF(-3.2, -0.5));
        bow.lineTo(-3.2, -3);
        bow.arcTo(QRectF(-3.2, -6.2, 6.4, 6.4), 180, -180);
        bow.lineTo(3.2, -0.5);
        painter.drawPath(bow);
        painter.setBrush(color);
        painter.drawRoundedRect(QRectF(-4.6, -0.5, 9.2, 6.2), 1.2, 1.2);
    } else if (kind == QLatin1String("failed")) {
        painter.drawLine(QPointF(0, -5.5), QPointF(0, 1.2));
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawEllipse(QPointF(0, 5.2), 1.4, 1.4);
    } else {
        QPainterPath mark(QPointF(-5, 0.4));
        mark.lineTo(-1.5, 3.9);
        mark.lineTo(5.2, -3.8);
        painter.drawPath(mark);
    }
}

}  // namespace

StateArt::StateArt(QQuickItem* parent) : PaintedItem(parent) {
    setImplicitSize(132, 84);
    setAntialiasing(true);
    connect(this, &StateArt::kindChanged, this, [this] { update(); });
    connect(this, &StateArt::subjectChanged, this, [this] { update(); });
}

void StateArt::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate(width() / 2, height() / 2);
    const bool isCalendar = subject_ == QLatin1String("calendar");
    const auto draw = isCalendar ? drawSheet : drawCard;
    draw(*painter, -7, 0x17, false);
    painter->translate(0, 4);
    draw(*painter, 3, 0x22, true);

    const QSizeF size = isCalendar ? sheetSize : cardSize;
    painter->translate(size.width() / 2 - 8, size.height() / 2 - 6);
    const QColor color = badgeColor(kind_);
    painter->setPen(Qt::NoPen);
    // A rim in the panel's own colour sets the badge off from the card.
    painter->setBrush(QColor(0x0c, 0x0d, 0x11));
    painter->drawEllipse(QPointF(), badgeRadius + 3, badgeRadius + 3);
    painter->setBrush(QColor(color.red() / 5 + 8, color.green() / 5 + 8, color.blue() / 5 + 8));
    painter->drawEllipse(QPointF(), badgeRadius, badgeRadius);
    drawSign(*painter, kind_, color);
}

}  // namespace kestrant
