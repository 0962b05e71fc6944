#include "ui/recap/CelebrationArt.h"

#include <QColor>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace kestrant {
namespace {

constexpr double ringRadius = 27;
/// From the upper edge of the item to the middle of the ring.
constexpr double ringTop = 74;
constexpr int pieces = 26;

// Moments of the whole.
constexpr double ringBegin = 0.08;
constexpr double ringEnd = 0.50;
constexpr double paperBegin = 0.16;
constexpr double leaving = 0.90;

const QColor accent(0x0a, 0x84, 0xff);

double part(double value, double from, double to) {
    return std::clamp((value - from) / (to - from), 0.0, 1.0);
}

double slowingDown(double part) {
    return 1 - std::pow(1 - part, 3);
}

}  // namespace

CelebrationArt::CelebrationArt(QQuickItem* parent) : PaintedItem(parent) {
    connect(this, &CelebrationArt::changed, this, [this] { update(); });
}

void CelebrationArt::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    const QPointF middle(width() / 2, ringTop);
    const double now = still_ ? 1.0 : progress_;
    const double ring = slowingDown(part(now, ringBegin, ringEnd));
    if (!still_) {
        if (const double wave = part(now, 0, 0.3); wave > 0 && wave < 1) {
            QColor color = accent;
            color.setAlphaF(float(0.7 * (1 - wave)));
            painter->setPen(QPen(color, 2));
            painter->setBrush(Qt::NoBrush);
            const double radius = 10 + 44 * slowingDown(wave);
            painter->drawEllipse(middle, radius, radius);
        }
        paintPaper(*painter, middle);
    }
    const QRectF circle(middle.x() - ringRadius, middle.y() - ringRadius, 2 * ringRadius, 2 * ringRadius);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(QColor(255, 255, 255, int(46 * ring)), 4));
    painter->drawEllipse(circle);
    painter->setPen(QPen(accent, 4, Qt::SolidLine, Qt::RoundCap));
    painter->drawArc(circle, 90 * 16, -int(360 * 16 * ring));

    const double tick = part(now, 0.28, 0.52);
    if (tick <= 0)
        return;
    const std::array corners{middle + QPointF(-11, 0.5), middle + QPointF(-3, 8.5),
                             middle + QPointF(12, -8.5)};
    const double corner = 0.36;
    QPainterPath path(corners[0]);
    path.lineTo(corners[0] + (corners[1] - corners[0]) * part(tick, 0, corner));
    if (tick > corner)
        path.lineTo(corners[1] + (corners[2] - corners[1]) * part(tick, corner, 1));
    painter->strokePath(path, QPen(Qt::white, 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

void CelebrationArt::paintPaper(QPainter& painter, QPointF middle) const {
    const double time = part(progress_, paperBegin, 1.0);
    if (time <= 0 || time >= 1)
        return;
    const std::array colors{QColor(0x0a, 0x84, 0xff), QColor(0x5a, 0xc8, 0xfa), QColor(0xe6, 0xe8, 0xee),
                            QColor(0x9c, 0xc8, 0xf4)};
    painter.setPen(Qt::NoPen);
    const double strength = 1 - part(progress_, 0.55, leaving + 0.05);
    for (int piece = 0; piece < pieces; ++piece) {
        // Spread evenly, with an irregular reach and turn that are the same each time.
        const double unevenness = std::fmod(piece * 0.618034, 1.0);
        const double angle = 2 * std::numbers::pi * piece / pieces;
        const double reach = (70 + 130 * unevenness) * slowingDown(time);
        const QPointF place = middle + QPointF(std::cos(angle) * reach * 1.25,
                                               std::sin(angle) * reach * 0.62 + 90 * time * time - 26 * time);
        QColor color = colors[std::size_t(piece) % colors.size()];
        color.setAlphaF(float(0.85 * strength));
        painter.setBrush(color);
        if (piece % 3 == 0) {
            painter.save();
            painter.translate(place);
            painter.rotate(360 * unevenness + 220 * time);
            painter.drawRect(QRectF(-5, -2.5, 10, 5));
            painter.restore();
        } else {
            const double radius = 1.6 + 1.6 * unevenness;
            painter.drawEllipse(place, radius, radius);
        }
    }
}

}  // namespace kestrant
