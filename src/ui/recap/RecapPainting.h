#pragma once

#include "ui/recap/RecapCard.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

class QPainter;

namespace kestrant {

/// How the chart of a card is drawn.
struct RecapChartLook {
    /// Small and without words, as on the overview.
    bool isCompact = false;
    bool highContrast = false;
    /// How much of it has come to light, 0 to 1: bars grow; a year lights from its first week on, behind a
    /// line.
    double progress = 1.0;
    /// The day that is pointed at, counted from the first; -1 for none.
    int current = -1;
    /// Of texts, 1 is the usual size.
    double textScale = 1.0;
};

/// Draws the days of a card: half hours of a day, seven bars of a week, a calendar of dots of a month, a map
/// of a year. Points.
void paintRecapChart(QPainter& painter, const QRectF& area, const RecapCard& card,
                     const RecapChartLook& look);

/// Where a day is drawn, and may be pointed at. A day card has one for all of it.
[[nodiscard]] QRectF recapDayFrame(const QRectF& area, const RecapCard& card, bool isCompact, int day);
/// The day drawn at a place; -1 for none.
[[nodiscard]] int recapDayAt(const QRectF& area, const RecapCard& card, bool isCompact, QPointF place);

/// Points that a card covers as a picture of its own.
inline constexpr QSizeF recapPictureSize(360, 450);

/// Draws a card to be passed on: its period, its number, its sentence and its chart, and no title of any
/// reminder.
void paintRecapPicture(QPainter& painter, const RecapCard& card);

}  // namespace kestrant
